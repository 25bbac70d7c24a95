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
        clsDownload first;
        QSignalSpy answered(&first, &clsDownload::queryFinished);
        QVERIFY(first.startQueryFile(m_server.url("/lf/version.txt"), QStringLiteral("t")));
        QVERIFY(answered.wait(10000));
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

    // The text rules are above; here the version file and its signature are fetched below
    // the base address. A huge or never-ending version file or signature gives no version.
    void fromServer_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<bool>("found");
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("trust");
        QTest::addColumn<int>("gets"); // -1: not counted; a body announced too large is not fetched
        const auto row = [](const char *name, const QString &base, bool found, const char *version,
                            TrustCheck trust, int gets = -1) {
            QTest::newRow(name) << base << found << QString::fromLatin1(version) << int(trust) << gets;
        };
        row("signed version line", m_server.url("/lf"), true, "13.2 Build 2209", TrustCheck::Ok, 2);
        row("unsigned", m_server.url("/unsigned"), false, "", TrustCheck::NoSignature);
        row("signed for another version", m_server.url("/forged"), false, "", TrustCheck::WrongVersion);
        row("no server", QStringLiteral("http://127.0.0.1:%1/v").arg(closedPort()), false, "",
            TrustCheck::Ok);
        const QByteArray plain("Version=13.2 Build 2209\n");
        const auto hostile = [this](const char *base, const QByteArray &body, int trickleMs,
                                    qint64 signatureSize) {
            HttpTestServer::Resource version;
            version.body = body;
            version.trickleMs = trickleMs;
            m_server.setResource(QStringLiteral("/%1/version.txt").arg(base), version);
            HttpTestServer::Resource signature;
            signature.body = TestSigning::signRelease(body, QStringLiteral("version.txt"),
                                                      QStringLiteral("13.2 Build 2209"));
            if (signatureSize > 0)
                signature.announced = signatureSize;
            // A negative size: the untrusted comment grows the file to exactly that many bytes.
            if (signatureSize < 0)
                signature.body.insert(signature.body.indexOf('\n'),
                                      QByteArray(-signatureSize - signature.body.size(), 'x'));
            m_server.setResource(QStringLiteral("/%1/version.txt.minisig").arg(base), signature);
            return m_server.url(QStringLiteral("/%1").arg(base));
        };
        row("100 MB signature", hostile("hugesig", plain, 0, qint64(100) * 1024 * 1024), false, "",
            TrustCheck::NoSignature, 1);
        row("signature of exactly 4 KB", hostile("sig4k", plain, 0, -4096), true, "13.2 Build 2209",
            TrustCheck::Ok, 2);
        row("50 MB version file", hostile("huge", QByteArray(50 * 1024 * 1024, '7'), 0, 0), false, "",
            TrustCheck::Ok, 0);
        row("trickle", hostile("trickle", plain.repeated(100), 1000, 0), false, "", TrustCheck::Ok, 1);
    }
    void fromServer()
    {
        QFETCH(QString, base);
        QFETCH(bool, found);
        QFETCH(QString, version);
        QFETCH(int, gets);
        qputenv("SUPPORTKIT_VERSION_URL", base.toUtf8());
        const qsizetype before = m_server.requests().size();
        clsDownload::setDefaultTimeouts(2000, 1500);
        UpdateCheck check;
        clsDownload::setDefaultTimeouts(2000, 2000);
        QList<UpdateCheckResult> results;
        connect(&check, &UpdateCheck::finished, this, [&](const UpdateCheckResult &r) { results << r; });
        QVERIFY(check.start());
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), 1, 20000);
        const UpdateCheckResult result = results[0];
        QCOMPARE(result.found, found);
        QCOMPARE(result.serverVersion, version);
        QTEST(int(result.trust), "trust");
        const QList<HttpTestServer::Request> asked = m_server.requests().mid(before);
        if (gets >= 0)
            QCOMPARE(int(std::count_if(asked.begin(), asked.end(),
                                       [](const auto &r) { return r.method == "GET"; })),
                     gets);
    }

    // Each way a connection test can fail is told apart; a page that is not the download
    // list fails as well.
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

        // Twice: the proxy's password is asked for once per run.
        for (int run = 0; run < 2; ++run) {
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
            QCOMPARE(lastConnectionDiagnosis(), expected);
            QCOMPARE(test.answer().isEmpty(), !connected);
            QCOMPARE(prompts, viaProxy ? 1 : 0);
            QVERIFY(!test.isRunning());
        }
    }
};

QTEST_GUILESS_MAIN(TestUpdateCheck)
#include "tst_updatecheck.moc"
