#include "GuiFixture.h"
#include "app/frmSupportKit.h"
#include "testsupport/FakePlatform.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

// The start page as a user works it: the boxes that count in each mode, the start itself
// with and without the program file, and a system that cannot start it at all.
class TestStartOptions : public QObject
{
    Q_OBJECT

    QList<ShownMessage> m_messages;
    FakePlatform m_platform;

    template <typename T> static T *control(QWidget &w, const char *name)
    {
        T *c = w.findChild<T *>(QLatin1String(name));
        if (!c)
            qFatal("no control %s", name);
        return c;
    }

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        m_platform = FakePlatform();
    }

    // Switching back to standard mode disables the safe-mode boxes but keeps their marks,
    // and marks on disabled boxes add no switch.
    void modeSwitchKeepsMarks()
    {
        QTemporaryDir install;
        QVERIFY(GuiFixture::makeInstallation(install.path()));
        PlatformOverride use(m_platform);
        frmSupportKit window;
        QVERIFY(window.Form_Load("/e"));
        QWidget *page = &window;
        auto *safeMode = control<QRadioButton>(*page, "optStartingMode_2");
        auto *check9 = control<QCheckBox>(*page, "Check9");
        QVERIFY(!check9->isEnabled());
        safeMode->click();
        QVERIFY(check9->isEnabled() && control<QCheckBox>(*page, "Check2")->isEnabled());
        check9->click();
        control<QCheckBox>(*page, "Check3")->click();
        control<QRadioButton>(*page, "optStartingMode_1")->click();
        QVERIFY(!check9->isEnabled() && check9->isChecked());
        control<QPushButton>(*page, "cmdOK")->click();
        QCOMPARE(m_platform.launches, QStringList(QDir(install.path()).filePath("pawnsketch.exe") + "  /q"));
    }

    void start_data()
    {
        QTest::addColumn<bool>("withProgram");
        QTest::addColumn<Platform::LaunchResult>("result");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("closed");
        QTest::newRow("started") << true << Platform::LaunchResult::Started << QStringList() << true;
        // The start is still tried, and the window closes, as on Windows.
        QTest::newRow("no program file")
            << false << Platform::LaunchResult::Failed << QStringList({"M19230"}) << true;
        QTest::newRow("no Wine") << true << Platform::LaunchResult::RunnerMissing << QStringList({"M19231"})
                                 << false;
    }
    void start()
    {
        QFETCH(bool, withProgram);
        QFETCH(Platform::LaunchResult, result);
        QFETCH(QStringList, messages);
        QFETCH(bool, closed);
        QTemporaryDir install;
        QVERIFY(GuiFixture::makeInstallation(install.path()));
        QFile fresh(install.filePath("res/fresh_install"));
        QVERIFY(fresh.open(QIODevice::WriteOnly));
        fresh.close();
        m_platform.launchResult = result;
        PlatformOverride use(m_platform);
        frmSupportKit window;
        QVERIFY(window.Form_Load("/e"));
        window.show();
        if (!withProgram)
            QVERIFY(QFile::remove(install.filePath("pawnsketch.exe")));
        QWidget *page = &window;
        control<QRadioButton>(*page, "optStartingMode_2")->click();
        control<QCheckBox>(*page, "Check6")->click();
        control<QCheckBox>(*page, "Check8")->click();
        control<QPushButton>(*page, "cmdOK")->click();

        QVERIFY(!fresh.exists());
        QCOMPARE(m_platform.launches.size(), 1);
        QVERIFY(m_platform.launches[0].endsWith("pawnsketch.exe  /q /l /r"));
        QStringList shown;
        for (const ShownMessage &m : std::as_const(m_messages))
            shown << m.key;
        QCOMPARE(shown, messages);
        if (!withProgram)
            QVERIFY(
                m_messages[0].message.contains(QDir::toNativeSeparators(install.filePath("pawnsketch.exe"))));
        QCOMPARE(window.isVisible(), !closed);
    }
};

QTEST_MAIN(TestStartOptions)
#include "tst_startoptions.moc"
