#include "core/Platform.h"

#include <QtTest>

// Starting a Windows program through the system's own services: on Linux, Wine found on
// the PATH gets the program and each switch as arguments and runs in the program's folder.
class TestLaunch : public QObject
{
    Q_OBJECT

    QByteArray m_path = qgetenv("PATH");

private slots:
    void cleanup() { qputenv("PATH", m_path); }

    void wineGetsProgramAndSwitches()
    {
#ifdef Q_OS_WIN
        QSKIP("Windows starts programs through the shell");
#endif
        QTemporaryDir dir;
        const QString program = dir.filePath(QStringLiteral("Pawn sketch/pawnsketch.exe"));
        QVERIFY(QDir().mkpath(QFileInfo(program).path()));
        const QString record = dir.filePath(QStringLiteral("record.txt"));
        qputenv("SK_WINE_RECORD", QFile::encodeName(record));
        qputenv("PATH", SK_WINE_DIR ":" + m_path);
        const auto native = createNativePlatform();
        // Blanks around and between the switches are no arguments of their own.
        QCOMPARE(native->startProgram(program, QStringLiteral(" /q  /d /m ")),
                 Platform::LaunchResult::Started);
        QTRY_VERIFY(QFile::exists(record));
        QFile file(record);
        QVERIFY(file.open(QIODevice::ReadOnly));
        // Every line ends with a line break, so an empty argument would show as an empty line.
        const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
        QCOMPARE(lines, QStringList({QFileInfo(program).path(), program, "/q", "/d", "/m", ""}));
    }

    void noWineOnThePath()
    {
#ifdef Q_OS_WIN
        QSKIP("Windows starts programs through the shell");
#endif
        QTemporaryDir empty;
        qputenv("PATH", QFile::encodeName(empty.path()));
        QCOMPARE(
            createNativePlatform()->startProgram(empty.filePath(QStringLiteral("pawnsketch.exe")), " /q"),
            Platform::LaunchResult::RunnerMissing);
    }
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_launch.moc"
