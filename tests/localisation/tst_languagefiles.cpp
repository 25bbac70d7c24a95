#include "core/ProgramFolder.h"
#include "core/TextFile.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "localisation/Messages.h"
#include "localisation/PendingMessage.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

class TestLanguageFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    void write(const QString &name, const QByteArray &bytes)
    {
        QVERIFY(TestSupport::writeFile(m_dir.filePath("language/" + name), bytes));
    }
    // A file below the test's folder, outside the language files.
    QString writeIni(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        return TestSupport::writeFile(path, bytes) ? path : QString();
    }

private slots:
    void initTestCase() { setProgramFolderForTesting(m_dir.path()); }

    void init()
    {
        QDir(m_dir.filePath("language")).removeRecursively();
        pendingMessage().clear();
        languageState() = LanguageState();
    }

    void readsLikeWindows_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("def");
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &content, const char *section, const char *key,
                            const char *def, const QString &expected, int size = 1200) {
            QTest::newRow(name) << content << QString::fromUtf8(section) << QString::fromUtf8(key)
                                << QString::fromUtf8(def) << size << expected;
        };
        const QByteArray basic = "[de]\r\nA=Eins\r\nb = zwei  \r\n";
        row("section and key ignore case", basic, "DE", "a", "x", "Eins");
        row("key beyond ASCII ignores case", "[de]\n\xC3\x84rger=1\n", "de", "\xC3\xA4RGER", "x", "1");
        row("blanks around key and value", basic, "de", "B", "x", "zwei");
        row("blanks around the asked key", basic, " de ", " b ", "x", "zwei");
        row("missing key gives default", basic, "de", "c", "dflt", "dflt");
        row("missing section gives default", basic, "us", "A", "dflt", "dflt");
        row("default loses trailing blanks", basic, "us", "A", " d  ", " d");
        row("default of blanks keeps one", basic, "us", "A", "   ", " ");
        row("blank value is not the default", "[de]\nA=   \n", "de", "A", "d", "");
        row("first key wins", "[de]\nA=1\nA=2\n", "de", "A", "", "1");
        row("first section wins", "[de]\nA=1\n[us]\nA=u\n[DE]\nA=2\nB=3\n", "de", "B", "-", "-");
        row("matching double quotes removed", "[de]\nA=\" x \"\n", "de", "A", "", " x ");
        row("matching single quotes removed", "[de]\nA='x'\n", "de", "A", "", "x");
        row("unmatched quotes stay", "[de]\nA=\"x'\n", "de", "A", "", "\"x'");
        row("lone quote stays", "[de]\nA=\"\n", "de", "A", "", "\"");
        row("only one pair removed", "[de]\nA=\"\"x\"\"\n", "de", "A", "", "\"x\"");
        row("value cut at size-1", "[de]\nA=abcdef\n", "de", "A", "", "abc", 4);
        row("default cut at size-1", "[de]\n", "de", "A", "abcdef", "ab", 3);
        row("size zero", basic, "de", "A", "x", "", 0);
        // The buffer of 1200 holds 1199 characters and the terminating NUL.
        for (const int length : {1199, 1200, 1201})
            row(qPrintable(QStringLiteral("value of %1").arg(length)), "[de]\nA=" + QByteArray(length, 'v'),
                "de", "A", "", QString(qMin(length, 1199), u'v'));
        row("line without = is no value", "[de]\nA\nB=2\n", "de", "A", "d", "d");
        row("line without = does not break the next", "[de]\nA\nB=2\n", "de", "B", "d", "2");
        row("value keeps later =", "[de]\nA=x=y\n", "de", "A", "", "x=y");
        row("tab around value", "[de]\nA=\tx\t\n", "de", "A", "", "x");
        row("mixed line ends", "[de]\r\nA=1\rB=2\nC=3", "de", "C", "", "3");
        row("UTF-8 BOM before the section", "\xEF\xBB\xBF[de]\nA=\xC3\xBC\n", "de", "A", "", "ü");
        row("Windows-1252 bytes", "[de]\nA=\x80 Gr\xF6\xDF\n", "de", "A", "", "€ Größ");
        // A single invalid byte makes the whole file Windows-1252, as Pawnsketch wrote it.
        row("UTF-8 with one invalid byte", "[de]\nA=\xE2\x82\xAC \x80\n", "de", "A", "", "â‚¬ €");
        // Section headers as Windows reads them.
        row("keys above the first header", "A=0\n[de]\nA=1\n", "", "A", "d", "0");
        row("header without ] opens no section", "[de]\nA=1\n[us\nB=2\n", "de", "B", "d", "2");
        row("] inside the name", "[a]b]\nA=1\n", "a]b", "A", "d", "1");
        row("text after the ]", "[de] x\nA=1\n", "de", "A", "d", "1");
        // The nameless section above the first header comes first: "[]" repeats its name.
        row("empty header is never read", "[de]\n[]\nA=1\n", "", "A", "d", "d");
        row("garbage", QByteArray("\x00\xff[[[\n==\n]", 11), "de", "A", "d", "d");
    }

    void readsLikeWindows()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, def);
        QFETCH(int, size);
        const QString path = writeIni(QStringLiteral("t.ini"), content);
        QTEST(ReadIniString(section, key, def, path, size), "expected");
        // The second answer comes from what the first one read.
        QTEST(ReadIniString(section, key, def, path, size), "expected");
    }

    // A file is read again when its size or time changes or another language is chosen;
    // one rewritten with both kept is not, unless it was written within the last moments.
    void cacheFollowsTheFile_data()
    {
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<int>("minutesLater");
        QTest::addColumn<bool>("switchLanguage");
        QTest::addColumn<QString>("expected");
        QTest::newRow("same size, later time") << QByteArray("[us]\nA=2\n") << 1 << false << "2";
        QTest::newRow("other size, same time") << QByteArray("[us]\nA=22\n") << 0 << false << "22";
        QTest::newRow("same size and time") << QByteArray("[us]\nA=2\n") << 0 << false << "1";
        QTest::newRow("another language") << QByteArray("[us]\nA=2\n") << 0 << true << "2";
        QTest::newRow("just written") << QByteArray("[us]\nA=2\n") << -1 << false << "2";
    }
    void cacheFollowsTheFile()
    {
        QFETCH(QByteArray, second);
        QFETCH(int, minutesLater);
        QFETCH(bool, switchLanguage);
        write("language.us", "[us]\nA=1\n");
        const QString path = m_dir.filePath("language/language.us");
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const auto stamp = [&](int minutes) {
            QFile f(path);
            const QDateTime t = minutes < 0 ? now : QDateTime(QDate(2026, 1, 1), QTime(12, minutes), Qt::UTC);
            QVERIFY(f.open(QIODevice::ReadWrite) && f.setFileTime(t, QFileDevice::FileModificationTime));
        };
        stamp(qMin(minutesLater, 0));
        RefreshLngFiles("us");
        QCOMPARE(lngMainText("A", "d"), QString("1"));
        write("language.us", second);
        stamp(minutesLater);
        if (switchLanguage) {
            // A German file of its own, so that no fallback to German steps in.
            write("language.de", "[de]\n");
            RefreshLngFiles("de");
            RefreshLngFiles("us");
        }
        QTEST(lngMainText("A", "d"), "expected");
    }

    // What stands at the ini's path: only a file up to the size limit that can be read is read.
    void fileAtThePath_data()
    {
        QTest::addColumn<QString>("make"); // missing, folder, file, FILE (the name in capitals), unreadable
        QTest::addColumn<qint64>("size");  // 0: as written
        QTest::addColumn<QString>("expected");
        QTest::newRow("missing") << "missing" << 0ll << "d";
        QTest::newRow("a folder") << "folder" << 0ll << "d";
        QTest::newRow("name in other case") << "FILE" << 0ll << "1";
        QTest::newRow("exactly the limit") << "file" << kSettingsFileLimit << "1";
        QTest::newRow("one byte over the limit") << "file" << kSettingsFileLimit + 1 << "d";
        QTest::newRow("unreadable") << "unreadable" << 0ll << "d";
    }
    void fileAtThePath()
    {
        QFETCH(QString, make);
        QFETCH(qint64, size);
        QFETCH(QString, expected);
        const QString path = m_dir.filePath(QStringLiteral("u.ini"));
        if (make == u"folder")
            QVERIFY(QDir().mkpath(path));
        else if (make != u"missing")
            QVERIFY(
                !writeIni(make == u"FILE" ? QStringLiteral("U.INI") : QStringLiteral("u.ini"), "[de]\nA=1\n")
                     .isEmpty());
        QVERIFY(!size || QFile::resize(path, size));
        // Root reads every file, and Windows takes read permission away only through access
        // lists: where the file still opens, its value.
        if (make == u"unreadable") {
            QFile::setPermissions(path, {});
            if (QFile(path).open(QIODevice::ReadOnly))
                expected = QStringLiteral("1");
        }
        const QString got = ReadIniString("de", "A", "d ", path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        QDir(path).removeRecursively();
        QFile::remove(path);
        QFile::remove(m_dir.filePath(QStringLiteral("U.INI")));
        QCOMPARE(got, expected);
    }

    void fields_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("n");
        QTest::addColumn<QString>("sep");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *text, int n, const char *sep,
                            const char *expected) { QTest::newRow(name) << text << n << sep << expected; };
        row("middle", "a#b#c", 2, "#", "b");
        row("beyond", "a#b#c", 4, "#", "");
        row("no separator", "abc", 1, "#", "abc");
        row("empty fields", "a##c", 2, "#", "");
        row("trailing separator", "a|", 2, "|", "");
        row("leading separator", "|tip", 1, "|", "");
        row("tool-tip", "|tip", 2, "|", "tip");
        row("zero", "a#b", 0, "#", "");
        row("empty text", "", 1, "#", "");
        row("long separator", "a--b--c", 3, "--", "c");
    }
    void fields()
    {
        QFETCH(QString, text);
        QFETCH(int, n);
        QFETCH(QString, sep);
        QTEST(GetField(text, n, sep), "expected");
    }

    void suffixPicksFile_data()
    {
        QTest::addColumn<bool>("withTwo");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("bareKey");
        const auto row = [](const char *name, bool withTwo, const char *key, const char *file,
                            const char *bare) { QTest::newRow(name) << withTwo << key << file << bare; };
        row("@2 present", true, "19032@2", "lng_2.de", "19032");
        row("@2 absent", false, "19032@2", "language.de", "19032");
        row("unknown suffix", true, "19032@5", "language.de", "19032");
        row("word key", true, "lbl_size", "language.de", "lbl_size");
        row("word key @3", true, "lbl_MsgWindow@3", "lng_3.de", "lbl_MsgWindow");
        row("empty", true, "", "language.de", "");
    }
    void suffixPicksFile()
    {
        QFETCH(bool, withTwo);
        QFETCH(QString, key);
        QFETCH(QString, file);
        write("language.de", "[de]\n19032=Haupt\n");
        write("lng_3.de", "[de]\n19049=Drei\n");
        if (withTwo)
            write("lng_2.de", "[de]\n19032=Zwei\n");
        RefreshLngFiles("de");
        QCOMPARE(GetLngFile(key), file);
        QTEST(key, "bareKey");
        QCOMPARE(languageState().lastFile, file);
    }

    void initBuildsFourNamesAndRetestsThree()
    {
        write("language.us", "[us]\n");
        write("lng_txt.us", "[us]\n");
        InitLngFiles("us");
        const LanguageState &s = languageState();
        QCOMPARE(s.fileNames[int(LngFile::Main)], QString("language.us"));
        QVERIFY(s.exists[int(LngFile::Main)]);
        QVERIFY(s.exists[int(LngFile::Txt)]);
        QVERIFY(!s.exists[int(LngFile::Msg)]);
        QVERIFY(s.fileNames[int(LngFile::Three)].isEmpty());
        // Only a full refresh names lng_3; a later init only re-tests that name.
        RefreshLngFiles("us");
        write("lng_3.us", "[us]\n");
        InitLngFiles("us");
        QVERIFY(s.exists[int(LngFile::Three)]);
        // Codes are found without case.
        write("language.us", "[us]\nA=1\n");
        QCOMPARE(RefreshLngFiles("US"), QString("US"));
        QCOMPARE(lngMainText("A", "d"), QString("1"));
        QVERIFY(!pendingMessage().isSet());
    }

    void missingMainFile_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("start");
        for (const char *code : {"se", "xx", "de"})
            QTest::newRow(code) << code
                                << (code[0] == 'd' ? "Die notwendige Sprachdatei:"
                                                   : "The neccesary language file:");
    }
    void missingMainFile()
    {
        QFETCH(QString, code);
        QFETCH(QString, start);
        if (code != "de")
            write("language.de", "[de]\n");
        QCOMPARE(RefreshLngFiles(code), QString("de"));
        QCOMPARE(languageState().code, QString("de"));
        QCOMPARE(pendingMessage().style, 48);
        const MessageText shown = ComposeMessage(pendingMessage().text, {});
        QVERIFY2(shown.message.startsWith(start + "\r"), qPrintable(shown.message));
        QVERIFY(shown.message.contains("language." + code));
        QVERIFY(shown.title == "Missing Language File" || shown.title == "Fehlende Sprachdatei");
    }

    // Code texts keep an empty value; messages and main-file texts fall back to German.
    void textsFromFileOrDefault_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *file, const char *content, const char *key,
                            const char *expected) {
            QTest::newRow(name) << file << QByteArray(content) << key << expected;
        };
        row("code text", "lng_txt.us", "[us]\nT31=Copy <var1>\n", "T31", "Copy <var1>");
        row("code text missing", "lng_txt.us", "[us]\nT31=Copy\n", "T30", "deutsch");
        row("code text empty", "lng_txt.us", "[us]\nT62=\n", "T62", "");
        row("message", "lng_msg.us", "[us]\nM188=Connected to@<var1>#Test\n", "M188",
            "Connected to@<var1>#Test");
        row("message file missing", "none.us", "", "M188", "deutsch");
        row("message empty", "lng_msg.us", "[us]\nM189=\n", "M189", "deutsch");
        row("main text", "language.us", "[us]\nT136=Update check\n", "T136", "Update check");
    }
    void textsFromFileOrDefault()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(QString, key);
        write(file, content);
        if (file != "language.us")
            write("language.us", "[us]\n");
        RefreshLngFiles("us");
        const QString text = file.startsWith("lng_txt") ? lngText(key, "deutsch")
                             : key.startsWith(u'M')     ? messageText(key, "deutsch")
                                                        : lngMainText(key, "deutsch");
        QTEST(text, "expected");
    }

    void compose_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("vars");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("title");
        const auto row = [](const char *name, const char *text, const QStringList &vars, const char *message,
                            const char *title) { QTest::newRow(name) << text << vars << message << title; };
        row("markers", "A@@B<<at>>C<<numbersign>>D#T", {}, "A\r\rB@C#D", "T");
        row("every occurrence", "<var1>-<var1>", {"7"}, "7-7", "");
        row("missing var removed", "<var1>-<var1>", {}, "-", "");
        row("title placeholders only", "m#Test <var2> a@b", {"1", "OK"}, "m", "Test OK a@b");
        row("third field ignored", "a#b#c", {}, "a", "b");
        row("five vars", "<var5><var4><var3><var2><var1>", {"1", "2", "3", "4", "5"}, "54321", "");
        row("empty", "", {}, "", "");
    }
    void compose()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, vars);
        const MessageText m = ComposeMessage(text, vars);
        QTEST(m.message, "message");
        QTEST(m.title, "title");
    }
};

QTEST_GUILESS_MAIN(TestLanguageFiles)
#include "tst_languagefiles.moc"
