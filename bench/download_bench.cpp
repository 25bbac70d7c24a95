// download_bench URL FILE
// download_bench --resume FILE [SIZE_MB [ROUNDS]]
//
// Downloads URL into FILE with clsDownload on a plain event loop, the way the window
// does it, and reports the throughput together with how late a 10 ms timer fired during
// the transfer (the window's responsiveness) and the peak resident memory.
//
// --resume compares a download whose connection breaks off half-way (and goes on with a
// range request, as the repair page's download does) with an uninterrupted one, both
// served from a sparse file of SIZE_MB (default 1024) by the tests' HTTP server on a
// thread of its own; ROUNDS (default 5) rounds of each, in turn.
//
// --verify downloads a program file of SIZE_MB (default 100) the same way and times the
// checks before it is offered for install (size, SHA-256 against the signed list,
// Authenticode where the system has it) against the download itself.
#include "maintenance/Authenticode.h"
#include "maintenance/DownloadCheck.h"
#include "net/HttpTestServer.h"
#include "net/clsDownload.h"
#include "pewriter/PeWriter.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

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
// Runs a download to its end on the event loop, as the window does.
void runDownload(clsDownload &download, const QString &url, const QString &file)
{
    QEventLoop loop;
    QObject::connect(&download, &clsDownload::downloadFinished, &loop, &QEventLoop::quit);
    if (download.startDownload(url, file) && download.isBusy())
        loop.exec();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n == 0 ? 0.0 : n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

int resumeBench(const QString &file, qint64 sizeMb, int rounds, bool verify)
{
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/sk-resume-bench.XXXXXX"));
    const QString served = dir.filePath(QStringLiteral("big.bin"));
    const qint64 size = sizeMb * 1024 * 1024;
    QFile sparse(served);
    // A program file in front, so that the checks go all the way to the checksum.
    if (!dir.isValid() || !sparse.open(QIODevice::WriteOnly) || sparse.write(PeWriter::build({})) <= 0 ||
        !sparse.resize(size)) {
        std::fprintf(stderr, "cannot make the served file\n");
        return 2;
    }
    sparse.close();
    QString sha256;
    if (sparse.open(QIODevice::ReadOnly)) {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        hash.addData(&sparse);
        sha256 = QString::fromLatin1(hash.result().toHex());
        sparse.close();
    }

    // The server runs on a thread of its own, as a server in another process would.
    QThread thread;
    auto *server = new HttpTestServer;
    server->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, server, &QObject::deleteLater);
    thread.start();
    bool listening = false;
    QMetaObject::invokeMethod(
        server, [&] { listening = server->listen(); }, Qt::BlockingQueuedConnection);
    if (!listening) {
        std::fprintf(stderr, "the server does not listen\n");
        return 2;
    }

    QByteArray digest;
    const auto fetch = [&](const QString &path, int &resumes, bool hashed = false) {
        QFile::remove(file);
#ifdef Q_OS_UNIX
        // The previous download's pages go to the disk now, not during this one's clock.
        ::sync();
#endif
        clsDownload download;
        download.setResumePolicy(programResumePolicy());
        download.setSha256(hashed);
        resumes = 0;
        QObject::connect(&download, &clsDownload::resuming, [&] { ++resumes; });
        QElapsedTimer clock;
        clock.start();
        runDownload(download, server->url(path), file);
        const bool ok =
            download.ErrorNumber() == 0 && download.ReceivedBytes() == size && QFile(file).size() == size;
        // The hash's last blocks are waited for as the page waits for them.
        if (hashed)
            digest = download.sha256();
        const double seconds = double(clock.nsecsElapsed()) / 1e9;
        return ok ? seconds : -1.0;
    };

    std::vector<double> plain, resumed, ratios, extra;
    if (verify) {
        for (int round = 0; round < rounds; ++round) {
            HttpTestServer::Resource whole;
            whole.file = served;
            const QString path = QStringLiteral("/verify%1").arg(round);
            server->setResource(path, whole);
            int resumes = 0;
            // Taken in turn, so that neither always runs on the heels of the other.
            double unchecked = round % 2 ? fetch(path, resumes) : 0;
            const double transfer = fetch(path, resumes, true);
            if (round % 2 == 0)
                unchecked = fetch(path, resumes);
            QElapsedTimer clock;
            clock.start();
            const DownloadVerdict verdict = checkDownloadedProgram({file, size, size, digest}, sha256, size);
            const AuthenticodeResult authenticode = checkAuthenticode(file);
            const double check = double(clock.nsecsElapsed()) / 1e9;
            if (unchecked < 0 || transfer < 0 || verdict != DownloadVerdict::Ok) {
                std::printf("round %d: download or check failed (%d)\n", round + 1, int(verdict));
                thread.quit();
                thread.wait();
                return 1;
            }
            const double added = (transfer + check - unchecked) / (transfer + check) * 100.0;
            std::printf("round %d: unchecked download %.3f s; hashed download %.3f s + checks %.3f s "
                        "(Authenticode %d): verification adds %.1f %%\n",
                        round + 1, unchecked, transfer, check, int(authenticode.status), added);
            ratios.push_back(added);
            plain.push_back(unchecked);
            resumed.push_back(transfer);
            extra.push_back(check);
        }
        thread.quit();
        thread.wait();
        QFile::remove(file);
        std::printf("%lld MiB: unchecked download median %.3f s, hashed download median %.3f s, checks "
                    "median %.3f s; verification adds median %.1f %% of download plus check time (limit "
                    "5 %%)\n",
                    static_cast<long long>(sizeMb), median(plain), median(resumed), median(extra),
                    median(ratios));
        return 0;
    }
    for (int round = 0; round < rounds; ++round) {
        HttpTestServer::Resource whole;
        whole.file = served;
        whole.etag = "\"bench\"";
        HttpTestServer::Resource dropping = whole;
        dropping.dropAfter = size / 2;
        dropping.drops = 1;
        const QString plainPath = QStringLiteral("/plain%1").arg(round);
        const QString dropPath = QStringLiteral("/drop%1").arg(round);
        server->setResource(plainPath, whole);
        server->setResource(dropPath, dropping);
        // Taken in turn, so that neither always runs on the heels of the other.
        int resumes = 0;
        int plainResumes = 0;
        double a = 0, b = 0;
        if (round % 2 == 0) {
            a = fetch(plainPath, plainResumes);
            b = fetch(dropPath, resumes);
        } else {
            b = fetch(dropPath, resumes);
            a = fetch(plainPath, plainResumes);
        }
        if (a < 0 || b < 0 || resumes != 1 || plainResumes != 0) {
            std::printf("round %d: download failed (uninterrupted %.3f s, broken off %.3f s, %d resumes)\n",
                        round + 1, a, b, resumes);
            thread.quit();
            thread.wait();
            return 1;
        }
        std::printf("round %d: uninterrupted %.3f s, broken off at 50 %% and resumed %.3f s (%.2fx)\n",
                    round + 1, a, b, b / a);
        plain.push_back(a);
        resumed.push_back(b);
        ratios.push_back(b / a);
        extra.push_back(b - a);
    }
    thread.quit();
    thread.wait();
    QFile::remove(file);
    std::printf(
        "%lld MiB: uninterrupted median %.3f s, resumed median %.3f s, resumed/uninterrupted median %.2f "
        "(range %.2f-%.2f), time added median %.3f s\n",
        static_cast<long long>(sizeMb), median(plain), median(resumed), median(ratios),
        *std::min_element(ratios.begin(), ratios.end()), *std::max_element(ratios.begin(), ratios.end()),
        median(extra));
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const bool verify = argc >= 3 && qstrcmp(argv[1], "--verify") == 0;
    if (argc >= 3 && (verify || qstrcmp(argv[1], "--resume") == 0)) {
        return resumeBench(QString::fromLocal8Bit(argv[2]),
                           argc > 3 ? QByteArray(argv[3]).toLongLong() : (verify ? 100 : 1024),
                           argc > 4 ? QByteArray(argv[4]).toInt() : 5, verify);
    }
    if (argc != 3) {
        std::fprintf(
            stderr, "usage: download_bench URL FILE\n       download_bench --resume FILE [SIZE_MB [ROUNDS]]\n"
                    "       download_bench --verify FILE [SIZE_MB [ROUNDS]]\n");
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
    runDownload(download, url, file);
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    ticker.stop();

    if (download.ErrorNumber() != 0) {
        std::printf("error %d\n", download.ErrorNumber());
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
