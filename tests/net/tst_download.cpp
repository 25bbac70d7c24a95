#include "net/ConnectionTest.h"
#include "net/clsDownload.h"

#include "HttpTestServer.h"
#include "core/ProgramState.h"
#include "localisation/PendingMessage.h"

#include <QEventLoop>
#include <QFile>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {
// Bytes that are not all alike, so that shifted data is noticed.
QByteArray pattern(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 7 + 3) % 251);
    return bytes;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

HttpTestServer::Resource resource(const QByteArray &body)
{
    HttpTestServer::Resource r;
    r.body = body;
    return r;
}

// The one caption shown, or how many there were.
QString onlyCaption(const QSignalSpy &captions)
{
    return captions.size() == 1 ? captions.at(0).at(0).toString()
                                : QStringLiteral("%1 captions").arg(captions.size());
}
} // namespace

// The server listens on an ephemeral port, which on Linux lies above 32,767: the whole
// suite also shows that such ports work.
class TestDownload : public QObject
{
    Q_OBJECT

    QString fixture(const QString &path) const { return m_server.url(path); }
    QString served(const QString &name) const { return m_server.url(QLatin1Char('/') + name); }
    QString noServer() const { return QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()); }
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

    HttpTestServer m_server;
    QTemporaryDir m_work;
    QByteArray m_text3000;
    QByteArray m_big;

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
        const QList<QPair<QString, QByteArray>> files{{QStringLiteral("text3000.txt"), m_text3000},
                                                      {QStringLiteral("two.txt"), QByteArray(2048, 'b')},
                                                      {QStringLiteral("big.bin"), m_big},
                                                      {QStringLiteral("exact.bin"), m_big.left(5 * 8192)},
                                                      {QStringLiteral("large.bin"), m_big.repeated(10)},
                                                      {QString::fromUtf8("a b%ä.bin"), m_big.left(20000)}};
        for (const auto &[name, bytes] : files)
            m_server.setResource(QLatin1Char('/') + name, resource(bytes));
        QVERIFY(m_server.listen());

        // Answers that go wrong, each at a path of its own.
        using Resource = HttpTestServer::Resource;
        const auto redirect = [](int status, const QString &to) {
            Resource r = resource("moved\n");
            r.status = status;
            r.location = to.toUtf8();
            return r;
        };
        Resource shortBody = resource(pattern(20000));
        shortBody.announced = 50000;
        Resource stall = shortBody;
        stall.hold = true;
        Resource noLength = resource(pattern(100));
        noLength.length = false;
        Resource silent;
        silent.silent = true;
        const QList<QPair<QString, Resource>> answers{{"/utf8.txt", resource("13.2 Build 2209 \xc3\xa4\n")},
                                                      {"/moved", resource("moved")},
                                                      {"/redirect-relative", redirect(302, "/moved")},
                                                      {"/redirect-ftp", redirect(302, "ftp://127.0.0.1/x")},
                                                      {"/redirect-big", redirect(301, served("big.bin"))},
                                                      {"/short", shortBody},
                                                      {"/stall", stall},
                                                      {"/nolength", noLength},
                                                      {"/zero", resource({})},
                                                      {"/silent", silent}};
        for (const auto &[path, answer] : answers)
            m_server.setResource(path, answer);
        for (const int status : {403, 500}) {
            Resource page = resource("status page\n");
            page.status = status;
            m_server.setResource(QStringLiteral("/status/%1").arg(status), page);
        }
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
        row("3000 bytes in chunks of 1024", served("text3000.txt"), m_text3000, false);
        row("address without scheme", QStringLiteral("127.0.0.1:%1/text3000.txt").arg(m_server.port()),
            m_text3000, false);
        row("whole number of chunks", served("two.txt"), QByteArray(2048, 'b'), false);
        row("utf-8 text", fixture("/utf8.txt"), "13.2 Build 2209 \xc3\xa4\n", false);
        row("relative redirect", fixture("/redirect-relative"), "moved", false);
        row("closed early", fixture("/short"), {}, false);
        row("stalls", fixture("/stall"), {}, false);
        row("no content-length", fixture("/nolength"), {}, true);
        row("content-length 0", fixture("/zero"), {}, true);
        row("404", fixture("/missing"), {}, true);
        row("never answers", fixture("/silent"), {}, true);
        row("nobody listening", noServer(), {}, true);
        row("ftp", QStringLiteral("ftp://127.0.0.1:%1/x").arg(m_server.port()), {}, true);
        row("redirect to ftp refused", fixture("/redirect-ftp"), {}, true);
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
        QVERIFY(!dl.isBusy());
        QCOMPARE(pendingMessage().isSet(), noSize);
        QCOMPARE(pendingMessage().style, noSize ? 48 : 0);
        if (noSize)
            QVERIFY(pendingMessage().text.endsWith(QStringLiteral("#Update-Prüfung: Verbindungsfehler")));
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
        const auto run = [&](const QString &url) {
            states.clear();
            sizes.clear();
            percents.clear();
            return dl.QueryFile(url, 1024, QStringLiteral("Download"), true, 1);
        };

        QCOMPARE(run(served("text3000.txt")).size(), 3000);
        QCOMPARE(states, QList<qint32>({2, 2, 2}));
        QCOMPARE(sizes, QList<qint64>({3000}));
        // Reads of 1024, 1024 and 952: progress before appending the second and third.
        QCOMPARE(percents, QList<double>({1024.0 / 3000.0 * 100.0, 2048.0 / 3000.0 * 100.0}));

        // Without a size the body is not fetched; a manual check leaves no message.
        QCOMPARE(run(fixture("/nolength")), QString());
        QCOMPARE(states, QList<qint32>({2, 2, 2}));
        QCOMPARE(sizes, QList<qint64>({0}));
        QVERIFY(percents.isEmpty());
        QVERIFY(!pendingMessage().isSet());

        cancel = true;
        QCOMPARE(run(served("text3000.txt")), QString());
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
        const char *unknown = "Unbekannter Fehler";
        row("404", fixture("/missing"), 404, "Seite/Datei nicht gefunden", -1, false);
        row("403", fixture("/status/403"), 403, unknown, -1, false);
        row("500", fixture("/status/500"), 500, unknown, -1, false);
        row("no content-length", fixture("/nolength"), 3, "Downloadgröße 0 Byte", -1, false);
        row("ftp", QStringLiteral("ftp://127.0.0.1/x"), 2, "URL nicht interpretierbar", -1, true);
        row("nobody listening", noServer(), 1, "Server nicht gefunden", -1, true);
        row("never answers", fixture("/silent"), 1, "Server nicht gefunden", -1, true);
        row("closed early", fixture("/short"), 4, "Verbindung unterbrochen", 20000, true);
        row("stalls", fixture("/stall"), 4, "Verbindung unterbrochen", 20000, true);
        row("redirect to ftp refused", fixture("/redirect-ftp"), 302, unknown, -1, false);
        row("missing folder", served("big.bin"), 5, "Datei kann nicht geschrieben werden", -1, true,
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
        QCOMPARE(onlyCaption(captions), doneCaption ? QStringLiteral("done") : QStringLiteral("0 captions"));
        QCOMPARE(dl.ReceivedBytes(), qint64(qMax(fileBytes, 0)));
        if (fileBytes < 0)
            QVERIFY(!QFile::exists(file.isEmpty() ? target() : file));
        else
            QCOMPARE(readAll(target()), pattern(fileBytes));
    }

    void downloadWholeFile_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("many blocks, last one short") << served("big.bin") << m_big;
        QTest::newRow("whole number of blocks") << served("exact.bin") << m_big.left(5 * 8192);
        QTest::newRow("less than a block") << served("text3000.txt") << m_text3000;
        QTest::newRow("blank, escape and query")
            << served(QString::fromUtf8("a b%25ä.bin?x=1&y=%20#top")) << m_big.left(20000);
        QTest::newRow("after a redirect") << fixture("/redirect-big") << m_big;
    }

    void downloadWholeFile()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, expected);
        // An older, longer file of the same name is overwritten from its start, not truncated.
        const QByteArray older(expected.size() + 5000, 'x');
        QVERIFY(writeFile(target(), older));

        clsDownload dl;
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        QSignalSpy buttons(&dl, &clsDownload::disableButton);
        int updates = 0;
        qint64 firstBytes = -1;
        double firstSpeed = -1;
        connect(&dl, &clsDownload::update, this, [&] {
            if (updates++ == 0) {
                firstBytes = dl.ReceivedBytes();
                firstSpeed = dl.Speed();
            }
        });
        download(dl, url);

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.ErrorDescription(), QString());
        QCOMPARE(dl.Size(), qint64(expected.size()));
        QCOMPARE(dl.ReceivedBytes(), qint64(expected.size()));
        QVERIFY(readAll(target()) == expected + older.mid(expected.size()));
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
            << served("big.bin") << 8192 << true << m_big.left(8192);
        QTest::newRow("while the server stalls") << fixture("/stall") << 16384 << false << pattern(16384);
        QTest::newRow("before any answer") << fixture("/silent") << -1 << false << QByteArray();
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
            if (fromHandler)
                dl.StopDownload(true);
            else
                stopLater();
        });
        download(dl, url);

        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(dl.ReceivedBytes(), qint64(written.size()));
        QCOMPARE(onlyCaption(captions), QStringLiteral("stopped"));
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(QFile::exists(target()), stopAt >= 0);
        QCOMPARE(readAll(target()), written);
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
        dl.Download(served("large.bin"), target());
        QCOMPARE(dl.ErrorNumber(), 0);
        QVERIFY(readAll(target()) == m_big.repeated(10));
    }

    void deleted_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isQuery");
        QTest::addColumn<bool>("inHandler"); // else while nothing arrives
        QTest::newRow("download, in its update handler") << served("big.bin") << false << true;
        QTest::newRow("download, while waiting") << fixture("/silent") << false << false;
        QTest::newRow("query, while waiting") << fixture("/silent") << true << false;
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
        next.Download(served("big.bin"), target());
        QCOMPARE(next.ErrorNumber(), 0);
        QVERIFY(readAll(target()) == m_big);
    }

    // While one transfer runs, every further call is refused without touching anything.
    void asynchronousAndBusy()
    {
        clsDownload dl;
        const QString other = m_work.filePath(QStringLiteral("other.bin"));
        QSignalSpy finished(&dl, &clsDownload::downloadFinished);
        QVERIFY(dl.startDownload(served("big.bin"), target()));
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("exact.bin"), other));
        dl.Download(served("exact.bin"), other);
        QCOMPARE(query(dl, served("text3000.txt")), QString());
        QVERIFY(!dl.startQueryFile(served("text3000.txt"), 1024, QStringLiteral("Download")));
        QVERIFY(finished.wait(30000));
        QCOMPARE(finished.size(), 1);
        QCOMPARE(dl.ErrorNumber(), 0);
        QVERIFY(readAll(target()) == m_big);
        QVERIFY(!QFile::exists(other));

        QSignalSpy text(&dl, &clsDownload::queryFinished);
        QVERIFY(dl.startQueryFile(served("text3000.txt"), 1024, QStringLiteral("Download")));
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("exact.bin"), other));
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
