#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"
#include "net/ProxyLogin.h"
#include "testsupport/FakePlatform.h"
#include "testsupport/TestSigning.h"

#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

Q_DECLARE_METATYPE(NetCause)

char *toString(const NetDiagnosis &d)
{
    return qstrdup(QByteArray::number(int(d.cause)) + '/' + QByteArray::number(d.httpStatus));
}

class TestUpdateCheck : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTcpServer m_plain;
    FakePlatform m_platform;
    PlatformOverride m_override{m_platform};

    void serve(const QString &path, const QByteArray &body, int status = 200, const QByteArray &location = {})
    {
        HttpTestServer::Resource r;
        r.body = body;
        r.status = status;
        r.location = location;
        if (status == 407)
            r.extraHeaders = "Proxy-Authenticate: Basic realm=\"proxy\"\r\n";
        m_server.setResource(path, r);
    }

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
        HttpTestServer::Resource silent;
        silent.silent = true;
        m_server.setResource(QStringLiteral("/silent/downloads.ini"), silent);
        serve(QStringLiteral("/fail/downloads.ini"), "down", 500);
        serve(QStringLiteral("/portal/downloads.ini"), "<html><form>Login</form></html>");
        QVERIFY(m_server.listen());
        // Another host name for the same server.
        const QByteArray elsewhere =
            QStringLiteral("http://localhost:%1/lf/downloads.ini").arg(m_server.port()).toUtf8();
        serve(QStringLiteral("/moved/downloads.ini"), {}, 302, elsewhere);
        // As the proxy sees it: the whole address. Qt never sends loopback addresses through a
        // proxy, so the address names a host that only the proxy would look up.
        serve(QStringLiteral("http://pawnsketch.invalid:80/proxy/downloads.ini"), "auth", 407);
        // A server that refuses every handshake with a fatal TLS alert.
        QVERIFY(m_plain.listen(QHostAddress::LocalHost));
        // The engine's first request takes up the system's proxy settings: before a row sets its own.
        QVERIFY(!clsDownload().QueryFile(m_server.url("/lf/version.txt"), 1024, "t", false, 0).isEmpty());
        connect(&m_plain, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *socket = m_plain.nextPendingConnection();
            socket->write(QByteArray::fromHex("15030300020228")); // alert: handshake failure
            socket->disconnectFromHost();
        });
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

    // Each way a connection test can fail is told apart; a page that is not the download
    // list fails as well. Blocking and asynchronous forms alike.
    void connection_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<NetCause>("cause");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("viaProxy");
        QTest::addColumn<bool>("network");
        const QString refused = QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort());
        QTest::newRow("download list served") << m_server.url("/lf") << NetCause::None << 0 << false << true;
        QTest::newRow("empty download list")
            << m_server.url("/empty") << NetCause::EmptyAnswer << 0 << false << true;
        QTest::newRow("list missing")
            << m_server.url("/nothing") << NetCause::HttpStatus << 404 << false << true;
        QTest::newRow("server error")
            << m_server.url("/fail") << NetCause::HttpStatus << 500 << false << true;
        QTest::newRow("login page") << m_server.url("/portal") << NetCause::WrongAnswer << 0 << false << true;
        QTest::newRow("other host") << m_server.url("/moved") << NetCause::WrongAnswer << 0 << false << true;
        QTest::newRow("refused") << refused << NetCause::Refused << 0 << false << true;
        QTest::newRow("no network") << refused << NetCause::NoNetwork << 0 << false << false;
        QTest::newRow("silent") << m_server.url("/silent") << NetCause::Timeout << 0 << false << true;
        QTest::newRow("unknown name")
            << "http://pawnsketch.invalid/v" << NetCause::NameNotResolved << 0 << false << true;
        QTest::newRow("tls") << QStringLiteral("https://127.0.0.1:%1/v").arg(m_plain.serverPort())
                             << NetCause::Tls << 0 << false << true;
        QTest::newRow("proxy login") << "http://pawnsketch.invalid/proxy" << NetCause::Proxy << 407 << true
                                     << true;
    }
    void connection()
    {
        QFETCH(QString, base);
        QFETCH(NetCause, cause);
        QFETCH(int, status);
        QFETCH(bool, viaProxy);
        QFETCH(bool, network);
        qputenv("SUPPORTKIT_VERSION_URL", base.toUtf8());
        m_platform.network = network;
        // The proxy refuses every password: the user is asked once, and the refusal ends it.
        int prompts = 0;
        if (viaProxy) {
            QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, "127.0.0.1", m_server.port()});
            resetProxyPromptForTesting();
            setProxyPrompt([&prompts](const QString &) {
                ++prompts;
                return ProxyCredentials{true, QStringLiteral("user"), QStringLiteral("wrong")};
            });
        }
        const auto restore = qScopeGuard([this] {
            m_platform.network = true;
            setProxyPrompt({});
            QNetworkProxyFactory::setUseSystemConfiguration(true);
        });
        const bool connected = cause == NetCause::None;
        const NetDiagnosis expected{cause, status};

        programState().connected = !connected;
        QCOMPARE(CheckINetConnection(false), connected);
        QCOMPARE(programState().connected, connected);
        QCOMPARE(lastConnectionDiagnosis(), expected);

        programState().connected = !connected;
        ConnectionTest test;
        QSignalSpy finished(&test, &ConnectionTest::finished);
        QVERIFY(test.start());
        QVERIFY(!test.start()); // one test at a time
        QVERIFY(finished.wait(20000));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(finished.at(0).at(0).toBool(), connected);
        QCOMPARE(programState().connected, connected);
        QCOMPARE(test.diagnosis(), expected);
        QCOMPARE(test.answer().isEmpty(), !connected);
        QCOMPARE(prompts, viaProxy ? 1 : 0);
        QVERIFY(!test.isRunning());

        // A skipped test says "not connected" and stores nothing.
        QCOMPARE(CheckINetConnection(true), false);
        QCOMPARE(programState().connected, connected);
    }
};

QTEST_GUILESS_MAIN(TestUpdateCheck)
#include "tst_updatecheck.moc"
