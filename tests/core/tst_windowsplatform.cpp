#include "core/Locale.h"
#include "core/Platform.h"
#include "core/ProgramState.h"
#include "fonts/PageFonts.h"
#include "support/InstallationStatus.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <windows.h>

namespace {
// Whether GDI of this process knows a font family, as every Windows program asks.
bool gdiKnowsFamily(const QString &family)
{
    LOGFONTW wanted{};
    wanted.lfCharSet = DEFAULT_CHARSET;
    family.left(LF_FACESIZE - 1).toWCharArray(wanted.lfFaceName);
    HDC dc = GetDC(nullptr);
    bool found = false;
    EnumFontFamiliesExW(
        dc, &wanted,
        [](const LOGFONTW *, const TEXTMETRICW *, DWORD, LPARAM seen) {
            *reinterpret_cast<bool *>(seen) = true;
            return 0;
        },
        reinterpret_cast<LPARAM>(&found), 0);
    ReleaseDC(nullptr, dc);
    return found;
}

QString demoFile(const char *path)
{
    return QStringLiteral(SK_SOURCE_DIR "/demo/install/") + QLatin1String(path);
}
} // namespace

// Windows's own answers, asked for real in the system the tests run on (Wine on the build
// machines), and checked against what Qt or GDI learn from the system by other ways.
class TestWindowsPlatform : public QObject
{
    Q_OBJECT

    const std::unique_ptr<Platform> m_native = createNativePlatform();
    QTemporaryDir m_dir;

private slots:
    // The locale's calling code as text, without the terminating NUL of the API.
    void countryCode()
    {
        const QString code = m_native->countryCode();
        QVERIFY2(QRegularExpression(QStringLiteral("^[0-9]{1,3}$")).match(code).hasMatch(), qPrintable(code));
        const QString expected = countryCallingCode(QLocale::system().territory());
        if (!expected.isEmpty())
            QCOMPARE(code, expected);
    }

    void specialFolder_data()
    {
        QTest::addColumn<Platform::SpecialFolder>("kind");
        QTest::addColumn<QString>("expected");
        const auto standard = [](QStandardPaths::StandardLocation location) {
            return QStandardPaths::writableLocation(location);
        };
        QTest::newRow("fonts") << Platform::SpecialFolder::Fonts << standard(QStandardPaths::FontsLocation);
        QTest::newRow("desktop") << Platform::SpecialFolder::Desktop
                                 << standard(QStandardPaths::DesktopLocation);
        QTest::newRow("documents") << Platform::SpecialFolder::Documents
                                   << standard(QStandardPaths::DocumentsLocation);
        // The roaming application data, where Windows itself points APPDATA.
        QTest::newRow("application data") << Platform::SpecialFolder::AppData
                                          << QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA"));
    }

    void specialFolder()
    {
        QFETCH(Platform::SpecialFolder, kind);
        QFETCH(QString, expected);
        QVERIFY(!expected.isEmpty());
        const QString folder = m_native->specialFolder(kind);
        QVERIFY2(QDir(folder).isAbsolute() && !folder.contains(u'\\'), qPrintable(folder));
        QCOMPARE(QDir::cleanPath(folder).toLower(), QDir::cleanPath(expected).toLower());
    }

    // The program file replaced in one step; a file another program holds stays as it is, and
    // the caller learns that trying again may help.
    void moveFileOver_data()
    {
        QTest::addColumn<bool>("sourceExists");
        QTest::addColumn<bool>("targetHeld");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<bool>("busy");
        QTest::newRow("replaces") << true << false << true << false;
        QTest::newRow("target held open") << true << true << false << true;
        QTest::newRow("no source") << false << false << false << false;
    }
    void moveFileOver()
    {
        QFETCH(bool, sourceExists);
        QFETCH(bool, targetHeld);
        const QString source = m_dir.filePath(QStringLiteral("pawnsketch.exe.new"));
        const QString target = m_dir.filePath(QStringLiteral("pawnsketch.exe"));
        for (const auto &[path, content] : {std::pair{target, "old"}, {source, "new"}}) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(content);
        }
        if (sourceExists)
            QVERIFY(m_native->flushFile(source).ok);
        else
            QVERIFY(QFile::remove(source));
        // As a running program holds its file: others may read it, but not delete or replace it.
        HANDLE held = targetHeld
                          ? CreateFileW(QDir::toNativeSeparators(target).toStdWString().c_str(), GENERIC_READ,
                                        FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr)
                          : INVALID_HANDLE_VALUE;
        QVERIFY(!targetHeld || held != INVALID_HANDLE_VALUE);
        const Platform::FileResult result = m_native->moveFileOver(source, target);
        if (held != INVALID_HANDLE_VALUE)
            CloseHandle(held);
        QTEST(result.ok, "ok");
        QTEST(result.busy, "busy");
        QCOMPARE(result.error.isEmpty(), result.ok);
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray(result.ok ? "new" : "old"));
        QCOMPARE(QFile::exists(source), sourceExists && !result.ok);
    }

    // The shell starts the program with the switches as its command line; the recorder writes
    // what it got into the file its first argument names.
    void startProgram_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<Platform::LaunchResult>("result");
        QTest::newRow("program with switches")
            << QStringLiteral(SK_MAIL_RECORDER) << Platform::LaunchResult::Started;
        QTest::newRow("missing program")
            << m_dir.filePath(QStringLiteral("none/pawnsketch.exe")) << Platform::LaunchResult::Failed;
    }
    void startProgram()
    {
        QFETCH(QString, program);
        const QString record = m_dir.filePath(QStringLiteral("launched.txt"));
        QFile::remove(record);
        const QString switches = u'"' + QDir::toNativeSeparators(record) + QStringLiteral("\" /q /d");
        QTEST(m_native->startProgram(program, switches), "result");
        if (!QFile::exists(program))
            return;
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(record), 20000);
        QFile file(record);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("/q\0/d\0", 6));
    }

    // The times Windows keeps of a file, read back in local time as the status shows them (the
    // formats of the languages are the status table's part).
    void fileDates()
    {
        const QString path = m_dir.filePath(QStringLiteral("startlog.txt"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("log");
        QVERIFY(file.flush()); // written now, so that closing it changes no time
        const QDateTime accessed(QDate(2024, 3, 8), QTime(8, 0, 0));
        const QDateTime written(QDate(2024, 3, 7), QTime(14, 5, 9));
        QVERIFY(file.setFileTime(accessed, QFileDevice::FileAccessTime));
        QVERIFY(file.setFileTime(written, QFileDevice::FileModificationTime));
        file.close();

        const FileState state = readFileState(path, QStringLiteral("de"));
        QVERIFY(state.exists);
        QCOMPARE(state.dateText, QStringLiteral("07.03.2024 - 14:05:09"));
        const ProgramState &program = programState();
        // Wine keeps files on a Linux file system, which lets no one set a creation time.
        QVERIFY(program.fileCreated.isValid());
        QCOMPARE(program.fileAccessed, accessed);
        QCOMPARE(program.fileWritten, written);
    }

    // Added for this session from where it lies: GDI, and with it the font page's check, knows
    // the family afterwards. What is no font is refused.
    void addFont_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("family"); // "": not a font
        QTest::newRow("chess font") << demoFile("fonts/pwkdiagr.ttf") << "Pawnsketch Diagramm";
        QTest::newRow("not a font") << demoFile("ini/chessfonts.ini") << "";
    }
    void addFont()
    {
        QFETCH(QString, file);
        QFETCH(QString, family);
        const QString path = m_dir.filePath(QFileInfo(file).fileName());
        QVERIFY(QFile::copy(file, path));
        if (!family.isEmpty())
            QVERIFY(!gdiKnowsFamily(family));
        const QString added = m_native->addFont(path);
        if (family.isEmpty()) {
            QVERIFY(added.isEmpty());
            return;
        }
        QCOMPARE(added, path);
        const bool known = gdiKnowsFamily(family) && PageFonts::IsFontAvailable(family);
        RemoveFontResourceW(QDir::toNativeSeparators(path).toStdWString().c_str());
        QVERIFY(known);
    }

    // The system's HTML Help viewer opens the demo's help file in each way the program asks.
    void showHelp_data()
    {
        QTest::addColumn<Platform::HelpCommand>("command");
        QTest::addColumn<QString>("file");
        const QString help = demoFile("help/pawnsketch_de.chm");
        QTest::newRow("contents") << Platform::HelpCommand::Contents << help;
        QTest::newRow("topic") << Platform::HelpCommand::Topic << help;
        QTest::newRow("index") << Platform::HelpCommand::Index << help;
        QTest::newRow("search") << Platform::HelpCommand::Search << help;
        QTest::newRow("missing file")
            << Platform::HelpCommand::Contents << m_dir.filePath(QStringLiteral("missing.chm"));
    }
    void showHelp()
    {
        QFETCH(Platform::HelpCommand, command);
        QFETCH(QString, file);
        const Platform::HelpRequest request{file, command, 1060, QStringLiteral("composer"), 0};
        QCOMPARE(m_native->showHelp(request), QFile::exists(file));
    }
};

// Windows's own platform plugin: offscreen keeps a font list of its own and never sees what
// GDI was given. Its windows need a display, which the test run provides.
int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "windows");
    QApplication app(argc, argv);
    TestWindowsPlatform test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_windowsplatform.moc"
