#include "maintenance/UpdateCheck.h"
#include "net/clsDownload.h"

#include "HttpTestServer.h"
#include "testsupport/TestSigning.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

// Servers that misbehave on purpose: whatever they do, a download or a version check ends
// soon with an error or the right file, never with two files spliced together.
class TestHostileServers : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTemporaryDir m_work;
    QByteArray m_body = QByteArray(300001, 'a') + 'z';
    int m_paths = 0;

private slots:
    void initTestCase()
    {
        // Short engine timeouts: what a hostile server does here it would do for minutes.
        clsDownload::setDefaultTimeouts(10000, 1500);
        QVERIFY(m_work.isValid());
        QVERIFY(m_server.listen());
    }

    void download_data()
    {
        QTest::addColumn<int>("trickleMs");
        QTest::addColumn<bool>("redirectSelf");   // every answer redirects to itself
        QTest::addColumn<int>("headerBytes");     // one header line of this size
        QTest::addColumn<qint64>("claimedStart"); // the resume's Content-Range names this start
        QTest::addColumn<bool>("newFileOnDrop");  // ETag and file change while the transfer is down
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("file"); // "new", "prefix" (what arrived before the drop)
        const auto row = [](const char *name, int trickleMs, bool redirectSelf, int headerBytes,
                            qint64 claimedStart, bool newFileOnDrop, const char *error, const char *file) {
            QTest::newRow(name) << trickleMs << redirectSelf << headerBytes << claimedStart << newFileOnDrop
                                << QString::fromUtf8(error) << QString::fromUtf8(file);
        };
        const char *lost = "Verbindung unterbrochen";
        row("trickle, stall timeout", 1000, false, 0, -1, false, lost, "");
        row("endless redirects", 0, true, 0, -1, false, "Unbekannter Fehler", "");
        // Qt refuses the answer; nothing is written.
        row("1 MB header", 0, false, 1024 * 1024, -1, false, "Downloadgröße 0 Byte", "");
        row("Content-Range off", 0, false, 0, 0, false, lost, "prefix");
        row("ETag changes, If-Range ignored", 0, false, 0, -1, true, "", "new");
    }
    void download()
    {
        QFETCH(int, trickleMs);
        QFETCH(int, headerBytes);
#ifdef Q_OS_WIN
        // Observed under Wine: the answer never reaches the client before its answer timeout
        // ("Server nicht gefunden", nothing written), and the in-process server then serves no
        // later connection in time. The timeout path itself is what the silent-server cases of
        // the download test cover.
        if (headerBytes > 64 * 1024)
            QSKIP("1 MB header line: under Wine it ends by the answer timeout and stalls this "
                  "test's server for the later cases");
#endif
        QFETCH(bool, newFileOnDrop);
        QFETCH(QString, file);
        const QString path = QStringLiteral("/hostile%1").arg(++m_paths);
        HttpTestServer::Resource resource;
        resource.body = m_body;
        resource.etag = "\"v1\"";
        resource.trickleMs = trickleMs;
        QFETCH(bool, redirectSelf);
        if (redirectSelf) {
            resource.status = 302;
            resource.location = m_server.url(path).toUtf8();
        }
        if (headerBytes > 0)
            resource.extraHeaders = "X-Padding: " + QByteArray(headerBytes, 'x') + "\r\n";
        QFETCH(qint64, claimedStart);
        resource.claimedStart = claimedStart;
        if (claimedStart >= 0 || newFileOnDrop) {
            resource.dropAfter = 100000;
            resource.drops = 1;
        }
        m_server.setResource(path, resource);

        const QByteArray newBody = QByteArray(200000, 'n');
        const QString target = m_work.filePath(QStringLiteral("t%1").arg(m_paths));
        clsDownload dl;
        dl.setResumePolicy({3, {10}});
        connect(&dl, &clsDownload::resuming, this, [&](int attempt) {
            if (newFileOnDrop && attempt == 1) {
                HttpTestServer::Resource changed;
                changed.body = newBody;
                changed.etag = "\"v2\"";
                changed.ignoreIfRange = true;
                m_server.setResource(path, changed);
            }
        });
        QElapsedTimer clock;
        clock.start();
        dl.Download(m_server.url(path), target);

        QTEST(dl.ErrorDescription(), "error");
        QVERIFY2(clock.elapsed() < 30000, qPrintable(QString::number(clock.elapsed())));
        const QByteArray got = TestSupport::readFile(target);
        if (file == QLatin1String("new"))
            QVERIFY(got == newBody);
        else if (file == QLatin1String("prefix"))
            QVERIFY(got == m_body.left(100000));
    }

    // The version check reads a line and its signature; a huge or never-ending version file
    // or signature gives no version.
    void versionFile_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("trickleMs");
        QTest::addColumn<qint64>("signatureSize"); // announced; 0: the real signature
        QTest::addColumn<bool>("found");
        QTest::addColumn<int>("gets"); // the body is not fetched when its announced size is too large
        const QByteArray plain("Version=13.2 Build 2209\n");
        QTest::newRow("plain") << plain << 0 << qint64(0) << true << 2;
        QTest::newRow("100 MB signature") << plain << 0 << qint64(100) * 1024 * 1024 << false << 1;
        QTest::newRow("50 MB") << QByteArray(50 * 1024 * 1024, '7') << 0 << qint64(0) << false << 0;
        QTest::newRow("trickle") << plain.repeated(100) << 1000 << qint64(0) << false << 1;
    }
    void versionFile()
    {
        QFETCH(QByteArray, body);
        HttpTestServer::Resource resource;
        resource.body = body;
        QFETCH(int, trickleMs);
        resource.trickleMs = trickleMs;
        m_server.setResource(QStringLiteral("/version/version.txt"), resource);
        HttpTestServer::Resource signature;
        signature.body =
            TestSigning::signRelease(body, QStringLiteral("version.txt"), QStringLiteral("13.2 Build 2209"));
        QFETCH(qint64, signatureSize);
        if (signatureSize > 0)
            signature.announced = signatureSize;
        m_server.setResource(QStringLiteral("/version/version.txt.minisig"), signature);
        qputenv("SUPPORTKIT_VERSION_URL", m_server.url(QStringLiteral("/version")).toUtf8());
        const qsizetype before = m_server.requests().size();
        QElapsedTimer clock;
        clock.start();
        QTEST(CheckForUpdate().found, "found");
        QVERIFY2(clock.elapsed() < 30000, qPrintable(QString::number(clock.elapsed())));
        const QList<HttpTestServer::Request> asked = m_server.requests().mid(before);
        QTEST(int(std::count_if(asked.begin(), asked.end(), [](const auto &r) { return r.method == "GET"; })),
              "gets");
    }
};

QTEST_GUILESS_MAIN(TestHostileServers)
#include "tst_hostileservers.moc"
