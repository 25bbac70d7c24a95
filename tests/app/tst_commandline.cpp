#include "app/CommandLine.h"
#include "app/StartSwitches.h"
#include "core/Locale.h"

#include <QtTest>

Q_DECLARE_METATYPE(StartOptions)

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void items_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("none");
        QTest::addColumn<QStringList>("items");
        QTest::newRow("empty") << "" << true << QStringList();
        QTest::newRow("blanks only") << "   " << true << QStringList();
        QTest::newRow("runs of blanks") << "/e     user=x@1" << false << QStringList{"/e", "user=x@1"};
        QTest::newRow("trailing blanks") << "/e user=x   " << false << QStringList{"/e", "user=x"};
        QTest::newRow("leading blank") << " 1" << false << QStringList{"1"};
    }
    void items()
    {
        QFETCH(QString, line);
        QStringList got{"stale"};
        QTEST(GetCommandItems(line, got), "none");
        QTEST(got, "items");
    }

    void errorRecord_data()
    {
        QTest::addColumn<QString>("record");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const char *record, const char *user, const char *text) {
            QTest::newRow(name) << record << user << text;
        };
        row("full", "user=Hans@nr=53@text=Datei fehlt@module=modMain@param=/x", "Hans",
            "Fehlernummer: 53\r\nFehlertext: Datei fehlt\r\nModul: modMain\r\nParameter: /x");
        row("user anywhere", "nr=7@USER=Eva", "Eva", "Fehlernummer: 7");
        row("at most four lines", "a=1@b=2@c=3@d=4@e=5", "",
            "Fehlernummer: 1\r\nFehlertext: 2\r\nModul: 3\r\nParameter: 4");
        row("field without =", "oops", "", "Fehlernummer: oops");
        row("value keeps =", "text=a=b", "", "Fehlernummer: a=b");
        row("empty", "", "", "");
    }
    void errorRecord()
    {
        QFETCH(QString, record);
        const QString list =
            "Start-Logdatei#Fehler-Logdatei#Fehlerbeschreibung#Fehlernummer:#Fehlertext:#Parameter:#"
            "Sonstiges:#Programm Fehlermeldung:#Modul:#Benutzername:";
        const ErrorRecord parsed = parseErrorRecord(record);
        QTEST(parsed.userName, "user");
        QTEST(errorRecordText(parsed, list), "text");
    }

    void defaultLanguage_data()
    {
        QTest::addColumn<QString>("country");
        QTest::addColumn<QString>("code");
        // Only a German country setting starts in German.
        for (const char *country : {"49", "1", "33", "41", "", "049"})
            QTest::newRow(*country ? country : "empty")
                << country << (QByteArray(country) == "49" ? "de" : "us");
    }
    void defaultLanguage()
    {
        QFETCH(QString, country);
        QTEST(defaultLanguageFromCountry(country), "code");
    }

    void callingCodes()
    {
        QCOMPARE(countryCallingCode(QLocale::Germany), QString("49"));
        QCOMPARE(countryCallingCode(QLocale::UnitedStates), QString("1"));
        QCOMPARE(defaultLanguageFromCountry(countryCallingCode(QLocale::Austria)), QString("us"));
    }

    // The switches Pawnsketch is started with, from the start page's options.
    void switches_data()
    {
        QTest::addColumn<StartOptions>("options");
        QTest::addColumn<QString>("expected");
        const auto safe = [](StartOptions o) {
            o.safeMode = true;
            return o;
        };
        StartOptions all;
        all.backupIni = all.noDesign = all.backupDesign = all.noComposer = all.noFile = all.repairDesigns =
            all.noMacType = true;
        QTest::newRow("nothing checked") << StartOptions{} << " /q";
        QTest::newRow("log, new log") << StartOptions{true, true} << " /p /l";
        QTest::newRow("safe boxes outside safe mode") << all << " /q";
        QTest::newRow("safe: fixed order, not the page's") << safe(all) << " /q /i /d /n /c /e /r /m";
        StartOptions some;
        some.noDesign = some.noMacType = true;
        QTest::newRow("safe: design, MacType") << safe(some) << " /q /d /m";
        StartOptions composer;
        composer.logStart = composer.newStartLog = composer.noComposer = true;
        QTest::newRow("safe: log first") << safe(composer) << " /p /l /c";
    }
    void switches()
    {
        QFETCH(StartOptions, options);
        QTEST(StartSwitches(options), "expected");
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
