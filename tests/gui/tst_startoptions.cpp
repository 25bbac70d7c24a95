#include "GuiFixture.h"
#include "app/frmSupportKit.h"
#include "testsupport/FakePlatform.h"

#include <QtTest>
#include <QtWidgets>

using GuiFixture::control;

// The start page as a user works it: the boxes that count in each mode, the start itself
// with and without the program file, and a system that cannot start it at all.
class TestStartOptions : public QObject
{
    Q_OBJECT

    QList<ShownMessage> m_messages;
    FakePlatform m_platform;
    std::unique_ptr<QTemporaryDir> m_install;

    template <typename T> void click(QWidget &w, const char *name) { control<T>(w, name)->click(); }

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        m_platform = FakePlatform();
        m_install = std::make_unique<QTemporaryDir>();
        QVERIFY(GuiFixture::makeInstallation(m_install->path()));
    }

    // Switching back to standard mode disables the safe-mode boxes but keeps their marks,
    // and marks on disabled boxes add no switch.
    void modeSwitchKeepsMarks()
    {
        PlatformOverride use(m_platform);
        frmSupportKit w;
        QVERIFY(w.Form_Load("/e"));
        auto *check9 = control<QCheckBox>(w, "Check9");
        QVERIFY(!check9->isEnabled());
        click<QRadioButton>(w, "optStartingMode_2");
        QVERIFY(check9->isEnabled() && control<QCheckBox>(w, "Check2")->isEnabled());
        check9->click();
        click<QCheckBox>(w, "Check3");
        click<QRadioButton>(w, "optStartingMode_1");
        QVERIFY(!check9->isEnabled() && check9->isChecked());
        click<QPushButton>(w, "cmdOK");
        QCOMPARE(m_platform.launches,
                 QStringList(QDir(m_install->path()).filePath("pawnsketch.exe") + "  /q"));
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
        QFETCH(bool, closed);
        const QString program = m_install->filePath("pawnsketch.exe");
        QVERIFY(GuiFixture::writeFile(m_install->filePath("res/fresh_install"), {}));
        m_platform.launchResult = result;
        PlatformOverride use(m_platform);
        frmSupportKit w;
        QVERIFY(w.Form_Load("/e"));
        w.show();
        if (!withProgram)
            QVERIFY(QFile::remove(program));
        click<QRadioButton>(w, "optStartingMode_2");
        click<QCheckBox>(w, "Check6");
        click<QCheckBox>(w, "Check8");
        click<QPushButton>(w, "cmdOK");

        QVERIFY(!QFile::exists(m_install->filePath("res/fresh_install")));
        QCOMPARE(m_platform.launches, QStringList(program + "  /q /l /r"));
        QStringList shown;
        for (const ShownMessage &m : std::as_const(m_messages))
            shown << m.key;
        QTEST(shown, "messages");
        QVERIFY(withProgram || m_messages[0].message.contains(QDir::toNativeSeparators(program)));
        QCOMPARE(w.isVisible(), !closed);
    }
};

QTEST_MAIN(TestStartOptions)
#include "tst_startoptions.moc"
