#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"
#include "testsupport/TestSigning.h"

#include <QtTest>

class TestUpdateCheck : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;

private slots:
    void initTestCase()
    {
        clsDownload::setDefaultTimeouts(2000, 2000);
        HttpTestServer::Resource version;
        version.body = "version=13.2 Build 2209\n";
        m_server.setResource(QStringLiteral("/lf/version.txt"), version);
        m_server.setResource(QStringLiteral("/unsigned/version.txt"), version);
        m_server.setResource(QStringLiteral("/forged/version.txt"), version);
        HttpTestServer::Resource signature;
        signature.body = TestSigning::signRelease(version.body, QStringLiteral("version.txt"),
                                                  QStringLiteral("13.2 Build 2209"));
        m_server.setResource(QStringLiteral("/lf/version.txt.minisig"), signature);
        signature.body = TestSigning::signRelease(version.body, QStringLiteral("version.txt"),
                                                  QStringLiteral("13.2 Build 2210"));
        m_server.setResource(QStringLiteral("/forged/version.txt.minisig"), signature);
        HttpTestServer::Resource list;
        list.body = "[Downloads]\r\nFile1=pawnsketch.exe\r\n";
        m_server.setResource(QStringLiteral("/lf/downloads.ini"), list);
        m_server.setResource(QStringLiteral("/empty/downloads.ini"), {});
        QVERIFY(m_server.listen());
    }

    void serverVersion_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QString>("version");
        QTest::newRow("key=value and line feed") << "version=13.2 Build 2209\n" << true << "13.2 Build 2209";
        QTest::newRow("no final line feed") << "version=13.2 Build 2209" << false << "before";
        QTest::newRow("carriage return kept") << "version=13.2 Build 2209\r\n" << true << "13.2 Build 2209\r";
        QTest::newRow("second = stays") << "v=a=b\n" << true << "a=b";
        QTest::newRow("no = taken from the start") << "13.2 Build 2209\nmore\n" << true << "13.2 Build 2209";
        QTest::newRow("= on a later line") << "13.2 Build 2209\nkey=value\n" << true << "value";
        QTest::newRow("empty value") << "v=\n" << true << "";
    }
    void serverVersion()
    {
        QFETCH(QString, text);
        QString result = QStringLiteral("before");
        QTEST(serverVersionFromText(text, result), "found");
        QTEST(result, "version");
    }

    void differ_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<bool>("differ");
        QTest::newRow("same") << "13.2 Build 2209" << false;
        QTest::newRow("other build") << "13.2 Build 2210" << true;
        QTest::newRow("case") << "13.2 build 2209" << true;
        QTest::newRow("carriage return") << "13.2 Build 2209\r" << true;
        QTest::newRow("numerically equal") << "13.20 Build 2209" << true;
    }
    void differ()
    {
        QFETCH(QString, server);
        QTEST(buildsDiffer(QStringLiteral("13.2 Build 2209"), server), "differ");
    }

    // The text rules are above; here the version file is fetched below the base address,
    // blocking and asynchronously.
    void fromServer_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("trust");
        QTest::newRow("signed version line") << m_server.url("/lf") << true << "13.2 Build 2209" << 0;
        QTest::newRow("unsigned") << m_server.url("/unsigned") << false << "" << int(TrustCheck::NoSignature);
        QTest::newRow("signed for another version")
            << m_server.url("/forged") << false << "" << int(TrustCheck::WrongVersion);
        QTest::newRow("no server") << QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort()) << false << ""
                                   << 0;
    }
    void fromServer()
    {
        QFETCH(QString, base);
        QFETCH(bool, found);
        QFETCH(QString, version);
        qputenv("SUPPORTKIT_VERSION_URL", base.toUtf8());
        const UpdateCheckResult blocking = CheckForUpdate();
        QCOMPARE(blocking.found, found);
        QCOMPARE(blocking.serverVersion, version);
        QTEST(int(blocking.trust), "trust");

        UpdateCheck check;
        QList<UpdateCheckResult> results;
        connect(&check, &UpdateCheck::finished, this, [&](const UpdateCheckResult &r) { results << r; });
        QVERIFY(check.start());
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), 1, 20000);
        QCOMPARE(results[0].found, found);
        QCOMPARE(results[0].serverVersion, version);
        QTEST(int(results[0].trust), "trust");
    }

    // How a failed answer comes about is tst_download's business; here it only has to count
    // as no connection, for the blocking and the asynchronous form alike.
    void connection_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("connected");
        QTest::newRow("download list served") << m_server.url("/lf") << true;
        QTest::newRow("empty download list") << m_server.url("/empty") << false;
        QTest::newRow("list missing") << m_server.url("/nothing") << false;
        QTest::newRow("no server") << QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort()) << false;
    }
    void connection()
    {
        QFETCH(QString, base);
        QFETCH(bool, connected);
        qputenv("SUPPORTKIT_VERSION_URL", base.toUtf8());

        programState().connected = !connected;
        QCOMPARE(CheckINetConnection(false), connected);
        QCOMPARE(programState().connected, connected);

        programState().connected = !connected;
        ConnectionTest test;
        QSignalSpy finished(&test, &ConnectionTest::finished);
        QVERIFY(test.start());
        QVERIFY(!test.start()); // one test at a time
        QVERIFY(finished.wait(20000));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toBool(), connected);
        QCOMPARE(programState().connected, connected);
        QVERIFY(!test.isRunning());

        // A skipped test says "not connected" and stores nothing.
        QCOMPARE(CheckINetConnection(true), false);
        QCOMPARE(programState().connected, connected);
    }
};

QTEST_GUILESS_MAIN(TestUpdateCheck)
#include "tst_updatecheck.moc"
