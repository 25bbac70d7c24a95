#include "net/ConnectionTest.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"

#include <QtTest>

// How a failed answer comes about is tst_download's business; here it only has to count
// as no connection, for the blocking and the asynchronous form alike.
class TestConnectionTest : public QObject
{
    Q_OBJECT

    HttpTestServer m_files;

private slots:
    void initTestCase()
    {
        clsDownload::setDefaultTimeouts(2000, 2000);
        HttpTestServer::Resource list;
        list.body = "[Downloads]\r\nFile1=pawnsketch.exe\r\n";
        m_files.setResource(QStringLiteral("/ok/downloads.ini"), list);
        m_files.setResource(QStringLiteral("/empty/downloads.ini"), {});
        QVERIFY(m_files.listen());
    }

    void outcome_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("connected");
        QTest::newRow("download list served") << m_files.url(QStringLiteral("/ok")) << true;
        QTest::newRow("empty download list") << m_files.url(QStringLiteral("/empty")) << false;
        QTest::newRow("list missing") << m_files.url(QStringLiteral("/nothing")) << false;
        QTest::newRow("no server") << QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort()) << false;
    }

    void outcome()
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

QTEST_GUILESS_MAIN(TestConnectionTest)
#include "tst_connectiontest.moc"
