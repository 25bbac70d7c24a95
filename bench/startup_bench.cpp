// Time from starting a process to its main window being mapped on the X server, for
// SupportKit's window and for a bare Qt window of twelve tabs, in alternating runs.
// Run by hand under X (xvfb-run -a):
// startup_bench [rounds, default 7] [MB per log, default 20] [entries more per language file, default 0]
#include "BenchSupport.h"

#include "app/frmSupportKit.h"
#include "core/ProgramFolder.h"
#include "localisation/ShowMsg.h"

#include "pewriter/PeWriter.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTabWidget>
#include <QTcpServer>
#include <QTemporaryDir>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

qint64 monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// Milliseconds since the driver started this process (SK_BENCH_T0).
double sinceLaunchMs()
{
    return double(monotonicNs() - qEnvironmentVariable("SK_BENCH_T0").toLongLong()) / 1e6;
}

// Prints the time of the first MapNotify of a top-level window and ends the process: what
// comes after the window is on the screen is not measured.
class MapWatcher : public QAbstractNativeEventFilter
{
public:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto *event = static_cast<const xcb_generic_event_t *>(message);
        if ((event->response_type & ~0x80) != XCB_MAP_NOTIFY)
            return false;
        std::printf("%.3f\n", sinceLaunchMs());
        for (const QString &phase : phases)
            std::printf("%s\n", qPrintable(phase));
        std::fflush(stdout);
        std::_Exit(0);
    }
    QStringList phases;
};

void writeLog(const QString &path, qint64 bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    QByteArray block;
    for (int i = 0; block.size() < 1 << 20; ++i)
        block += "21.11.2026 09:14:10 #" + QByteArray::number(i) +
                 ": Modul modDatei.LadeLetzteDatei, Parameter C:\\Users\\Demo\\Documents\\Kurzpartie.psk\r\n";
    for (qint64 written = 0; written < bytes; written += block.size())
        f.write(block.left(int(qMin<qint64>(block.size(), bytes - written))));
}

int child(const QString &mode, const QString &install)
{
    MapWatcher watcher;
    qApp->installNativeEventFilter(&watcher);
    if (mode == QLatin1String("bare")) {
        QTabWidget window;
        for (int i = 0; i < 12; ++i)
            window.addTab(new QWidget, QStringLiteral("Seite %1").arg(i));
        window.resize(1024, 700);
        window.show();
        return QApplication::exec();
    }
    setMessageAnswererForTesting([](const ShownMessage &) { return 1; });
    setProgramFolderForTesting(install);
    QElapsedTimer clock;
    clock.start();
    frmSupportKit window;
    watcher.phases << QStringLiteral("  construct %1 ms").arg(double(clock.nsecsElapsed()) / 1e6, 0, 'f', 1);
    clock.restart();
    if (!window.Form_Load(QStringLiteral("1")))
        return 1;
    watcher.phases << QStringLiteral("  Form_Load %1 ms").arg(double(clock.nsecsElapsed()) / 1e6, 0, 'f', 1);
    clock.restart();
    window.show();
    watcher.phases << QStringLiteral("  show %1 ms").arg(double(clock.nsecsElapsed()) / 1e6, 0, 'f', 1);
    return QApplication::exec();
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

// One run: the time to the mapped window, or a negative number when there was none.
double run(const QString &mode, const QString &install, bool verbose)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("SK_BENCH_T0"), QString::number(monotonicNs()));
    process.setProcessEnvironment(env);
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--child"), mode, install});
    if (!process.waitForFinished(120000))
        return -1;
    const QStringList lines =
        QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    if (verbose && lines.size() > 1)
        std::printf("%s\n", qPrintable(lines.mid(1).join(u'\n')));
    return lines.isEmpty() ? -1 : lines.first().toDouble();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.value(1) == QLatin1String("--child"))
        return child(args.value(2), args.value(3));

    const int rounds = qMax(1, args.value(1, QStringLiteral("7")).toInt());
    const qint64 megabytes = args.value(2, QStringLiteral("20")).toLongLong();
    const int entries = args.value(3, QStringLiteral("0")).toInt();

    QTemporaryDir install;
    copyTree(QStringLiteral(SK_SOURCE_DIR "/demo/install"), install.path());
    PeWriter::Options options;
    PeWriter::writeFile(install.filePath(QStringLiteral("pawnsketch.exe")), options);
    if (entries > 0)
        padLanguageFiles(install.filePath(QStringLiteral("language")), entries);
    QDir().mkpath(install.filePath(QStringLiteral("logfiles")));
    writeLog(install.filePath(QStringLiteral("logfiles/startlog.txt")), megabytes << 20);
    writeLog(install.filePath(QStringLiteral("logfiles/errorlog.txt")), megabytes << 20);

    // A version server that takes the connection and never answers: the kernel accepts for
    // the listening socket, nobody reads.
    QTcpServer silent;
    if (!silent.listen(QHostAddress::LocalHost))
        qFatal("cannot listen");
    qputenv("SUPPORTKIT_VERSION_URL",
            QStringLiteral("http://127.0.0.1:%1").arg(silent.serverPort()).toUtf8());

    QList<double> bare, window, ratios;
    for (int round = 0; round < rounds; ++round) {
        const double a = run(QStringLiteral("bare"), install.path(), false);
        const double b = run(QStringLiteral("window"), install.path(), true);
        if (a <= 0 || b <= 0)
            qFatal("round %d: no window mapped", round);
        std::printf("round %d: bare %.1f ms, SupportKit %.1f ms (%.2fx)\n", round + 1, a, b, b / a);
        std::fflush(stdout);
        bare << a;
        window << b;
        ratios << b / a;
    }
    std::sort(ratios.begin(), ratios.end());
    std::printf("median: bare %.1f ms, SupportKit %.1f ms, %.2fx (rounds %.2f-%.2f)\n", median(bare),
                median(window), median(window) / median(bare), ratios.first(), ratios.last());
    return 0;
}
