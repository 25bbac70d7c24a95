// Typing in the report page with two big logs, and the time to the first window with and
// without them. Run by hand: report_bench [megabytes per log] [keystrokes] [--typing-only]
#include "BenchSupport.h"
#include "BenchWindow.h"

#include "app/frmSupportKit.h"
#include "core/ProgramFolder.h"
#include "localisation/ShowMsg.h"
#include "support/LogFiles.h"
#include "support/PagedText.h"
#include "support/SharedTextView.h"

#include "pewriter/PeWriter.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>

namespace {
// Lines as Pawnsketch writes them, with the odd empty line, until the file has bytes.
void writeLog(const QString &path, qint64 bytes, const char *what)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    QByteArray block;
    for (int i = 0; block.size() < 1 << 20; ++i) {
        block += QByteArray("21.11.2026 09:14:") + QByteArray::number(10 + i % 50) + ' ' + what + " #" +
                 QByteArray::number(i) +
                 ": Modul modDatei.LadeLetzteDatei, Parameter C:\\Users\\Demo\\Documents\\"
                 "Pawnsketch\\Kurzpartie.psk\r\n";
        if (i % 40 == 0)
            block += "\r\n";
    }
    for (qint64 written = 0; written < bytes; written += block.size())
        f.write(block.left(int(qMin<qint64>(block.size(), bytes - written))));
}

// Anonymous memory now, from /proc: what a copy of a log would show up in.
long rssAnonKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("RssAnon:"))
            return line.mid(8).trimmed().split(' ').first().toLong();
    }
    return 0;
}

// "--paged MB": the paged reader alone over one log of that size.
int pagedOnly(qint64 megabytes)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("errorlog.txt"));
    writeLog(path, megabytes << 20, "Fehler");
    const long before = rssAnonKb();
    QElapsedTimer clock;
    clock.start();
    PagedText text(path);
    while (text.indexStep(1 << 20) == PagedText::Step::More) {
    }
    const double indexMs = double(clock.nsecsElapsed()) / 1e6;
    const long indexed = rssAnonKb();
    // The newest lines, as Ctrl+End shows them, and a screen in the middle.
    clock.restart();
    const qsizetype lines = text.lineCount();
    QString shown;
    for (qsizetype line = lines - 50; line < lines; ++line)
        shown += text.slice(text.lineStart(line), text.lineStart(line + 1));
    const double endMs = double(clock.nsecsElapsed()) / 1e6;
    clock.restart();
    for (qsizetype line = lines / 2; line < lines / 2 + 50; ++line)
        shown += text.slice(text.lineStart(line), text.lineStart(line + 1));
    const double middleMs = double(clock.nsecsElapsed()) / 1e6;
    std::printf("paged log of %lld MB: %lld lines, %lld characters, indexed in %.0f ms\n", megabytes,
                qint64(lines), qint64(text.length()), indexMs);
    std::printf("last 50 lines in %.2f ms, 50 lines in the middle in %.2f ms\n", endMs, middleMs);
    std::printf("RssAnon %ld kB before, %ld kB indexed (+%ld kB)\n", before, indexed, indexed - before);
    return shown.isEmpty() ? 1 : 0;
}

double percentile(QList<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[qMin(values.size() - 1, qsizetype(p * double(values.size())))];
}

long peakRssKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Milliseconds from creating the window until it is on the screen.
double timeToWindow()
{
    QElapsedTimer clock;
    clock.start();
    frmSupportKit w;
    const double ms = openWindow(w, clock);
    // A window closed while its logs are still being read leaves the read running; rounds
    // that overlapped so would add up memory no user's single window needs.
    auto *logs = w.findChild<LogFileLoader *>();
    if (!logs || !QTest::qWaitFor([logs] { return logs->isLoaded(); }, 120000))
        qFatal("logs never loaded");
    return ms;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc > 2 && QByteArray(argv[1]) == "--paged")
        return pagedOnly(QByteArray(argv[2]).toLongLong());
    const qint64 megabytes = argc > 1 ? QByteArray(argv[1]).toLongLong() : 20;
    const int keystrokes = argc > 2 ? QByteArray(argv[2]).toInt() : 200;
    setMessageAnswererForTesting([](const ShownMessage &) { return 1; });
    qputenv("SUPPORTKIT_VERSION_URL", "http://127.0.0.1:9");

    QTemporaryDir install;
    copyTree(QStringLiteral(SK_SOURCE_DIR "/demo/install"), install.path());
    setProgramFolderForTesting(install.path());
    PeWriter::Options options;
    PeWriter::writeFile(install.filePath(QStringLiteral("pawnsketch.exe")), options);

    // Start-up without logs, then with them, in turns; "--typing-only" leaves this out, so
    // that the peak memory is that of the typing alone.
    const bool typingOnly = QCoreApplication::arguments().contains(QStringLiteral("--typing-only"));
    QList<double> without, with;
    QDir().mkpath(install.filePath(QStringLiteral("logfiles")));
    writeLog(install.filePath(QStringLiteral("logfiles/startlog.txt")), megabytes << 20, "Start");
    writeLog(install.filePath(QStringLiteral("logfiles/errorlog.txt")), megabytes << 20, "Fehler");
    for (int round = 0; round < (typingOnly ? 0 : 5); ++round) {
        QDir(install.filePath(QStringLiteral("logfiles"))).removeRecursively();
        without << timeToWindow();
        QDir().mkpath(install.filePath(QStringLiteral("logfiles")));
        writeLog(install.filePath(QStringLiteral("logfiles/startlog.txt")), megabytes << 20, "Start");
        writeLog(install.filePath(QStringLiteral("logfiles/errorlog.txt")), megabytes << 20, "Fehler");
        with << timeToWindow();
    }

    const long rssBefore = peakRssKb();
    frmSupportKit w;
    w.Form_Load(QStringLiteral("1"));
    w.show();
    if (!QTest::qWaitForWindowExposed(&w))
        qWarning("window never exposed; times below include the wait");
    w.showPage(6);
    auto *startLog = w.findChild<SharedTextView *>(QStringLiteral("tbStartLogfile"));
    auto *report = w.findChild<SharedTextView *>(QStringLiteral("tbErrStartlogTxt"));
    w.findChild<QCheckBox *>(QStringLiteral("cbAppendLogfile_0"))->setChecked(true);
    w.findChild<QCheckBox *>(QStringLiteral("cbAppendLogfile_1"))->setChecked(true);
    // While the logs come in, a 10 ms timer tells how long the window was held up.
    QElapsedTimer loading;
    loading.start();
    qint64 lastTick = loading.nsecsElapsed();
    double worstStall = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = loading.nsecsElapsed();
        worstStall = qMax(worstStall, double(now - lastTick) / 1e6 - 10);
        lastTick = now;
    });
    ticker.start(10);
    int stable = 0;
    for (qsizetype last = -1; stable < 20 && loading.elapsed() < 120000;) {
        QTest::qWait(25);
        const qsizetype size = startLog->lineCount() + report->lineCount();
        stable = (size == last && (size > 1000 || megabytes == 0) && !startLog->isIndexing() &&
                  !report->isIndexing())
                     ? stable + 1
                     : 0;
        last = size;
    }
    ticker.stop();
    const double loadMs = double(loading.nsecsElapsed()) / 1e6 - 20 * 25;

    auto *message = w.findChild<QPlainTextEdit *>(QStringLiteral("tbErrorMessage"));
    auto *counter = w.findChild<QLabel *>(QStringLiteral("Label65"));
    message->setFocus();
    QList<double> keyMs;
    const QString letters = QStringLiteral("Pawnsketch stuerzt beim Oeffnen ab ");
    for (int i = 0; i < keystrokes; ++i) {
        const QString before = counter->text();
        QElapsedTimer clock;
        clock.start();
        QTest::keyClick(message, letters.at(i % letters.size()).toLatin1());
        keyMs << double(clock.nsecsElapsed()) / 1e6;
        // A trailing blank is trimmed away and changes nothing.
        if (counter->text() == before && letters.at(i % letters.size()) != u' ')
            qFatal("the counter did not follow keystroke %d", i);
    }
    QCoreApplication::processEvents();

    const double logsMb = 2.0 * double(megabytes);
    std::printf("logs: 2 x %lld MB, %d keystrokes\n", megabytes, keystrokes);
    std::printf("keystroke to report and counter: median %.3f ms, p99 %.3f ms, max %.3f ms\n",
                percentile(keyMs, 0.5), percentile(keyMs, 0.99), percentile(keyMs, 1.0));
    if (!typingOnly)
        std::printf("window shown: median %.1f ms without logs, %.1f ms with them (%.2fx)\n",
                    percentile(without, 0.5), percentile(with, 0.5),
                    percentile(with, 0.5) / percentile(without, 0.5));
    std::printf(
        "logs in their boxes and the report %.0f ms after the window, window held up %.0f ms at most\n",
        loadMs, worstStall);
    std::printf("peak RSS %.1f MB (%.1f MB before the measured window), %.2fx the logs\n",
                double(peakRssKb()) / 1024, double(rssBefore) / 1024, double(peakRssKb()) / 1024 / logsMb);
    // Settled: compare with a run with logs of 0 MB for what the logs cost.
    QTest::qWait(500);
    std::printf("RssAnon settled %.1f MB\n", double(rssAnonKb()) / 1024);
    return 0;
}
