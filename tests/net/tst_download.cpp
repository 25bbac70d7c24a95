#include "net/ConnectionTest.h"
#include "net/clsDownload.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"
#include "localisation/PendingMessage.h"
#include "testsupport/TestSupport.h"

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

// The one caption shown, or how many there were.
QString onlyCaption(const QSignalSpy &captions)
{
    return captions.size() == 1 ? captions.at(0).at(0).toString() : QString::number(captions.size());
}
} // namespace

// The server listens on an ephemeral port, which on Linux lies above 32,767: the whole
// suite also shows that such ports work.
class TestDownload : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTemporaryDir m_work;
    QByteArray m_text3000, m_big;

    QString served(const QString &path) const { return m_server.url(path); }
    QString target() const { return m_work.filePath(QStringLiteral("target.bin")); }
    static QString query(clsDownload &dl, const QString &url)
    {
        return dl.QueryFile(url, 1024, QStringLiteral("Download"), false, 0);
    }
    void download(clsDownload &dl, const QString &url, const QString &file = {})
    {
        dl.Download(url, file.isEmpty() ? target() : file, {}, QStringLiteral("stopped"),
                    QStringLiteral("done"));
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
            {"/two.txt", resource(QByteArray(2048, 'b'))},
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
        row("3000 bytes in chunks of 1024", served("/text3000.txt"), m_text3000, false);
        row("address without scheme", "127.0.0.1:" + port + "/text3000.txt", m_text3000, false);
        row("whole number of chunks", served("/two.txt"), QByteArray(2048, 'b'), false);
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
        const QString text = query(dl, url);
        QVERIFY2(text == QString::fromUtf8(expected), qPrintable(QStringLiteral("got \"%1\", error %2 %3")
                                                                     .arg(text.left(80))
                                                                     .arg(dl.ErrorNumber())
                                                                     .arg(dl.ErrorDescription())));
        QVERIFY(!dl.isBusy());
        QCOMPARE(pendingMessage().isSet(), noSize);
        QCOMPARE(pendingMessage().style, noSize ? 48 : 0);
        QCOMPARE(pendingMessage().text.endsWith(QStringLiteral("#Update-Prüfung: Verbindungsfehler")),
                 noSize);
    }

    void queryFileEvents()
    {
        clsDownload dl;
        QList<qint32> states;
        QList<qint64> sizes;
        QList<double> percents;
        bool cancel = false;
        connect(&dl, &clsDownload::Statechanged, this, [&](qint32 s) { states << s; });
        connect(&dl, &clsDownload::Startdownloading, this, [&](qint64 s) { sizes << s; });
        connect(&dl, &clsDownload::Progresschanged, this, [&](double p, bool &c) {
            percents << p;
            c = cancel;
        });
        const auto run = [&](const QString &path) {
            states.clear(), sizes.clear(), percents.clear();
            return dl.QueryFile(served(path), 1024, QStringLiteral("Download"), true, 1);
        };
        QCOMPARE(run("/text3000.txt").size(), 3000);
        QCOMPARE(states, QList<qint32>({2, 2, 2}));
        QCOMPARE(sizes, QList<qint64>({3000}));
        // Reads of 1024, 1024 and 952: progress before appending the second and third.
        QCOMPARE(percents, QList<double>({1024.0 / 3000.0 * 100.0, 2048.0 / 3000.0 * 100.0}));

        // Without a size the body is not fetched; a manual check leaves no message.
        QCOMPARE(run("/nolength"), QString());
        QCOMPARE(states, QList<qint32>({2, 2, 2}));
        QCOMPARE(sizes, QList<qint64>({0}));
        QVERIFY(percents.isEmpty() && !pendingMessage().isSet());

        cancel = true;
        QCOMPARE(run("/text3000.txt"), QString());
        QCOMPARE(percents.size(), 1);
    }

    void downloadErrors_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("errorNumber");
        QTest::addColumn<QString>("description");
        QTest::addColumn<int>("fileBytes"); // -1: no file written
        QTest::addColumn<bool>("doneCaption");
        QTest::addColumn<QString>("file"); // empty: the usual target
        const auto row = [](const char *name, const QString &url, int error, const char *text, int bytes,
                            bool done, const QString &file = {}) {
            QTest::newRow(name) << url << error << QString::fromUtf8(text) << bytes << done << file;
        };
        const char *unknown = "Unbekannter Fehler", *notFound = "Server nicht gefunden",
                   *broken = "Verbindung unterbrochen";
        row("404", served("/missing"), 404, "Seite/Datei nicht gefunden", -1, false);
        row("403", served("/status/403"), 403, unknown, -1, false);
        row("no content-length", served("/nolength"), 3, "Downloadgröße 0 Byte", -1, false);
        row("ftp", "ftp://127.0.0.1/x", 2, "URL nicht interpretierbar", -1, true);
        row("nobody listening", QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()), 1, notFound, -1,
            true);
        row("never answers", served("/silent"), 1, notFound, -1, true);
        row("closed early", served("/short"), 4, broken, 20000, true);
        row("stalls", served("/stall"), 4, broken, 20000, true);
        row("redirect to ftp refused", served("/redirect-ftp"), 302, unknown, -1, false);
        row("missing folder", served("/big.bin"), 5, "Datei kann nicht geschrieben werden", -1, true,
            m_work.filePath(QStringLiteral("missing/target.bin")));
    }
    void downloadErrors()
    {
        QFETCH(QString, url);
        QFETCH(int, fileBytes);
        QFETCH(bool, doneCaption);
        QFETCH(QString, file);
        clsDownload dl;
        QSignalSpy updates(&dl, &clsDownload::update);
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        QSignalSpy finished(&dl, &clsDownload::downloadFinished);
        download(dl, url, file);

        QTEST(dl.ErrorNumber(), "errorNumber");
        QTEST(dl.ErrorDescription(), "description");
        QVERIFY(updates.size() >= 1);
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(onlyCaption(captions), doneCaption ? QStringLiteral("done") : QStringLiteral("0"));
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
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        QSignalSpy buttons(&dl, &clsDownload::disableButton);
        int updates = 0;
        qint64 firstBytes = -1;
        double firstSpeed = -1;
        connect(&dl, &clsDownload::update, this, [&] {
            if (updates++ == 0)
                firstBytes = dl.ReceivedBytes(), firstSpeed = dl.Speed();
        });
        download(dl, url);

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.ErrorDescription(), QString());
        QCOMPARE(dl.Size(), qint64(expected.size()));
        QCOMPARE(dl.ReceivedBytes(), qint64(expected.size()));
        QVERIFY(readFile(target()) == expected + older.mid(expected.size()));
        // One update per block; the read that finds the end is a block too, even when empty.
        QCOMPARE(updates, expected.size() / 8192 + 1);
        // Speed is there from the first block on: bytes over a read time that starts at 1 ms.
        QCOMPARE(firstBytes, qMin<qint64>(expected.size(), 8192));
        QVERIFY(firstSpeed > 0 && firstSpeed <= firstBytes * 1000.0);
        QCOMPARE(onlyCaption(captions), QStringLiteral("done"));
        QCOMPARE(buttons.size(), 1);
        QCOMPARE(dl.status(), quint8(0));
    }

    void stop_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<int>("stopAt");       // received bytes; -1: before any answer
        QTest::addColumn<bool>("fromHandler"); // else a moment later, with no block in hand
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("in the first block's handler")
            << served("/big.bin") << 8192 << true << m_big.left(8192);
        QTest::newRow("while the server stalls") << served("/stall") << 16384 << false << pattern(16384);
        QTest::newRow("before any answer") << served("/silent") << -1 << false << QByteArray();
    }
    // The timeouts are far away: only the stop request can end these downloads.
    void stop()
    {
        QFETCH(QString, url);
        QFETCH(int, stopAt);
        QFETCH(bool, fromHandler);
        QFETCH(QByteArray, written);
        clsDownload dl;
        dl.setTimeouts(120000, 120000);
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        const auto stopLater = [&] {
            QTimer::singleShot(stopAt < 0 ? 200 : 50, &dl, [&] { dl.StopDownload(true); });
        };
        if (stopAt < 0)
            stopLater();
        connect(&dl, &clsDownload::update, this, [&] {
            if (dl.ReceivedBytes() != stopAt)
                return;
            QCOMPARE(dl.status(), quint8(1));
            fromHandler ? dl.StopDownload(true) : stopLater();
        });
        download(dl, url);

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.ReceivedBytes(), qint64(written.size()));
        QCOMPARE(onlyCaption(captions), QStringLiteral("stopped"));
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(QFile::exists(target()), stopAt >= 0);
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
        dl.Download(served("/large.bin"), target());
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
        if (inHandler)
            connect(dl, &clsDownload::update, this, destroy);
        else
            QTimer::singleShot(200, this, destroy);
        if (isQuery)
            QCOMPARE(query(*dl, url), QString());
        else
            dl->Download(url, target());
        QVERIFY(dl.isNull());

        // The next download is not disturbed by what the deleted one left behind.
        clsDownload next;
        next.Download(served("/big.bin"), target());
        QCOMPARE(next.ErrorNumber(), 0);
        QVERIFY(readFile(target()) == m_big);
    }

    // While one transfer runs, every further call is refused without touching anything.
    void asynchronousAndBusy()
    {
        clsDownload dl;
        const QString other = m_work.filePath(QStringLiteral("other.bin"));
        const QString agent = QStringLiteral("Download");
        QSignalSpy finished(&dl, &clsDownload::downloadFinished);
        QVERIFY(dl.startDownload(served("/big.bin"), target()));
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("/exact.bin"), other));
        dl.Download(served("/exact.bin"), other);
        QCOMPARE(query(dl, served("/text3000.txt")), QString());
        QVERIFY(!dl.startQueryFile(served("/text3000.txt"), 1024, agent));
        QVERIFY(finished.wait(30000));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(dl.ErrorNumber(), 0);
        QVERIFY(readFile(target()) == m_big);

        QSignalSpy text(&dl, &clsDownload::queryFinished);
        QVERIFY(dl.startQueryFile(served("/text3000.txt"), 1024, agent));
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
        QTEST(clsDownload::redirectAllowed(from, to), "allowed");
    }
};

QTEST_GUILESS_MAIN(TestDownload)
#include "tst_download.moc"
