#include "maintenance/NetworkChecks.h"

#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"

NetworkChecks::NetworkChecks(QObject *parent) : QObject(parent) {}

NetworkChecks::~NetworkChecks() = default;

void NetworkChecks::startStartupChecks()
{
    cancel();
    m_button = false;
    runUpdateCheck();
}

void NetworkChecks::startButtonChecks()
{
    cancel();
    m_button = true;
    runConnectionTest(false);
}

void NetworkChecks::cancel()
{
    // The engine may be deleted while it waits; a dropped check reports nothing.
    ++m_generation;
    delete m_updateCheck;
    delete m_connectionTest;
}

bool NetworkChecks::isRunning() const
{
    return m_updateCheck || m_connectionTest;
}

void NetworkChecks::runUpdateCheck()
{
    auto *check = new UpdateCheck(this);
    m_updateCheck = check;
    connect(check, &UpdateCheck::finished, this, [this, check](const UpdateCheckResult &result) {
        check->deleteLater();
        m_updateCheck = nullptr;
        // A receiver may start new checks; then this chain has ended.
        const quint64 generation = m_generation;
        if (result.found)
            emit serverVersionFound(result.serverVersion);
        else if (result.trust != TrustCheck::Ok)
            emit serverVersionRefused(
                refusedVersionText(trustCheckText(result.trust, QStringLiteral("version.txt"))));
        if (generation != m_generation)
            return;
        if (m_button)
            emit finished();
        else
            runConnectionTest(false);
    });
    check->start();
}

void NetworkChecks::runConnectionTest(bool report)
{
    auto *test = new ConnectionTest(this);
    m_connectionTest = test;
    connect(test, &ConnectionTest::finished, this, [this, test, report](bool connected) {
        test->deleteLater();
        m_connectionTest = nullptr;
        const quint64 generation = m_generation;
        if (report) {
            emit connectionReport(connected);
            emit finished();
            return;
        }
        emit connectionTested(connected);
        if (generation != m_generation)
            return;
        if (m_button && connected)
            runUpdateCheck();
        else if (m_button)
            runConnectionTest(true);
        else
            emit finished();
    });
    test->start();
}
