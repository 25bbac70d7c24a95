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
        QTest::newRow("middle") << "a#b#c" << 2 << "#"
                                << "b";
        QTest::newRow("last") << "a#b#c" << 3 << "#"
                              << "c";
        QTest::newRow("beyond") << "a#b#c" << 4 << "#"
                                << "";
        QTest::newRow("far beyond") << "a#b#c" << 40 << "#"
                                    << "";
        QTest::newRow("no separator") << "abc" << 1 << "#"
                                      << "abc";
        QTest::newRow("no separator, second") << "abc" << 2 << "#"
                                              << "";
        QTest::newRow("empty fields") << "a##c" << 2 << "#"
                                      << "";
        QTest::newRow("trailing separator") << "a|" << 2 << "|"
                                            << "";
        QTest::newRow("leading separator") << "|tip" << 1 << "|"
                                           << "";
        QTest::newRow("tool-tip") << "|tip" << 2 << "|"
                                  << "tip";
        QTest::newRow("zero") << "a#b" << 0 << "#"
                              << "";
        QTest::newRow("empty text") << "" << 1 << "#"
                                    << "";
        QTest::newRow("long separator") << "a--b--c" << 3 << "--"
                                        << "c";
        QTest::newRow("label list")
            << "Start-Logdatei#Fehler-Logdatei#Fehlerbeschreibung#Fehlernummer:#Fehlertext:#"
               "Parameter:#Sonstige Fehlermeldung / erg\u00e4nzender Text:#Programm "
               "Fehlermeldung:#Modul:#Benutzername:"
            << 10 << "#"
            << "Benutzername:";
    }
    void fields()
    {
        QFETCH(QString, text);
        QFETCH(int, n);
        QFETCH(QString, sep);
        QFETCH(QString, expected);
        QCOMPARE(GetField(text, n, sep), expected);
    }

    void suffixPicksFile_data()
    {
        QTest::addColumn<bool>("withTwo");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("bareKey");
        QTest::newRow("@2 present") << true << "19032@2"
                                    << "lng_2.de"
                                    << "19032";
        QTest::newRow("@2 absent") << false << "19032@2"
                                   << "language.de"
                                   << "19032";
        QTest::newRow("@3 present") << true << "19049@3"
                                    << "lng_3.de"
                                    << "19049";
        QTest::newRow("unknown suffix") << true << "19032@5"
                                        << "language.de"
                                        << "19032";
        QTest::newRow("word key") << true << "lbl_size"
                                  << "language.de"
                                  << "lbl_size";
        QTest::newRow("word key @3") << true << "lbl_MsgWindow@3"
                                     << "lng_3.de"
                                     << "lbl_MsgWindow";
        QTest::newRow("empty") << true << ""
                               << "language.de"
                               << "";
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
        QTest::newRow("se") << "se"
                            << "The neccesary language file:";
        QTest::newRow("xx") << "xx"
                            << "The neccesary language file:";
        QTest::newRow("de") << "de"
                            << "Die notwendige Sprachdatei:";
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

    void codeTextsFallBackToGerman()
    {
        write("language.us", "[us]\n");
        write("lng_txt.us", "[us]\nT31=Copy <var1>\nT62=\n");
        RefreshLngFiles("us");
        QCOMPARE(lngText("T31", "deutsch"), QString("Copy <var1>"));
        QCOMPARE(lngText("T30", "deutsch"), QString("deutsch"));
        QCOMPARE(lngText("T62", "deutsch"), QString(""));
    }

    void compose_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("vars");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("title");
        QTest::newRow("markers") << "A@B<<at>>C#T" << QStringList() << "A\rB@C"
                                 << "T";
        QTest::newRow("number sign") << "x<<numbersign>>y" << QStringList() << "x#y"
                                     << "";
        QTest::newRow("every occurrence") << "<var1>-<var1>" << QStringList{"7"} << "7-7"
                                          << "";
        QTest::newRow("missing var removed") << "<var1>-<var1>" << QStringList() << "-"
                                             << "";
        QTest::newRow("title placeholders only") << "m#Test <var2> a@b" << QStringList{"1", "OK"} << "m"
                                                 << "Test OK a@b";
        QTest::newRow("empty line") << "a@@b" << QStringList() << "a\r\rb"
                                    << "";
        QTest::newRow("third field ignored") << "a#b#c" << QStringList() << "a"
                                             << "b";
        QTest::newRow("five vars") << "<var5><var4><var3><var2><var1>" << QStringList{"1", "2", "3", "4", "5"}
                                   << "54321"
                                   << "";
        QTest::newRow("empty") << "" << QStringList() << ""
                               << "";
    }
    void compose()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, vars);
        QFETCH(QString, message);
        QFETCH(QString, title);
        const MessageText m = ComposeMessage(text, vars);
        QCOMPARE(m.message, message);
        QCOMPARE(m.title, title);
    }

    void messageTextFromFileOrDefault()
    {
        write("language.us", "[us]\n");
        RefreshLngFiles("us");
        QCOMPARE(messageText("M188", "Deutsch"), QString("Deutsch")); // no lng_msg file
        write("lng_msg.us", "[us]\nM188=Connected to@<var1>#Test\nM189=\n");
        RefreshLngFiles("us");
        QCOMPARE(messageText("M188", "Deutsch"), QString("Connected to@<var1>#Test"));
        QCOMPARE(messageText("M189", "Deutsch"), QString("Deutsch"));
        QCOMPARE(ComposeMessage(messageText("M188", ""), {"http://x"}).message,
                 QString("Connected to\rhttp://x"));
    }
};

QTEST_GUILESS_MAIN(TestLanguageFiles)
#include "tst_languagefiles.moc"
