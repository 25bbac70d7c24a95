#include "app/StartSwitches.h"

#include <QTest>

Q_DECLARE_METATYPE(StartOptions)

class TestStartSwitches : public QObject
{
    Q_OBJECT

private slots:
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
        QFETCH(QString, expected);
        QCOMPARE(StartSwitches(options), expected);
    }
};

QTEST_GUILESS_MAIN(TestStartSwitches)
#include "tst_startswitches.moc"
