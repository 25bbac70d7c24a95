// Start-up and a language switch with language files of a whole application's size. Run by
// hand: language_bench [entries per file, default 8000] [rounds, default 7]
#include "BenchSupport.h"
#include "BenchWindow.h"

#include "app/frmSupportKit.h"
#include "core/ProgramFolder.h"
#include "localisation/ShowMsg.h"

#include "pewriter/PeWriter.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace {
double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

struct Round
{
    double windowMs = 0, switchMs = 0;
};

Round round(const QString &folder)
{
    setProgramFolderForTesting(folder);
    Round r;
    QElapsedTimer clock;
    clock.start();
    frmSupportKit w;
    r.windowMs = openWindow(w, clock);
    // English and back: the whole window in each language.
    auto *english = w.findChild<QRadioButton *>(QStringLiteral("optLng_1"));
    auto *german = w.findChild<QRadioButton *>(QStringLiteral("optLng_0"));
    QList<double> switches;
    for (QRadioButton *button : {english, german, english, german}) {
        clock.restart();
        button->click();
        QCoreApplication::processEvents();
        switches << double(clock.nsecsElapsed()) / 1e6;
    }
    r.switchMs = median(switches);
    return r;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const int entries = argc > 1 ? QByteArray(argv[1]).toInt() : 8000;
    const int rounds = argc > 2 ? QByteArray(argv[2]).toInt() : 7;
    setMessageAnswererForTesting([](const ShownMessage &) { return 1; });
    qputenv("SUPPORTKIT_VERSION_URL", "http://127.0.0.1:9");

    QTemporaryDir small, large;
    for (const QTemporaryDir *dir : {&small, &large}) {
        copyTree(QStringLiteral(SK_SOURCE_DIR "/demo/install"), dir->path());
        PeWriter::writeFile(dir->filePath(QStringLiteral("pawnsketch.exe")), PeWriter::Options());
    }
    padLanguageFiles(large.filePath(QStringLiteral("language")), entries);

    QList<double> smallWindow, largeWindow, smallSwitch, largeSwitch;
    for (int i = 0; i < rounds; ++i) {
        const Round s = round(small.path());
        const Round l = round(large.path());
        smallWindow << s.windowMs;
        smallSwitch << s.switchMs;
        largeWindow << l.windowMs;
        largeSwitch << l.switchMs;
    }
    std::printf("language files: demo's and %d entries more each, %d rounds in turn\n", entries, rounds);
    std::printf("window shown: median %.1f ms with the demo's files, %.1f ms with the large ones (%.2fx)\n",
                median(smallWindow), median(largeWindow), median(largeWindow) / median(smallWindow));
    std::printf("language switch: median %.1f ms with the demo's files, %.1f ms with the large ones\n",
                median(smallSwitch), median(largeSwitch));
    return 0;
}
