#include "net/clsDownload.h"

#include "HttpTestServer.h"

#include <QtTest>

// Quitting the application while a blocking download waits must end the download, not
// leave it spinning on event loops that refuse to run. No event loop runs again after
// that, hence a test program of its own.
class TestDownloadQuit : public QObject
{
    Q_OBJECT

private slots:
    void quitWhileWaiting()
    {
        HttpTestServer server;
        HttpTestServer::Resource stall;
        stall.body = QByteArray(20000, 's');
        stall.announced = 50000;
        stall.hold = true;
        server.setResource(QStringLiteral("/stall"), stall);
        QVERIFY(server.listen());
        QTemporaryDir work;
        clsDownload dl;
        dl.setTimeouts(120000, 120000);
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        QTimer::singleShot(200, qApp, [] { QCoreApplication::exit(0); });
        dl.Download(server.url(QStringLiteral("/stall")), work.filePath(QStringLiteral("target.bin")), {},
                    QStringLiteral("stopped"), QStringLiteral("done"));
        QVERIFY(!dl.isBusy());
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(captions.size(), 1);
        QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
    }
};

QTEST_GUILESS_MAIN(TestDownloadQuit)
#include "tst_downloadquit.moc"
