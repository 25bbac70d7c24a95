#include "net/ConnectionTest.h"
#include "net/Transport.h"
#include "net/clsDownload.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"
#include "localisation/PendingMessage.h"
#include "testsupport/TestSupport.h"

#include <QCryptographicHash>
#include <QtTest>

using TestSupport::readFile;
using Resource = HttpTestServer::Resource;

namespace {
// Bytes that are not all alike, so that shifted data is noticed.
QByteArray pattern(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 7 + 3) % 251);
    return bytes;
}

Resource resource(const QByteArray &body, int status = 200, const QByteArray &location = {})
{
    Resource r;
    r.body = body;
    r.status = status;
    r.location = location;
    return r;
}

// What the server does to a download that may resume.
struct Misdeed
{
    QByteArray etag = "\"v1\"";
    int drops = 0; // answers that break off after 100000 bytes
    bool ranges = true;
    int announcedExtra = 0;   // every answer announces this much more than it sends
    qint64 claimedStart = -1; // a resume's Content-Range names this start
    int trickleMs = 0;
    bool redirectSelf = false;
    int headerBytes = 0; // one header line of this size
    enum Change
    {
        Same,
        NewFile,       // a new file with a new ETag appears while the transfer is down
        NewFileAnyway, // ... and the server ignores If-Range
    } change = Same;
};
} // namespace
Q_DECLARE_METATYPE(Misdeed)

// The server listens on an ephemeral port, which on Linux lies above 32,767: the whole
// suite also shows that such ports work.
class TestDownload : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTemporaryDir m_work;
    QByteArray m_text3000, m_big;
    int m_paths = 0;

    QString served(const QString &path) const { return m_server.url(path); }
    QString target() const { return m_work.filePath(QStringLiteral("target.bin")); }
    // Runs a download to its end; false when it did not end once within 30 s.
    static bool download(clsDownload &dl, const QString &url, const QString &file)
    {
        QSignalSpy finished(&dl, &clsDownload::downloadFinished);
        if (!dl.startDownload(url, file))
            return false;
        return (finished.size() == 1 || finished.wait(30000)) && finished.size() == 1 && !dl.isBusy();
    }
    static QString query(clsDownload &dl, const QString &url)
    {
        QSignalSpy finished(&dl, &clsDownload::queryFinished);
        if (!dl.startQueryFile(url, QStringLiteral("Download")) ||
            (finished.isEmpty() && !finished.wait(30000)))
            return QStringLiteral("(no end)");
        return finished.size() == 1 ? finished.at(0).at(0).toString() : QStringLiteral("(two ends)");
    }

private slots:
    void initTestCase()
    {
        clsDownload::setDefaultTimeouts(2000, 2000);
        QVERIFY(m_work.isValid());
        for (int i = 0; m_text3000.size() < 3000; ++i)
            m_text3000 += QByteArray::number(i % 10);
        m_big.resize(300001);
        QRandomGenerator rng(42);
        for (char &c : m_big)
            c = char(rng.bounded(256));
        QVERIFY(m_server.listen());
        // Answers that go wrong, each at a path of its own.
        Resource shortBody = resource(pattern(20000)), stall, noLength = resource(pattern(100)), silent;
        shortBody.announced = 50000;
        stall = shortBody;
        stall.hold = true;
        noLength.length = false;
        silent.silent = true;
        const QList<QPair<QString, Resource>> answers{
            {"/text3000.txt", resource(m_text3000)},
            {"/big.bin", resource(m_big)},
            {"/exact.bin", resource(m_big.left(5 * 8192))},
            {"/large.bin", resource(m_big.repeated(10))},
            {QString::fromUtf8("/a b%ä.bin"), resource(m_big.left(20000))},
            {"/utf8.txt", resource("13.2 Build 2209 \xc3\xa4\n")},
            {"/moved", resource("moved")},
            {"/redirect-relative", resource("moved\n", 302, "/moved")},
            {"/redirect-ftp", resource("moved\n", 302, "ftp://127.0.0.1/x")},
            {"/redirect-big", resource("moved\n", 301, served("/big.bin").toUtf8())},
            {"/status/403", resource("status page\n", 403)},
            {"/short", shortBody},
            {"/stall", stall},
            {"/nolength", noLength},
            {"/zero", resource({})},
            {"/silent", silent}};
        for (const auto &[path, answer] : answers)
            m_server.setResource(path, answer);
    }

    void init()
    {
        QFile::remove(target());
        programState().automaticUpdateCheck = false;
        pendingMessage().clear();
    }

    void queryFile_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<bool>("noSize"); // the automatic update check then leaves its message
        const auto row = [](const char *name, const QString &url, const QByteArray &expected, bool noSize) {
            QTest::newRow(name) << url << expected << noSize;
        };
        const QString port = QString::number(m_server.port());
        row("3000 bytes", served("/text3000.txt"), m_text3000, false);
        row("address without scheme", "127.0.0.1:" + port + "/text3000.txt", m_text3000, false);
        row("utf-8 text", served("/utf8.txt"), "13.2 Build 2209 \xc3\xa4\n", false);
        row("relative redirect", served("/redirect-relative"), "moved", false);
        row("closed early", served("/short"), {}, false);
        row("no content-length", served("/nolength"), {}, true);
        row("content-length 0", served("/zero"), {}, true);
        row("404", served("/missing"), {}, true);
        row("never answers", served("/silent"), {}, true);
        row("ftp", "ftp://127.0.0.1:" + port + "/x", {}, true);
    }
    void queryFile()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, expected);
        QFETCH(bool, noSize);
        programState().automaticUpdateCheck = true;
        clsDownload dl;
        reportUnknownSize(dl);
        QCOMPARE(query(dl, url), QString::fromUtf8(expected));
        QCOMPARE(dl.queryBytes(), expected);
        QCOMPARE(pendingMessage().isSet(), noSize);
        QCOMPARE(pendingMessage().style, noSize ? 48 : 0);
        QCOMPARE(pendingMessage().text.endsWith(QStringLiteral("#Update-Prüfung: Verbindungsfehler")),
                 noSize);
    }

    void downloadErrors_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("error"); // the number callers are given
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("fileBytes"); // -1: no file written
        QTest::addColumn<QString>("file");  // empty: the usual target
        const auto row = [](const char *name, const QString &url, int error, const char *key, int bytes,
                            const QString &file = {}) {
            QTest::newRow(name) << url << error << QString::fromLatin1(key) << bytes << file;
        };
        row("404", served("/missing"), 404, "T19505", -1);
        row("403", served("/status/403"), 403, "T19506", -1);
        row("no content-length", served("/nolength"), 3, "T19502", -1);
        row("ftp", "ftp://127.0.0.1/x", 2, "T19501", -1);
        row("nobody listening", QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()), 1, "T19500", -1);
        row("never answers", served("/silent"), 1, "T19500", -1);
        row("closed early", served("/short"), 4, "T19503", 20000);
        row("stalls", served("/stall"), 4, "T19503", 20000);
        row("redirect to ftp refused", served("/redirect-ftp"), 302, "T19506", -1);
        row("missing folder", served("/big.bin"), 5, "T19504", -1,
            m_work.filePath(QStringLiteral("missing/target.bin")));
    }
    void downloadErrors()
    {
        QFETCH(QString, url);
        QFETCH(int, fileBytes);
        QFETCH(QString, file);
        clsDownload dl;
        QSignalSpy updates(&dl, &clsDownload::update);
        QVERIFY(download(dl, url, file.isEmpty() ? target() : file));

        QTEST(dl.ErrorNumber(), "error");
        QTEST(dl.result().messageKey(), "key");
        QVERIFY(updates.size() >= 1);
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(dl.ReceivedBytes(), qint64(qMax(fileBytes, 0)));
        if (fileBytes < 0)
            QVERIFY(!QFile::exists(file.isEmpty() ? target() : file));
        else
            QCOMPARE(readFile(target()), pattern(fileBytes));
    }

    void downloadWholeFile_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("many blocks, last one short") << served("/big.bin") << m_big;
        QTest::newRow("whole number of blocks") << served("/exact.bin") << m_big.left(5 * 8192);
        QTest::newRow("less than a block") << served("/text3000.txt") << m_text3000;
        QTest::newRow("blank, escape and query")
            << served(QString::fromUtf8("/a b%25ä.bin?x=1&y=%20#top")) << m_big.left(20000);
        QTest::newRow("after a redirect") << served("/redirect-big") << m_big;
    }
    void downloadWholeFile()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, expected);
        // An older, longer file of the same name is overwritten from its start, not truncated.
        const QByteArray older(expected.size() + 5000, 'x');
        QVERIFY(TestSupport::writeFile(target(), older));
        clsDownload dl;
        dl.setSha256(true);
        int updates = 0;
        qint64 firstBytes = -1;
        double firstSpeed = -1;
        connect(&dl, &clsDownload::update, this, [&] {
            if (updates++ == 0)
                firstBytes = dl.ReceivedBytes(), firstSpeed = dl.Speed();
        });
        QVERIFY(download(dl, url, target()));

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.Size(), qint64(expected.size()));
        QCOMPARE(dl.ReceivedBytes(), qint64(expected.size()));
        QVERIFY(readFile(target()) == expected + older.mid(expected.size()));
        QCOMPARE(dl.sha256(), QCryptographicHash::hash(expected, QCryptographicHash::Sha256));
        // One update per block; the read that finds the end is a block too, even when empty.
        QCOMPARE(updates, expected.size() / 8192 + 1);
        // Speed is there from the first block on: bytes over a read time that starts at 1 ms.
        QCOMPARE(firstBytes, qMin<qint64>(expected.size(), 8192));
        QVERIFY(firstSpeed > 0 && firstSpeed <= firstBytes * 1000.0);
    }

    // The server breaks off, resumes wrongly or misbehaves otherwise: the download ends with
    // the right file or an error, never with two files spliced together, and never hangs.
    void resume_data()
    {
        QTest::addColumn<Misdeed>("misdeed");
        QTest::addColumn<QString>("error");        // its text's key
        QTest::addColumn<int>("resumes");          // -1: not counted (nor the requests looked at)
        QTest::addColumn<QByteArray>("lastRange"); // what the last request asks for
        QTest::addColumn<QString>("file");         // whole, new (file), prefix (before the drop), none
        const auto row = [](const char *name, const Misdeed &m, const char *error, int resumes,
                            const char *lastRange, const char *file) {
            QTest::newRow(name) << m << QString::fromLatin1(error) << resumes << QByteArray(lastRange)
                                << QString::fromLatin1(file);
        };
        const auto with = [](auto change) {
            Misdeed m;
            change(m);
            return m;
        };
        const char *rest = "bytes=100000-";
        row("resumed where it stopped", with([](Misdeed &m) { m.drops = 1; }), "", 1, rest, "whole");
        row("two drops", with([](Misdeed &m) { m.drops = 2; }), "", 2, "bytes=200000-", "whole");
        row("server ignores the range", with([](Misdeed &m) { m.drops = 1, m.ranges = false; }), "", 1, rest,
            "whole");
        row("no validator: afresh", with([](Misdeed &m) { m.drops = 1, m.etag = {}; }), "", 1, "", "whole");
        // A weak ETag may not vouch for a range: without a date beside it, the whole file again.
        row("weak ETag: afresh", with([](Misdeed &m) { m.drops = 1, m.etag = "W/\"v1\""; }), "", 1, "",
            "whole");
        row("file changed meanwhile", with([](Misdeed &m) { m.drops = 1, m.change = Misdeed::NewFile; }), "",
            1, rest, "new");
        row("ETag changes, If-Range ignored",
            with([](Misdeed &m) { m.drops = 1, m.change = Misdeed::NewFileAnyway; }), "", -1, "", "new");
        row("Content-Range off", with([](Misdeed &m) { m.drops = 1, m.claimedStart = 0; }), "T19503", -1, "",
            "prefix");
        row("short body, attempts used up", with([](Misdeed &m) { m.announcedExtra = 1000; }), "T19503", 3,
            "bytes=300001-", "whole");
        row("trickle, stall timeout", with([](Misdeed &m) { m.trickleMs = 1000; }), "T19503", -1, "", "");
        row("endless redirects", with([](Misdeed &m) { m.redirectSelf = true; }), "T19506", -1, "", "none");
        // Qt refuses the answer; nothing is written.
        row("1 MB header", with([](Misdeed &m) { m.headerBytes = 1024 * 1024; }), "T19502", -1, "", "none");
    }
    void resume()
    {
        QFETCH(Misdeed, misdeed);
#ifdef Q_OS_WIN
        // Observed under Wine: the answer never reaches the client before its answer timeout
        // (ServerNotFound, nothing written), and the in-process server then serves no later
        // connection in time. The silent-server rows of downloadErrors cover that path.
        if (misdeed.headerBytes > 64 * 1024)
            QSKIP("1 MB header line: under Wine it ends by the answer timeout and stalls this "
                  "test's server for the later cases");
#endif
        QFETCH(int, resumes);
        QFETCH(QByteArray, lastRange);
        QFETCH(QString, file);
        // The body at a path of its own, so that a request Qt repeats late reaches no other row.
        const QString path = QStringLiteral("/file%1").arg(++m_paths);
        Resource served = resource(m_big);
        served.etag = misdeed.etag;
        served.ranges = misdeed.ranges;
        served.dropAfter = 100000;
        served.drops = misdeed.drops;
        served.announced = m_big.size() + misdeed.announcedExtra;
        served.claimedStart = misdeed.claimedStart;
        served.trickleMs = misdeed.trickleMs;
        if (misdeed.redirectSelf) {
            served.status = 302;
            served.location = m_server.url(path).toUtf8();
        }
        if (misdeed.headerBytes > 0)
            served.extraHeaders = "X-Padding: " + QByteArray(misdeed.headerBytes, 'x') + "\r\n";
        m_server.setResource(path, served);

        const QByteArray newBody = m_big.mid(1000) + "new";
        clsDownload dl;
        // Short stall timeout: what a hostile server does here it would do for minutes.
        dl.setTimeouts(5000, 1500);
        dl.setResumePolicy({3, {10, 40}});
        dl.setSha256(true);
        QList<QList<int>> seen;
        connect(&dl, &clsDownload::resuming, this, [&](int attempt, int max, int pause) {
            seen.append({attempt, max, pause});
            if (misdeed.change != Misdeed::Same && attempt == 1) {
                Resource changed = resource(newBody);
                changed.etag = "\"v2\"";
                changed.ignoreIfRange = misdeed.change == Misdeed::NewFileAnyway;
                m_server.setResource(path, changed);
            }
        });
        QVERIFY(download(dl, m_server.url(path), target()));

        QTEST(dl.result().messageKey(), "error");
        const QByteArray got = readFile(target());
        // Also after an error the file holds exactly what arrived, in its place.
        const QByteArray expected = file == QLatin1String("whole")    ? m_big
                                    : file == QLatin1String("new")    ? newBody
                                    : file == QLatin1String("prefix") ? m_big.left(100000)
                                                                      : got;
        QVERIFY(got == expected);
        QCOMPARE(QFile::exists(target()), file != QLatin1String("none"));
        QCOMPARE(dl.ReceivedBytes(), qint64(got.size()));
        if (dl.ErrorNumber() == 0) // the hash follows a restart as well as a rest
            QCOMPARE(dl.sha256(), QCryptographicHash::hash(got, QCryptographicHash::Sha256));
        if (resumes < 0)
            return;
        QList<HttpTestServer::Request> requests = m_server.requests();
        requests.removeIf([&](const HttpTestServer::Request &r) { return r.path != path.toUtf8(); });
        // Qt may send a request once more by itself when its connection closed early; the
        // engine's own requests are those counted by its signal.
        QVERIFY(requests.size() > resumes);
        QCOMPARE(requests.first().range, QByteArray());
        QCOMPARE(requests.last().range, lastRange);
        QCOMPARE(requests.last().ifRange, lastRange.isEmpty() ? QByteArray() : misdeed.etag);
        QCOMPARE(seen.size(), resumes);
        QCOMPARE(seen.first(), QList<int>({1, 3, 10}));
        QCOMPARE(seen.last().at(2), resumes > 1 ? 40 : 10); // the last pause repeats
    }

    void stop_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("stopAt");       // received bytes; -1: before any answer, -2: while
                                               // waiting to resume
        QTest::addColumn<bool>("fromHandler"); // else a moment later, with no block in hand
        QTest::addColumn<QByteArray>("written");
        Resource dropping = resource(m_big);
        dropping.etag = "\"v1\"";
        dropping.dropAfter = 100000;
        dropping.drops = 1;
        m_server.setResource(QStringLiteral("/dropping"), dropping);
        QTest::newRow("in the first block's handler")
            << served("/big.bin") << 8192 << true << m_big.left(8192);
        QTest::newRow("while the server stalls") << served("/stall") << 16384 << false << pattern(16384);
        QTest::newRow("before any answer") << served("/silent") << -1 << false << QByteArray();
        QTest::newRow("while waiting to resume") << served("/dropping") << -2 << false << m_big.left(100000);
    }
    // The timeouts and the pause before a resume are far away: only the stop request can end
    // these downloads.
    void stop()
    {
        QFETCH(QString, url);
        QFETCH(int, stopAt);
        QFETCH(bool, fromHandler);
        QFETCH(QByteArray, written);
        clsDownload dl;
        dl.setTimeouts(120000, 120000);
        dl.setResumePolicy({3, {120000}});
        const auto stopLater = [&] {
            QTimer::singleShot(stopAt == -1 ? 200 : 50, &dl, [&] { dl.StopDownload(true); });
        };
        if (stopAt == -1)
            stopLater();
        connect(&dl, &clsDownload::resuming, this, stopLater);
        connect(&dl, &clsDownload::update, this, [&] {
            if (dl.ReceivedBytes() != stopAt)
                return;
            QCOMPARE(dl.status(), quint8(1));
            fromHandler ? dl.StopDownload(true) : stopLater();
        });
        QVERIFY(download(dl, url, target()));

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.ReceivedBytes(), qint64(written.size()));
        QCOMPARE(QFile::exists(target()), stopAt != -1);
        QCOMPARE(readFile(target()), written);
    }

    // A handler that keeps the engine waiting (a message box, say) for longer than the
    // stall timeout, while more than Qt's read buffer is still to come: the server did not
    // stall, so the download goes on.
    void slowHandlerIsNoStall()
    {
        clsDownload dl;
        dl.setTimeouts(2000, 1000);
        bool first = true;
        connect(&dl, &clsDownload::update, this, [&] {
            if (!std::exchange(first, false))
                return;
            QEventLoop dialog;
            QTimer::singleShot(2500, &dialog, &QEventLoop::quit);
            dialog.exec();
        });
        QVERIFY(download(dl, served("/large.bin"), target()));
        QCOMPARE(dl.ErrorNumber(), 0);
        QVERIFY(readFile(target()) == m_big.repeated(10));
    }

    void deleted_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isQuery");
        QTest::addColumn<bool>("inHandler"); // else while nothing arrives
        QTest::newRow("download, in its update handler") << served("/big.bin") << false << true;
        QTest::newRow("download, while waiting") << served("/silent") << false << false;
        QTest::newRow("query, in its end handler") << served("/text3000.txt") << true << true;
        QTest::newRow("query, while waiting") << served("/silent") << true << false;
    }
    void deleted()
    {
        QFETCH(QString, url);
        QFETCH(bool, isQuery);
        QFETCH(bool, inHandler);
        QPointer<clsDownload> dl = new clsDownload;
        dl->setTimeouts(120000, 120000);
        const auto destroy = [&] { delete dl.data(); };
        if (!inHandler)
            QTimer::singleShot(200, this, destroy);
        else if (isQuery)
            connect(dl, &clsDownload::queryFinished, this, destroy);
        else
            connect(dl, &clsDownload::update, this, destroy);
        QVERIFY(isQuery ? dl->startQueryFile(url, QStringLiteral("t")) : dl->startDownload(url, target()));
        QTRY_VERIFY_WITH_TIMEOUT(dl.isNull(), 10000);

        // The next download is not disturbed by what the deleted one left behind.
        clsDownload next;
        QVERIFY(download(next, served("/big.bin"), target()));
        QCOMPARE(next.ErrorNumber(), 0);
        QVERIFY(readFile(target()) == m_big);
    }

    // While one transfer runs, every further call is refused without touching anything.
    void busy()
    {
        clsDownload dl;
        const QString other = m_work.filePath(QStringLiteral("other.bin"));
        const QString agent = QStringLiteral("Download");
        QSignalSpy finished(&dl, &clsDownload::downloadFinished);
        QVERIFY(dl.startDownload(served("/big.bin"), target()));
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("/exact.bin"), other));
        QVERIFY(!dl.startQueryFile(served("/text3000.txt"), agent));
        QVERIFY(finished.wait(30000));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(dl.ErrorNumber(), 0);
        QVERIFY(readFile(target()) == m_big);

        QSignalSpy text(&dl, &clsDownload::queryFinished);
        QVERIFY(dl.startQueryFile(served("/text3000.txt"), agent));
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("/exact.bin"), other));
        QVERIFY(text.wait(30000));
        QCOMPARE(text.at(0).at(0).toString().toLatin1(), m_text3000);
        QVERIFY(!QFile::exists(other));
    }

    void redirectPolicy_data()
    {
        QTest::addColumn<QUrl>("from");
        QTest::addColumn<QUrl>("to");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("http to https") << QUrl("http://a/x") << QUrl("https://a/x") << true;
        QTest::newRow("https to https") << QUrl("https://a/x") << QUrl("https://b/x") << true;
        QTest::newRow("https to http, any case") << QUrl("HTTPS://a/x") << QUrl("Http://a/x") << false;
        QTest::newRow("http to file") << QUrl("http://a/x") << QUrl("file:///etc/passwd") << false;
    }
    void redirectPolicy()
    {
        QFETCH(QUrl, from);
        QFETCH(QUrl, to);
        QTEST(NetTransport::redirectAllowed(from, to), "allowed");
    }
};

QTEST_GUILESS_MAIN(TestDownload)
#include "tst_download.moc"
