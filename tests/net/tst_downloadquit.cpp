#include "net/clsDownload.h"

#include "NetTestServer.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

// Quitting the application while a blocking download waits must end the download, not
// leave it spinning on event loops that refuse to run. No event loop runs again after
// that, hence a test program of its own.
class TestDownloadQuit : public QObject
{
    Q_OBJECT

private slots:
    void quitWhileWaiting()
    {
        NetTestServer fixture;
        QVERIFY2(fixture.startFixture(), qPrintable(fixture.error()));
        QTemporaryDir work;
        clsDownload dl;
        dl.setTimeouts(120000, 120000);
        QSignalSpy captions(&dl, &clsDownload::finishedCaption);
        QTimer::singleShot(200, qApp, [] { QCoreApplication::exit(0); });
        dl.Download(fixture.url(QStringLiteral("/stall/?announce=50000&send=20000")),
                    work.filePath(QStringLiteral("target.bin")), {}, QStringLiteral("stopped"),
                    QStringLiteral("done"));

        QVERIFY(!dl.isBusy());
        QCOMPARE(dl.status(), quint8(0));
        QCOMPARE(captions.size(), 1);
        QCOMPARE(captions.at(0).at(0).toString(), QStringLiteral("stopped"));
    }
};

QTEST_GUILESS_MAIN(TestDownloadQuit)
#include "tst_downloadquit.moc"
