#include "dialogs/FileFilters.h"
#include "dialogs/PathHelpers.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class TestFileFilters : public QObject
{
    Q_OBJECT

private slots:
    // Descriptions and patterns alternate, as in the string the Windows dialog takes.
    void table_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("pairs");
        QTest::newRow("7 several masks") << 7
                                         << QStringList{"Schach-Dateien (*.fen, *.pgn, *.pwk, *.html, *.jpg)",
                                                        "*.fen;*.pgn;*.pwk;*.html;*.jpg"};
        QTest::newRow("18 blank before bracket")
            << 18 << QStringList{"Algebraische Notation (*.alg)", "*.alg"};
        QTest::newRow("20 wildcard name") << 20 << QStringList{"Popeye (pywin*.exe)", "pywin*.exe"};
        QTest::newRow("30 one fixed name")
            << 30 << QStringList{"Pawnsketch Update (*.exe)", "pawnsketch_update.exe"};
        QTest::newRow("31 one fixed name")
            << 31 << QStringList{"Pawnsketch BETA (*.exe)", "pawnsketch_beta.exe"};
        QTest::newRow("22 all files") << 22 << QStringList{"Alle Dateien (*.*)", "*.*"};
        QTest::newRow("11 group")
            << 11
            << QStringList{"Pawnsketch (*.fen, *.alg, *.png, *.pwk, *.html, *.bmp, *.gif, *.jpg, "
                           "*.rtf, *.txt)",
                           "*.fen;*.alg;*.png;*.pwk;*.html;*.bmp;*.gif;*.jpg;*.rtf;*.txt",
                           "FEN Notation(*.fen)",
                           "*.fen",
                           "ALG Notation(*.alg)",
                           "*.alg",
                           "Pawnsketch (*.pwk)",
                           "*.pwk",
                           "Website (*.html)",
                           "*.html",
                           "JPG (*.jpg)",
                           "*.jpg",
                           "PNG (*.png)",
                           "*.png",
                           "Bitmap (*.bmp)",
                           "*.bmp",
                           "GIF (*.gif)",
                           "*.gif",
                           "Rich Text Format (*.rtf)",
                           "*.rtf",
                           "ASCII (*.txt)",
                           "*.txt"};
        QTest::newRow("21 group") << 21 << QStringList{"Algebraische Notation(*.alg)",
                                                       "*.alg",
                                                       "ASCII (*.txt)",
                                                       "*.txt",
                                                       "FEN Notation(*.fen)",
                                                       "*.fen",
                                                       "Portable Game Notation(*.pgn)",
                                                       "*.pgn"};
        QTest::newRow("28 group")
            << 28
            << QStringList{"Pawnsketch (*.fen, *.alg, *.png, *.pwk, *.html, *.bmp, *.gif, *.jpg, "
                           "*.rtf, *.txt, *.pgn)",
                           "*.fen;*.alg;*.png;*.pwk;*.html;*.bmp;*.gif;*.jpg;*.rtf;*.txt;*.pgn",
                           "ALG Notation(*.alg)",
                           "*.alg",
                           "Pawnsketch (*.pwk)",
                           "*.pwk",
                           "FEN Notation(*.fen)",
                           "*.fen",
                           "Website (*.html)",
                           "*.html",
                           "JPG (*.jpg)",
                           "*.jpg",
                           "PNG (*.png)",
                           "*.png",
                           "Bitmap (*.bmp)",
                           "*.bmp",
                           "GIF (*.gif)",
                           "*.gif",
                           "Rich Text Format (*.rtf)",
                           "*.rtf",
                           "ASCII (*.txt)",
                           "*.txt",
                           "Portable Game Notation(*.pgn)",
                           "*.pgn"};
        QTest::newRow("25 unassigned") << 25 << QStringList{};
        QTest::newRow("0 outside") << 0 << QStringList{};
        QTest::newRow("33 outside") << 33 << QStringList{};
    }
    void table()
    {
        QFETCH(int, index);
        QFETCH(QStringList, pairs);
        QStringList actual;
        for (const FileFilter &filter : fileFilters(index))
            actual << filter.description << filter.pattern;
        QCOMPARE(actual, pairs);
        const QString nul(QChar(0));
        QCOMPARE(filterString(index), pairs.isEmpty() ? QString() : pairs.join(nul) + nul);
    }

    // Every number from 1 to 32 but 25 offers something.
    void everyIndexAssigned()
    {
        for (int index = 1; index <= 32; ++index)
            QCOMPARE(fileFilters(index).isEmpty(), index == 25);
    }

    void matching_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("matches");
        QTest::newRow("fixed name") << "pawnsketch_update.exe"
                                    << "pawnsketch_update.exe" << true;
        QTest::newRow("fixed name, other case") << "PawnSketch_Update.EXE"
                                                << "pawnsketch_update.exe" << true;
        QTest::newRow("fixed name, other exe") << "other.exe"
                                               << "pawnsketch_update.exe" << false;
        QTest::newRow("fixed name, longer") << "pawnsketch_update.exe.bak"
                                            << "pawnsketch_update.exe" << false;
        QTest::newRow("fixed name, prefixed") << "x_pawnsketch_update.exe"
                                              << "pawnsketch_update.exe" << false;
        QTest::newRow("star") << "pywin32.exe"
                              << "pywin*.exe" << true;
        QTest::newRow("star empty") << "pywin.exe"
                                    << "pywin*.exe" << true;
        QTest::newRow("star, other start") << "popeye.exe"
                                           << "pywin*.exe" << false;
        QTest::newRow("stars backtrack") << "aXbXbc.fen"
                                         << "a*b*c.fen" << true;
        QTest::newRow("stars, wrong end") << "aXbXbd.fen"
                                          << "a*b*c.fen" << false;
        QTest::newRow("question mark") << "ab.fen"
                                       << "?b.fen" << true;
        QTest::newRow("question mark needs one") << "b.fen"
                                                 << "?b.fen" << false;
        QTest::newRow("last of several masks") << "game.PGN"
                                               << "*.fen;*.txt;*.pgn" << true;
        QTest::newRow("none of several masks") << "game.pgn"
                                               << "*.fen;*.alg;*.txt" << false;
        QTest::newRow("blanks around masks") << "notes.txt"
                                             << " *.bmp ; *.txt " << true;
        QTest::newRow("shorter extension") << "page.htm"
                                           << "*.html" << false;
        QTest::newRow("longer extension") << "page.html"
                                          << "*.htm" << false;
        QTest::newRow("all files, no extension") << "README"
                                                 << "*.*" << true;
        QTest::newRow("all files, two dots") << "a.b.c"
                                             << "*.*" << true;
        QTest::newRow("no masks") << "a.txt"
                                  << ";;" << false;
    }
    void matching()
    {
        QFETCH(QString, name);
        QFETCH(QString, pattern);
        QFETCH(bool, matches);
        QCOMPARE(matchesFilterPattern(name, pattern), matches);
    }

    void maxDirLen_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("maxLength");
        QTest::addColumn<QString>("shortened");
        QTest::newRow("fits") << R"(C:\a\b.txt)" << 10 << R"(C:\a\b.txt)";
        QTest::newRow("drive kept, folders dropped")
            << R"(C:\Programme\Pawnsketch\backup\pwk_exe.bak)" << 30 << R"(C:\...\backup\pwk_exe.bak)";
        QTest::newRow("folder path keeps its last folder")
            << R"(C:\Programme\Pawnsketch\backup\)" << 16 << R"(C:\...\backup\)";
        QTest::newRow("slashes") << "/home/user/pawnsketch/logfiles/startlog.txt" << 25
                                 << "/.../startlog.txt";
        QTest::newRow("network share kept") << R"(\\server\share\Pawnsketch\logfiles\errorlog.txt)" << 35
                                            << R"(\\server\share\...\errorlog.txt)";
        QTest::newRow("relative") << R"(logfiles\startlog.txt)" << 17 << R"(...\startlog.txt)";
        QTest::newRow("root gives way") << R"(C:\Programme\startlog.txt)" << 16 << R"(...\startlog.txt)";
        QTest::newRow("name too long") << R"(C:\x\averyveryverylongname.txt)" << 12 << "...gname.txt";
        QTest::newRow("tiny limit") << R"(C:\x\y.txt)" << 2 << "xt";
        QTest::newRow("no room") << R"(C:\x\y.txt)" << 0 << "";
    }
    void maxDirLen()
    {
        QFETCH(QString, path);
        QFETCH(int, maxLength);
        QFETCH(QString, shortened);
        QCOMPARE(MaxDirLen(path, maxLength), shortened);
    }

    void onlyAlphaNum_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kept");
        QTest::newRow("blanks and dots") << "Pawnsketch 13.2 Build 2209"
                                         << "Pawnsketch132Build2209";
        QTest::newRow("umlauts stay") << QString::fromUtf8("Größe: ä/ö_ü!") << QString::fromUtf8("Größeäöü");
        QTest::newRow("control characters") << "a-b\tc\r\n"
                                            << "abc";
        QTest::newRow("superscripts are no digits") << QString::fromUtf8("x²") << "x";
        QTest::newRow("letter beyond 16 bits") << QString::fromUtf8("𝔸1") << QString::fromUtf8("𝔸1");
        QTest::newRow("empty") << ""
                               << "";
    }
    void onlyAlphaNum()
    {
        QFETCH(QString, text);
        QFETCH(QString, kept);
        QCOMPARE(OnlyAlphaNum(text), kept);
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
