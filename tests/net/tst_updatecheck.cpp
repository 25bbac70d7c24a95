#include "maintenance/UpdateCheck.h"

#include "NetTestServer.h"

#include <QSignalSpy>
#include <QTest>
#include <QUrl>

class TestUpdateCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void serverVersion_data();
    void serverVersion();
    void differ_data();
    void differ();
    void fromServer_data();
    void fromServer();

private:
    NetTestServer m_fixture;
};

void TestUpdateCheck::initTestCase()
{
    clsDownload::setDefaultTimeouts(2000, 2000);
    QVERIFY2(m_fixture.startFixture(), qPrintable(m_fixture.error()));
}

void TestUpdateCheck::cleanupTestCase()
{
    m_fixture.stop();
}

void TestUpdateCheck::serverVersion_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("version");

    QTest::newRow("key=value and line feed") << "version=13.2 Build 2209\n" << true << "13.2 Build 2209";
    QTest::newRow("no final line feed") << "version=13.2 Build 2209" << false << QString();
    QTest::newRow("carriage return kept") << "version=13.2 Build 2209\r\n" << true << "13.2 Build 2209\r";
    QTest::newRow("value after the first =") << "13.2 Build 2209=x\n" << true << "x";
    QTest::newRow("second = stays") << "v=a=b\n" << true << "a=b";
    QTest::newRow("no = taken from the start") << "13.2 Build 2209\nmore\n" << true << "13.2 Build 2209";
    QTest::newRow("= on a later line") << "13.2 Build 2209\nkey=value\n" << true << "value";
    QTest::newRow("only the first line") << "v=13.2 Build 2209\nv=14.0 Build 1\n"
                                         << true << "13.2 Build 2209";
    QTest::newRow("empty value") << "v=\n" << true << QString();
    QTest::newRow("empty text") << QString() << false << QString();
    QTest::newRow("carriage return only") << "v=13.2 Build 2209\r" << false << QString();
}

void TestUpdateCheck::serverVersion()
{
    QFETCH(QString, text);
    QFETCH(bool, found);
    QFETCH(QString, version);

    QString result = QStringLiteral("before");
    QCOMPARE(serverVersionFromText(text, result), found);
    QCOMPARE(result, found ? version : QStringLiteral("before"));
}

void TestUpdateCheck::differ_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("server");
    QTest::addColumn<bool>("differ");

    QTest::newRow("same") << "13.2 Build 2209"
                          << "13.2 Build 2209" << false;
    QTest::newRow("newer on server") << "13.2 Build 2209"
                                     << "13.2 Build 2210" << true;
    QTest::newRow("newer installed") << "13.2 Build 2210"
                                     << "13.2 Build 2209" << true;
    QTest::newRow("case") << "13.2 Build 2209"
                          << "13.2 build 2209" << true;
    QTest::newRow("carriage return") << "13.2 Build 2209"
                                     << "13.2 Build 2209\r" << true;
    QTest::newRow("numerically equal") << "13.2 Build 2209"
                                       << "13.20 Build 2209" << true;
}

void TestUpdateCheck::differ()
{
    QFETCH(QString, installed);
    QFETCH(QString, server);
    QFETCH(bool, differ);
    QCOMPARE(buildsDiffer(installed, server), differ);
}

void TestUpdateCheck::fromServer_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("version");

    // The fixture's "say" mode answers with its second path segment, so that the body
    // survives the "/version.txt" the check appends to the base address.
    const auto says = [this](const char *body) {
        return m_fixture.url(QStringLiteral("/say/") +
                             QString::fromLatin1(QUrl::toPercentEncoding(QString::fromLatin1(body))));
    };
    QTest::newRow("version line") << says("version=13.2 Build 2209\n") << true << "13.2 Build 2209";
    QTest::newRow("no line feed") << says("version=13.2 Build 2209") << false << QString();
    QTest::newRow("carriage return kept")
        << says("version=13.2 Build 2209\r\n") << true << "13.2 Build 2209\r";
    QTest::newRow("empty file") << m_fixture.url(QStringLiteral("/zero")) << false << QString();
    QTest::newRow("served without length")
        << m_fixture.url(QStringLiteral("/nolength")) << false << QString();
    QTest::newRow("no server") << QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort()) << false
                               << QString();
}

void TestUpdateCheck::fromServer()
{
    QFETCH(QString, base);
    QFETCH(bool, found);
    QFETCH(QString, version);

    qputenv("SUPPORTKIT_VERSION_URL", base.toUtf8());
    const UpdateCheckResult blocking = CheckForUpdate();
    QCOMPARE(blocking.found, found);
    QCOMPARE(blocking.serverVersion, version);

    UpdateCheck check;
    UpdateCheckResult result;
    int calls = 0;
    connect(&check, &UpdateCheck::finished, this, [&](const UpdateCheckResult &r) {
        result = r;
        ++calls;
    });
    QVERIFY(check.start());
    QTRY_COMPARE_WITH_TIMEOUT(calls, 1, 20000);
    QCOMPARE(result.found, found);
    QCOMPARE(result.serverVersion, version);
}

QTEST_GUILESS_MAIN(TestUpdateCheck)
#include "tst_updatecheck.moc"
