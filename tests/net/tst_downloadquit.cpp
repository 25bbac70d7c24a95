#include "net/clsDownload.h"

#include "HttpTestServer.h"

#include <QtTest>

// The program ends while a download runs: its reply must go while Qt's network thread still
// runs, before the manager, or the end hangs or crashes. Nothing runs after this test's
// function but the program's end, hence a test program of its own.
class TestDownloadQuit : public QObject
{
    Q_OBJECT

    HttpTestServer m_server;
    QTemporaryDir m_work;

private slots:
    void endWhileRunning()
    {
        HttpTestServer::Resource stall;
        stall.body = QByteArray(20000, 's');
        stall.announced = 50000;
        stall.hold = true;
        m_server.setResource(QStringLiteral("/stall"), stall);
        QVERIFY(m_server.listen());
        auto *dl = new clsDownload; // left running into the program's end
        dl->setTimeouts(120000, 120000);
        QSignalSpy updates(dl, &clsDownload::update);
        QVERIFY(dl->startDownload(m_server.url(QStringLiteral("/stall")),
                                  m_work.filePath(QStringLiteral("target.bin"))));
        QVERIFY(updates.wait(10000));
        QVERIFY(dl->isBusy());
    }
};

QTEST_GUILESS_MAIN(TestDownloadQuit)
#include "tst_downloadquit.moc"
