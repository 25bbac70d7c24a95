#include "net/clsDownload.h"

#include "NetTestServer.h"
#include "app/ProgramState.h"
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

// Every server here listens on an ephemeral port, which on Linux lies above 32,767: the
// whole suite also shows that such ports work.
class TestDownload : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void queryFile_data();
    void queryFile();
    void queryFileEvents();
    void queryFileCancelledByHandler();
    void queryFilePendingMessage_data();
    void queryFilePendingMessage();

    void downloadErrors_data();
    void downloadErrors();
    void downloadWholeFile_data();
    void downloadWholeFile();
    void downloadDoesNotTruncate();
    void downloadIntoMissingFolder();
    void stopAfterFirstBlock();
    void stopWhileServerStalls();
    void stopBeforeAnswer();
    void slowHandlerIsNoStall();
    void speedAfterFirstBlock();

    void deletedInUpdateHandler();
    void deletedWhileWaiting();
    void secondCallWhileRunning();
    void asynchronousDownload();

    void redirectPolicy_data();
    void redirectPolicy();

private:
    QString fixture(const QString &path) const { return m_fixture.url(path); }
    QString served(const QString &name) const { return m_files.url(QLatin1Char('/') + name); }
    QString target() const { return m_work.filePath(QStringLiteral("target.bin")); }
    static QByteArray readAll(const QString &path);

    NetTestServer m_fixture;
    NetTestServer m_files;
    QTemporaryDir m_servedDir;
    QTemporaryDir m_work;
    QByteArray m_text3000;
    QByteArray m_big;
    QByteArray m_exact;
};

namespace {
// The fixture's body pattern.
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

QString percent(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}
} // namespace

QByteArray TestDownload::readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestDownload::initTestCase()
{
    clsDownload::setDefaultTimeouts(2000, 2000);
    QVERIFY(m_servedDir.isValid() && m_work.isValid());

    for (int i = 0; m_text3000.size() < 3000; ++i)
        m_text3000 += QByteArray::number(i % 10);
    m_big.resize(300001);
    QRandomGenerator rng(42);
    for (char &c : m_big)
        c = char(rng.bounded(256));
    m_exact = m_big.left(5 * 8192);
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("text3000.txt")), m_text3000));
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("big.bin")), m_big));
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("one.txt")), QByteArray(1024, 'a')));
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("large.bin")), m_big.repeated(10)));
    QVERIFY(writeFile(m_servedDir.filePath(QString::fromUtf8("a b%ä.bin")), m_big.left(20000)));
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("two.txt")), QByteArray(2048, 'b')));
    QVERIFY(writeFile(m_servedDir.filePath(QStringLiteral("exact.bin")), m_exact));

    QVERIFY2(m_fixture.startFixture(), qPrintable(m_fixture.error()));
    QVERIFY2(m_files.startFileServer(m_servedDir.path()), qPrintable(m_files.error()));
}

void TestDownload::cleanupTestCase()
{
    m_fixture.stop();
    m_files.stop();
}

void TestDownload::init()
{
    QFile::remove(target());
    programState().automaticUpdateCheck = false;
    pendingMessage().clear();
}

// ---- QueryFile ----

void TestDownload::queryFile_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("3000 bytes in chunks of 1024") << served("text3000.txt") << m_text3000;
    QTest::newRow("address without scheme")
        << QStringLiteral("127.0.0.1:%1/text3000.txt").arg(m_files.port()) << m_text3000;
    QTest::newRow("exactly one chunk") << served("one.txt") << QByteArray(1024, 'a');
    QTest::newRow("exactly two chunks") << served("two.txt") << QByteArray(2048, 'b');
    QTest::newRow("utf-8 text") << fixture("/text/?body=" + percent(QString::fromUtf8("13.2 Build 2209 ä\n")))
                                << QByteArray("13.2 Build 2209 \xc3\xa4\n");
    QTest::newRow("redirect followed")
        << fixture("/redirect/?to=" + percent(served("text3000.txt"))) << m_text3000;
    QTest::newRow("relative redirect")
        << fixture("/redirect/?to=" + percent("/text/?body=moved")) << QByteArray("moved");

    QTest::newRow("no content-length") << fixture("/nolength/x") << QByteArray();
    QTest::newRow("content-length 0") << fixture("/zero/x") << QByteArray();
    QTest::newRow("404") << fixture("/status/404/x") << QByteArray();
    QTest::newRow("500") << fixture("/status/500/x") << QByteArray();
    QTest::newRow("closed early") << fixture("/short/?announce=5000&send=2000") << QByteArray();
    QTest::newRow("stalls") << fixture("/stall/?announce=5000&send=2000") << QByteArray();
    QTest::newRow("never answers") << fixture("/silent/x") << QByteArray();
    QTest::newRow("nobody listening")
        << QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()) << QByteArray();
    QTest::newRow("https to a plain server")
        << QStringLiteral("https://127.0.0.1:%1/text3000.txt").arg(m_files.port()) << QByteArray();
    QTest::newRow("ftp") << QStringLiteral("ftp://127.0.0.1:%1/x").arg(m_files.port()) << QByteArray();
    QTest::newRow("redirect to ftp refused")
        << fixture("/redirect/?to=" + percent("ftp://127.0.0.1/x")) << QByteArray();
}

void TestDownload::queryFile()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, expected);

    clsDownload dl;
    const QString text = dl.QueryFile(url, 1024, QStringLiteral("Download"), false, 0);
    QCOMPARE(text, QString::fromUtf8(expected));
    QVERIFY(!dl.isBusy());
}

void TestDownload::queryFileEvents()
{
    clsDownload dl;
    QList<qint32> states;
    QList<qint64> sizes;
    QList<double> percents;
    connect(&dl, &clsDownload::Statechanged, this, [&](qint32 s) { states << s; });
    connect(&dl, &clsDownload::Startdownloading, this, [&](qint64 s) { sizes << s; });
    connect(&dl, &clsDownload::Progresschanged, this, [&](double p, bool &) { percents << p; });

    QCOMPARE(dl.QueryFile(served("text3000.txt"), 1024, QStringLiteral("Download"), true, 1).size(), 3000);
    QCOMPARE(states, QList<qint32>({2, 2, 2}));
    QCOMPARE(sizes, QList<qint64>({3000}));
    // Reads of 1024, 1024 and 952: progress before appending the second and third.
    QCOMPARE(percents.size(), 2);
    QCOMPARE(percents.at(0), 1024.0 / 3000.0 * 100.0);
    QCOMPARE(percents.at(1), 2048.0 / 3000.0 * 100.0);

    states.clear();
    sizes.clear();
    percents.clear();
    QCOMPARE(dl.QueryFile(fixture("/nolength/x"), 1024, QStringLiteral("Download"), true, 1), QString());
    QCOMPARE(states, QList<qint32>({2, 2, 2}));
    QCOMPARE(sizes, QList<qint64>({0}));
    QVERIFY(percents.isEmpty());
}

void TestDownload::queryFileCancelledByHandler()
{
    clsDownload dl;
    int calls = 0;
    connect(&dl, &clsDownload::Progresschanged, this, [&](double, bool &cancel) {
        ++calls;
        cancel = true;
    });
    QCOMPARE(dl.QueryFile(served("text3000.txt"), 1024, QStringLiteral("Download"), false, 0), QString());
    QCOMPARE(calls, 1);
}

void TestDownload::queryFilePendingMessage_data()
{
    QTest::addColumn<bool>("automatic");
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("expectMessage");

    QTest::newRow("no length, automatic check on") << true << fixture("/nolength/x") << true;
    QTest::newRow("no server, automatic check on")
        << true << QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()) << true;
    QTest::newRow("no length, automatic check off") << false << fixture("/nolength/x") << false;
    QTest::newRow("size known, automatic check on") << true << served("text3000.txt") << false;
}

void TestDownload::queryFilePendingMessage()
{
    QFETCH(bool, automatic);
    QFETCH(QString, url);
    QFETCH(bool, expectMessage);

    programState().automaticUpdateCheck = automatic;
    clsDownload dl;
    dl.QueryFile(url, 1024, QStringLiteral("Download"), false, 0);
    if (!expectMessage) {
        QVERIFY(!pendingMessage().isSet());
        return;
    }
    QCOMPARE(
        pendingMessage().text,
        QStringLiteral("Sie haben die automatische Update-Prüfung aktiviert.@@Die Suche nach Updates ist "
                       "fehlgeschlagen.@Ursache:@Keine Verbindung zum Server oder keine@Größenangabe im "
                       "Response-Header.@@Bitte überprüfen Sie Ihre Internet-Verbindung!#Update-Prüfung: "
                       "Verbindungsfehler"));
    QCOMPARE(pendingMessage().style, 48);
}

// ---- Download ----

void TestDownload::downloadErrors_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("errorNumber");
    QTest::addColumn<QString>("description");
    QTest::addColumn<int>("fileBytes"); // -1: no file written
    QTest::addColumn<bool>("doneCaption");

    const QString unknown = QStringLiteral("Unbekannter Fehler");
    QTest::newRow("404") << fixture("/status/404/x") << 404 << QStringLiteral("Seite/Datei nicht gefunden")
                         << -1 << false;
    QTest::newRow("403") << fixture("/status/403/x") << 403 << unknown << -1 << false;
    QTest::newRow("500") << fixture("/status/500/x") << 500 << unknown << -1 << false;
    QTest::newRow("no content-length")
        << fixture("/nolength/x") << 3 << QStringLiteral("Downloadgröße 0 Byte") << -1 << false;
    QTest::newRow("content-length 0")
        << fixture("/zero/x") << 3 << QStringLiteral("Downloadgröße 0 Byte") << -1 << false;
    QTest::newRow("ftp") << QStringLiteral("ftp://127.0.0.1/x") << 2
                         << QStringLiteral("URL nicht interpretierbar") << -1 << true;
    QTest::newRow("no url") << QStringLiteral("pawnsketch.exe") << 2
                            << QStringLiteral("URL nicht interpretierbar") << -1 << true;
    QTest::newRow("nobody listening") << QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort()) << 1
                                      << QStringLiteral("Server nicht gefunden") << -1 << true;
    QTest::newRow("never answers") << fixture("/silent/x") << 1 << QStringLiteral("Server nicht gefunden")
                                   << -1 << true;
    QTest::newRow("https to a plain server")
        << QStringLiteral("https://127.0.0.1:%1/big.bin").arg(m_files.port()) << 1
        << QStringLiteral("Server nicht gefunden") << -1 << true;
    QTest::newRow("closed early") << fixture("/short/?announce=50000&send=20000") << 4
                                  << QStringLiteral("Verbindung unterbrochen") << 20000 << true;
    QTest::newRow("stalls") << fixture("/stall/?announce=50000&send=20000") << 4
                            << QStringLiteral("Verbindung unterbrochen") << 20000 << true;
    QTest::newRow("redirect to ftp refused")
        << fixture("/redirect/?to=" + percent("ftp://127.0.0.1/x")) << 302 << unknown << -1 << false;
}

void TestDownload::downloadErrors()
{
    QFETCH(QString, url);
    QFETCH(int, errorNumber);
    QFETCH(QString, description);
    QFETCH(int, fileBytes);
    QFETCH(bool, doneCaption);

    clsDownload dl;
    QSignalSpy updates(&dl, &clsDownload::update);
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    QSignalSpy finished(&dl, &clsDownload::downloadFinished);
    dl.Download(url, target(), {}, QStringLiteral("stopped"), QStringLiteral("done"));

    QCOMPARE(dl.ErrorNumber(), errorNumber);
    QCOMPARE(dl.ErrorDescription(), description);
    QVERIFY(updates.size() >= 1);
    QCOMPARE(dl.status(), quint8(0));
    QCOMPARE(finished.size(), 1);
    if (doneCaption) {
        QCOMPARE(captions.size(), 1);
        QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("done"));
    } else {
        QCOMPARE(captions.size(), 0);
    }
    if (fileBytes < 0) {
        QVERIFY(!QFile::exists(target()));
    } else {
        QCOMPARE(dl.ReceivedBytes(), qint64(fileBytes));
        QCOMPARE(readAll(target()), pattern(fileBytes));
    }
}

void TestDownload::downloadWholeFile_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("many blocks, last one short") << served("big.bin") << m_big;
    QTest::newRow("whole number of blocks") << served("exact.bin") << m_exact;
    QTest::newRow("less than a block") << fixture("/file/?size=100") << pattern(100);
    QTest::newRow("escaped name") << served("a%20b%25%C3%A4.bin") << m_big.left(20000);
    QTest::newRow("blank and query") << served(QString::fromUtf8("a b%25ä.bin?x=1&y=%20#top"))
                                     << m_big.left(20000);
    QTest::newRow("after a redirect")
        << fixture("/redirect/?code=301&to=" + percent(served("big.bin"))) << m_big;
}

void TestDownload::downloadWholeFile()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, expected);

    clsDownload dl;
    QSignalSpy updates(&dl, &clsDownload::update);
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    QSignalSpy buttons(&dl, &clsDownload::disableButton);
    dl.Download(url, target(), {}, QStringLiteral("stopped"), QStringLiteral("done"));

    QCOMPARE(dl.ErrorNumber(), 0);
    QCOMPARE(dl.ErrorDescription(), QString());
    QCOMPARE(dl.Size(), qint64(expected.size()));
    QCOMPARE(dl.ReceivedBytes(), qint64(expected.size()));
    QVERIFY(readAll(target()) == expected);
    // One update per block; the read that finds the end is a block too, even when empty.
    QCOMPARE(updates.size(), expected.size() / 8192 + 1);
    QCOMPARE(captions.size(), 1);
    QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("done"));
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(dl.status(), quint8(0));
    QVERIFY(dl.Downloadtime() >= 0);
}

void TestDownload::downloadDoesNotTruncate()
{
    const QByteArray older(m_big.size() + 5000, 'x');
    QVERIFY(writeFile(target(), older));
    clsDownload dl;
    dl.Download(served("big.bin"), target());
    QCOMPARE(dl.ErrorNumber(), 0);
    const QByteArray now = readAll(target());
    QCOMPARE(now.size(), older.size());
    QVERIFY(now.left(m_big.size()) == m_big);
    QVERIFY(now.mid(m_big.size()) == older.mid(m_big.size()));
}

void TestDownload::downloadIntoMissingFolder()
{
    clsDownload dl;
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    dl.Download(served("big.bin"), m_work.filePath(QStringLiteral("missing/target.bin")), {},
                QStringLiteral("stopped"), QStringLiteral("done"));
    QCOMPARE(dl.ErrorNumber(), 5);
    QCOMPARE(dl.ErrorDescription(), QStringLiteral("Datei kann nicht geschrieben werden"));
    QCOMPARE(dl.ReceivedBytes(), qint64(0));
    QCOMPARE(captions.size(), 1);
    QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("done"));
    QCOMPARE(dl.status(), quint8(0));
}

void TestDownload::stopAfterFirstBlock()
{
    clsDownload dl;
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    int updates = 0;
    connect(&dl, &clsDownload::update, this, [&] {
        if (++updates == 1) {
            QCOMPARE(dl.status(), quint8(1));
            dl.StopDownload(true);
        }
    });
    dl.Download(served("big.bin"), target(), {}, QStringLiteral("stopped"), QStringLiteral("done"));

    QCOMPARE(updates, 1);
    QCOMPARE(dl.ReceivedBytes(), qint64(8192));
    QCOMPARE(dl.Size(), qint64(m_big.size()));
    QCOMPARE(dl.ErrorNumber(), 0);
    QCOMPARE(captions.size(), 1);
    QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
    QCOMPARE(readAll(target()), m_big.left(8192));
    QCOMPARE(dl.status(), quint8(0));
}

void TestDownload::stopWhileServerStalls()
{
    // The stall timeout is far away: only the stop request can end this download.
    clsDownload dl;
    dl.setTimeouts(1500, 120000);
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    connect(&dl, &clsDownload::update, this, [&] {
        if (dl.ReceivedBytes() == 16384)
            QTimer::singleShot(50, &dl, [&] { dl.StopDownload(true); });
    });
    dl.Download(fixture("/stall/?announce=50000&send=20000"), target(), {}, QStringLiteral("stopped"),
                QStringLiteral("done"));

    QCOMPARE(dl.ErrorNumber(), 0);
    QCOMPARE(dl.ReceivedBytes(), qint64(16384));
    QCOMPARE(captions.size(), 1);
    QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
}

void TestDownload::stopBeforeAnswer()
{
    clsDownload dl;
    dl.setTimeouts(120000, 120000);
    QSignalSpy captions(&dl, &clsDownload::finishedCaption);
    QTimer::singleShot(200, &dl, [&] { dl.StopDownload(true); });
    dl.Download(fixture("/silent/x"), target(), {}, QStringLiteral("stopped"), QStringLiteral("done"));

    QCOMPARE(dl.ErrorNumber(), 0);
    QCOMPARE(dl.ReceivedBytes(), qint64(0));
    QCOMPARE(captions.size(), 1);
    QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
    QVERIFY(!QFile::exists(target()));
}

void TestDownload::slowHandlerIsNoStall()
{
    // A handler that keeps the engine waiting (a message box over the window, say) for
    // longer than the stall timeout, while more than Qt's read buffer is still to come:
    // the server did not stall, so the download goes on.
    clsDownload dl;
    dl.setTimeouts(2000, 1000);
    bool first = true;
    connect(&dl, &clsDownload::update, this, [&] {
        if (!first)
            return;
        first = false;
        QEventLoop dialog;
        QTimer::singleShot(2500, &dialog, &QEventLoop::quit);
        dialog.exec();
    });
    dl.Download(served("large.bin"), target());
    QCOMPARE(dl.ErrorNumber(), 0);
    QVERIFY(readAll(target()) == m_big.repeated(10));
}

void TestDownload::speedAfterFirstBlock()
{
    clsDownload dl;
    qint64 received = -1;
    double speed = -1;
    connect(&dl, &clsDownload::update, this, [&] {
        if (received < 0) {
            received = dl.ReceivedBytes();
            speed = dl.Speed();
        }
    });
    dl.Download(served("big.bin"), target());
    QCOMPARE(received, qint64(8192));
    // Bytes over the read time in seconds, which starts at 1 ms: never above 8192 / 0.001.
    QVERIFY(speed > 0);
    QVERIFY(speed <= 8192.0 * 1000.0);
    QVERIFY(dl.Speed() > 0);
}

// ---- life time and re-entrancy ----

void TestDownload::deletedInUpdateHandler()
{
    QPointer<clsDownload> dl = new clsDownload;
    connect(dl, &clsDownload::update, this, [&] { delete dl.data(); });
    dl->Download(served("big.bin"), target());
    QVERIFY(dl.isNull());

    // The next download is not disturbed by what the deleted one left behind.
    clsDownload next;
    next.Download(served("big.bin"), target());
    QCOMPARE(next.ErrorNumber(), 0);
    QVERIFY(readAll(target()) == m_big);
}

void TestDownload::deletedWhileWaiting()
{
    QPointer<clsDownload> dl = new clsDownload;
    dl->setTimeouts(120000, 120000);
    QTimer::singleShot(200, this, [&] { delete dl.data(); });
    dl->Download(fixture("/silent/x"), target());
    QVERIFY(dl.isNull());

    dl = new clsDownload;
    dl->setTimeouts(120000, 120000);
    QTimer::singleShot(200, this, [&] { delete dl.data(); });
    QCOMPARE(dl->QueryFile(fixture("/silent/x"), 1024, QStringLiteral("Download"), false, 0), QString());
    QVERIFY(dl.isNull());
}

void TestDownload::secondCallWhileRunning()
{
    clsDownload dl;
    bool checked = false;
    connect(&dl, &clsDownload::update, this, [&] {
        if (checked)
            return;
        checked = true;
        QVERIFY(dl.isBusy());
        QVERIFY(!dl.startDownload(served("exact.bin"), m_work.filePath(QStringLiteral("other.bin"))));
        dl.Download(served("exact.bin"), m_work.filePath(QStringLiteral("other.bin")));
        QCOMPARE(dl.QueryFile(served("text3000.txt"), 1024, QStringLiteral("Download"), false, 0), QString());
        QVERIFY(!QFile::exists(m_work.filePath(QStringLiteral("other.bin"))));
    });
    dl.Download(served("big.bin"), target());
    QVERIFY(checked);
    QCOMPARE(dl.ErrorNumber(), 0);
    QVERIFY(readAll(target()) == m_big);
}

void TestDownload::asynchronousDownload()
{
    clsDownload dl;
    QSignalSpy finished(&dl, &clsDownload::downloadFinished);
    QVERIFY(dl.startDownload(served("big.bin"), target()));
    QVERIFY(dl.isBusy());
    QVERIFY(finished.wait(30000));
    QCOMPARE(dl.ErrorNumber(), 0);
    QVERIFY(readAll(target()) == m_big);

    QSignalSpy text(&dl, &clsDownload::queryFinished);
    QVERIFY(dl.startQueryFile(served("text3000.txt"), 1024, QStringLiteral("Download")));
    QVERIFY(text.wait(30000));
    QCOMPARE(text.at(0).at(0).toString().toLatin1(), m_text3000);
}

void TestDownload::redirectPolicy_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("allowed");

    QTest::newRow("http to http") << "http://a/x"
                                  << "http://b/y" << true;
    QTest::newRow("http to https") << "http://a/x"
                                   << "https://a/x" << true;
    QTest::newRow("https to https") << "https://a/x"
                                    << "https://b/x" << true;
    QTest::newRow("https to http") << "https://a/x"
                                   << "http://a/x" << false;
    QTest::newRow("HTTPS to Http") << "HTTPS://a/x"
                                   << "Http://a/x" << false;
    QTest::newRow("http to ftp") << "http://a/x"
                                 << "ftp://a/x" << false;
    QTest::newRow("http to file") << "http://a/x"
                                  << "file:///etc/passwd" << false;
}

void TestDownload::redirectPolicy()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, allowed);
    QCOMPARE(clsDownload::redirectAllowed(QUrl(from), QUrl(to)), allowed);
}

QTEST_GUILESS_MAIN(TestDownload)
#include "tst_download.moc"
