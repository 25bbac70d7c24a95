#include "dialogs/FileFilters.h"
#include "dialogs/PathHelpers.h"

#include <QtTest>

class TestFileFilters : public QObject
{
    Q_OBJECT

private slots:
    // Every number from 1 to 32 but 25 offers something, each description names its masks in
    // brackets as the pattern holds them (but the update and beta entries, which show "*.exe" and
    // take one name each), and the string for the Windows dialog alternates descriptions and patterns. After
    // their combined entry the Pawnsketch groups narrow it to single types.
    void table()
    {
        const QString nul(QChar(0));
        for (int index = 0; index <= 33; ++index) {
            const QList<FileFilter> filters = fileFilters(index);
            QCOMPARE(filters.isEmpty(), index < 1 || index > 32 || index == 25);
            QStringList pairs;
            for (const FileFilter &filter : filters) {
                pairs << filter.description << filter.pattern;
                const qsizetype open = filter.description.lastIndexOf(u'(');
                QVERIFY2(open > 0 && filter.description.endsWith(u')'), qPrintable(filter.description));
                const QString masks = filter.description.mid(open + 1).chopped(1);
                QCOMPARE(masks.split(QStringLiteral(", ")),
                         filter.pattern.startsWith(QStringLiteral("pawnsketch_"))
                             ? QStringList{"*.exe"}
                             : filter.pattern.split(u';'));
            }
            QCOMPARE(filterString(index), pairs.isEmpty() ? QString() : pairs.join(nul) + nul);
        }
        for (const int group : {11, 28}) {
            const QList<FileFilter> filters = fileFilters(group);
            const QStringList combined = filters.first().pattern.split(u';');
            QVERIFY(filters.size() > 2);
            for (const FileFilter &single : filters.mid(1))
                QVERIFY2(combined.contains(single.pattern), qPrintable(single.description));
        }
    }

    void matching_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("matches");
        const auto row = [](const char *name, const char *pattern, bool matches) {
            QTest::addRow("%s ~ %s", name, pattern)
                << QString::fromUtf8(name) << QString::fromUtf8(pattern) << matches;
        };
        row("PawnSketch_Update.EXE", "pawnsketch_update.exe", true);
        row("pawnsketch_update.exe.bak", "pawnsketch_update.exe", false);
        row("x_pawnsketch_update.exe", "pawnsketch_update.exe", false);
        row("pywin.exe", "pywin*.exe", true);
        row("aXbXbc.fen", "a*b*c.fen", true); // the star has to backtrack
        row("aXbXbd.fen", "a*b*c.fen", false);
        row("ab.fen", "?b.fen", true);
        row("b.fen", "?b.fen", false);
        row("game.PGN", "*.fen;*.txt;*.pgn", true);
        row("game.pgn", "*.fen;*.alg;*.txt", false);
        row("notes.txt", " *.bmp ; *.txt ", true);
        row("page.html", "*.htm", false);
        row("README", "*.*", true);
        row("a.txt", ";;", false);
    }
    void matching()
    {
        QFETCH(QString, name);
        QFETCH(QString, pattern);
        QTEST(matchesFilterPattern(name, pattern), "matches");
    }

    void maxDirLen_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("maxLength");
        QTest::addColumn<QString>("shortened");
        const auto row = [](const char *path, int maxLength, const char *shortened) {
            QTest::addRow("%s %d", path, maxLength)
                << QString::fromUtf8(path) << maxLength << QString::fromUtf8(shortened);
        };
        row(R"(C:\a\b.txt)", 10, R"(C:\a\b.txt)");
        row(R"(C:\Programme\Pawnsketch\backup\pwk_exe.bak)", 30, R"(C:\...\backup\pwk_exe.bak)");
        row(R"(C:\Programme\Pawnsketch\backup\)", 16, R"(C:\...\backup\)");
        row("/home/user/pawnsketch/logfiles/startlog.txt", 25, "/.../startlog.txt");
        row(R"(\\server\share\Pawnsketch\logfiles\errorlog.txt)", 35, R"(\\server\share\...\errorlog.txt)");
        row(R"(logfiles\startlog.txt)", 17, R"(...\startlog.txt)");
        row(R"(C:\Programme\startlog.txt)", 16, R"(...\startlog.txt)"); // the drive gives way
        row(R"(C:\x\averyveryverylongname.txt)", 12, "...gname.txt");   // only now the name is cut
        row(R"(C:\x\y.txt)", 2, "xt");
        row(R"(C:\x\y.txt)", 0, "");
    }
    void maxDirLen()
    {
        QFETCH(QString, path);
        QFETCH(int, maxLength);
        QTEST(MaxDirLen(path, maxLength), "shortened");
    }

    void onlyAlphaNum_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kept");
        int rows = 0;
        const auto row = [&rows](const char *text, const char *kept) {
            QTest::addRow("%d", ++rows) << QString::fromUtf8(text) << QString::fromUtf8(kept);
        };
        row("Pawnsketch 13.2 Build 2209", "Pawnsketch132Build2209");
        row("Größe: ä/ö_ü!", "Größeäöü");
        row("a-b\tc\r\n", "abc");
        row("x²", "x");  // superscripts are no digits
        row("𝔸1", "𝔸1"); // a letter beyond 16 bits
        row("", "");
    }
    void onlyAlphaNum()
    {
        QFETCH(QString, text);
        QTEST(OnlyAlphaNum(text), "kept");
    }

    void tempName()
    {
        QTemporaryDir dir;
        const QString first = GetTempName(dir.path(), QStringLiteral("log/x"));
        const QString second = GetTempName(dir.path(), QStringLiteral("log/x"));
        QVERIFY(first != second);
        const QFileInfo info(first);
        QVERIFY(info.isFile()); // reserved
        QCOMPARE(info.absolutePath(), QFileInfo(dir.path()).absoluteFilePath());
        QVERIFY(info.fileName().startsWith(QStringLiteral("logx")));
        QVERIFY(info.fileName().endsWith(QStringLiteral(".tmp")));
        QCOMPARE(GetTempName(dir.filePath(QStringLiteral("missing"))), QString());
    }

#ifdef Q_OS_LINUX
    // The user's fontconfig folder; built from the environment, never created here.
    void fontsFolder_data()
    {
        QTest::addColumn<bool>("xdgDataHome");
        QTest::addColumn<QString>("below");
        QTest::newRow("XDG_DATA_HOME") << true << "/fonts";
        QTest::newRow("default") << false << "/.local/share/fonts";
    }
    void fontsFolder()
    {
        QFETCH(bool, xdgDataHome);
        QFETCH(QString, below);
        QTemporaryDir dir;
        const QByteArray home = qgetenv("HOME");
        const QByteArray data = qgetenv("XDG_DATA_HOME");
        qputenv("HOME", dir.path().toUtf8());
        if (xdgDataHome)
            qputenv("XDG_DATA_HOME", dir.path().toUtf8());
        else
            qunsetenv("XDG_DATA_HOME");
        const QString folder = GetSpecialFolder(Platform::SpecialFolder::Fonts);
        qputenv("HOME", home);
        data.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", data);
        QCOMPARE(folder, dir.path() + below);
    }
#endif
};

QTEST_GUILESS_MAIN(TestFileFilters)
#include "tst_filefilters.moc"
