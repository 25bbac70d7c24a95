#include "core/ProgramFolder.h"
#include "localisation/Fields.h"
#include "localisation/LanguageState.h"
#include "localisation/Messages.h"
#include "localisation/PendingMessage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestLanguageFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    void write(const QString &name, const QByteArray &bytes)
    {
        QDir(m_dir.path()).mkpath("language");
        QFile f(m_dir.filePath("language/" + name));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    }
    void remove(const QString &name) { QFile::remove(m_dir.filePath("language/" + name)); }

private slots:
    void initTestCase() { setProgramFolderForTesting(m_dir.path()); }

    void init()
    {
        QDir(m_dir.filePath("language")).removeRecursively();
        pendingMessage().clear();
        languageState() = LanguageState();
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
        row("last", "a#b#c", 3, "#", "c");
        row("beyond", "a#b#c", 4, "#", "");
        row("no separator", "abc", 1, "#", "abc");
        row("no separator, second", "abc", 2, "#", "");
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
        row("@3 present", true, "19049@3", "lng_3.de", "19049");
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
        QFETCH(QString, bareKey);
        write("language.de", "[de]\n19032=Haupt\n");
        write("lng_3.de", "[de]\n19049=Drei\n");
        if (withTwo)
            write("lng_2.de", "[de]\n19032=Zwei\n");
        RefreshLngFiles("de");
        QCOMPARE(GetLngFile(key), file);
        QCOMPARE(key, bareKey);
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
    }

    void codesAreFoundWithoutCase()
    {
        write("language.us", "[us]\nA=1\n");
        QCOMPARE(RefreshLngFiles("US"), QString("US"));
        QVERIFY(languageState().exists[int(LngFile::Main)]);
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
        row("markers", "A@B<<at>>C#T", {}, "A\rB@C", "T");
        row("number sign", "x<<numbersign>>y", {}, "x#y", "");
        row("every occurrence", "<var1>-<var1>", {"7"}, "7-7", "");
        row("missing var removed", "<var1>-<var1>", {}, "-", "");
        row("title placeholders only", "m#Test <var2> a@b", {"1", "OK"}, "m", "Test OK a@b");
        row("empty line", "a@@b", {}, "a\r\rb", "");
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
