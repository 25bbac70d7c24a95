#include "net/clsDownload.h"

#include "HttpTestServer.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

// A transfer that breaks off goes on where it stopped, checked by the first answer's
// validator; against the in-process server, which drops connections when told to.
class TestDownloadResume : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTemporaryDir m_work;
    QByteArray m_body;
    int m_paths = 0;
    QString target() const { return m_work.filePath(QStringLiteral("target.bin")); }
    // The body at a path of its own, so that a request Qt repeats late reaches no other test;
    // the first `drops` answers break off after 100000 bytes.
    QString serve(const QByteArray &etag, int drops, bool ranges = true, int announcedExtra = 0)
    {
        HttpTestServer::Resource resource;
        resource.body = m_body;
        resource.etag = etag;
        resource.ranges = ranges;
        resource.dropAfter = 100000;
        resource.drops = drops;
        resource.announced = m_body.size() + announcedExtra;
        const QString path = QStringLiteral("/file%1").arg(++m_paths);
        m_server.setResource(path, resource);
        QFile::remove(target());
        return path;
    }

private slots:
    void initTestCase()
    {
        clsDownload::setDefaultTimeouts(5000, 5000);
        QVERIFY(m_work.isValid());
        QVERIFY(m_server.listen());
        m_body.resize(300001);
        QRandomGenerator rng(7);
        for (char &c : m_body)
            c = char(rng.bounded(256));
    }

    void resume_data()
    {
        QTest::addColumn<QByteArray>("etag");
        QTest::addColumn<bool>("ranges");
        QTest::addColumn<int>("drops");          // answers that break off after 100000 bytes
        QTest::addColumn<int>("announcedExtra"); // every answer announces this much more than it sends
        QTest::addColumn<bool>("changeOnDrop");  // a new file with a new ETag appears meanwhile
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("resumes");
        QTest::addColumn<QByteArray>("lastRange"); // what the last request asks for
        const QByteArray v1("\"v1\""), rest("bytes=100000-");
        QTest::newRow("resumed where it stopped") << v1 << true << 1 << 0 << false << 0 << 1 << rest;
        QTest::newRow("two drops") << v1 << true << 2 << 0 << false << 0 << 2 << QByteArray("bytes=200000-");
        QTest::newRow("server ignores the range") << v1 << false << 1 << 0 << false << 0 << 1 << rest;
        QTest::newRow("no validator: afresh")
            << QByteArray() << true << 1 << 0 << false << 0 << 1 << QByteArray();
        // A weak ETag may not vouch for a range: without a date beside it, the whole file again.
        QTest::newRow("weak ETag: afresh")
            << QByteArray("W/\"v1\"") << true << 1 << 0 << false << 0 << 1 << QByteArray();
        QTest::newRow("file changed meanwhile") << v1 << true << 1 << 0 << true << 0 << 1 << rest;
        QTest::newRow("short body, attempts used up")
            << v1 << true << 0 << 1000 << false << 4 << 3 << QByteArray("bytes=300001-");
    }
    void resume()
    {
        QFETCH(QByteArray, etag);
        QFETCH(bool, ranges);
        QFETCH(int, drops);
        QFETCH(int, announcedExtra);
        QFETCH(bool, changeOnDrop);
        QFETCH(int, resumes);
        QFETCH(QByteArray, lastRange);
        const QString path = serve(etag, drops, ranges, announcedExtra);
        QByteArray expected = m_body;
        clsDownload dl;
        dl.setResumePolicy({3, {10, 40}});
        QList<QList<int>> seen;
        connect(&dl, &clsDownload::resuming, this, [&](int attempt, int max, int pause) {
            seen.append({attempt, max, pause});
            if (changeOnDrop && attempt == 1) {
                HttpTestServer::Resource changed;
                changed.body = expected = m_body.mid(1000) + "new";
                changed.etag = "\"v2\"";
                m_server.setResource(path, changed);
            }
        });
        dl.Download(m_server.url(path), target());

        QTEST(dl.ErrorNumber(), "error");
        // Also after an error the file holds exactly what arrived, in its place.
        QVERIFY(TestSupport::readFile(target()) == expected);
        QCOMPARE(dl.ReceivedBytes(), qint64(expected.size()));
        QList<HttpTestServer::Request> requests = m_server.requests();
        requests.removeIf([&](const HttpTestServer::Request &r) { return r.path != path.toUtf8(); });
        // Qt may send a request once more by itself when its connection closed early; the
        // engine's own requests are those counted by its signal.
        QVERIFY(requests.size() > resumes);
        QCOMPARE(requests.first().range, QByteArray());
        QCOMPARE(requests.last().range, lastRange);
        QCOMPARE(requests.last().ifRange, lastRange.isEmpty() ? QByteArray() : etag);
        QCOMPARE(seen.size(), resumes);
        QCOMPARE(seen.first(), QList<int>({1, 3, 10}));
        QCOMPARE(seen.last().at(2), resumes > 1 ? 40 : 10); // the last pause repeats
    }

    // Stop ends a download at once also while it waits for its next attempt.
    void stopWhileWaitingToResume()
    {
        const QString path = serve("\"v1\"", 1);
        clsDownload dl;
        dl.setResumePolicy({3, {60000}});
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        connect(&dl, &clsDownload::resuming, this,
                [&] { QTimer::singleShot(50, &dl, [&] { dl.StopDownload(true); }); });
        QElapsedTimer clock;
        clock.start();
        dl.Download(m_server.url(path), target(), {}, QStringLiteral("stopped"), QStringLiteral("done"));
        QVERIFY(clock.elapsed() < 30000);
        QCOMPARE(dl.ErrorNumber(), 0);
        QCOMPARE(captions.size(), 1);
        QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
        QCOMPARE(TestSupport::readFile(target()), m_body.left(100000));
    }
};

QTEST_GUILESS_MAIN(TestDownloadResume)
#include "tst_downloadresume.moc"
