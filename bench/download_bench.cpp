// download_bench URL FILE
//
// Downloads URL into FILE with clsDownload on a plain event loop, the way the window
// does it, and reports the throughput together with how late a 10 ms timer fired during
// the transfer (the window's responsiveness) and the peak resident memory.
#include "net/clsDownload.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {
QByteArray statusLine(const char *key)
{
    // /proc files report no size, so they are read whole rather than line by line.
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return "n/a";
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(key))
            return line.mid(qstrlen(key)).trimmed();
    }
    return "n/a";
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: download_bench URL FILE\n");
        return 2;
    }
    const QString url = QString::fromLocal8Bit(argv[1]);
    const QString file = QString::fromLocal8Bit(argv[2]);

    QElapsedTimer clock;
    std::vector<double> lateMs;
    qint64 lastTick = -1;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(10);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        if (lastTick >= 0)
            lateMs.push_back(std::max(0.0, double(now - lastTick) / 1e6 - 10.0));
        lastTick = now;
    });

    clsDownload download;
    qint64 updates = 0;
    QObject::connect(&download, &clsDownload::update, [&] { ++updates; });

    clock.start();
    ticker.start();
    download.Download(url, file);
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    ticker.stop();

    if (download.ErrorNumber() != 0) {
        std::printf("error %d %s\n", download.ErrorNumber(), qPrintable(download.ErrorDescription()));
        return 1;
    }

    std::sort(lateMs.begin(), lateMs.end());
    const double worst = lateMs.empty() ? 0.0 : lateMs.back();
    const double p99 = lateMs.empty() ? 0.0 : lateMs[std::min(lateMs.size() - 1, lateMs.size() * 99 / 100)];
    const qint64 bytes = download.ReceivedBytes();
    std::printf("%lld bytes in %.3f s\n", static_cast<long long>(bytes), seconds);
    std::printf("throughput %.1f MB/s, engine speed %.1f MB/s, %lld updates\n", double(bytes) / seconds / 1e6,
                download.Speed() / 1e6, static_cast<long long>(updates));
    std::printf("timer lateness: worst %.2f ms, p99 %.2f ms over %zu ticks\n", worst, p99, lateMs.size());
    std::printf("peak RSS (VmHWM) %s\n", statusLine("VmHWM:").constData());
    return bytes == download.Size() ? 0 : 1;
}
