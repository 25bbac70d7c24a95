#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"
#include "gui/GuiFixture.h"
#include "help/HelpWindow.h"
#include "help/ShowHelp.h"
#include "testsupport/FakePlatform.h"

#include <QtTest>
#include <QtWidgets>

// The help buttons: which file and topic they ask the platform for; and the help window that
// Linux gets instead of a system viewer, on the demo's compiled help files.
class TestContextHelp : public QObject
{
    Q_OBJECT

    QList<ShownMessage> m_messages;
    FakePlatform m_platform;

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        m_platform = FakePlatform();
    }

    void helpButton_data()
    {
        QTest::addColumn<QByteArray>("language");
        QTest::addColumn<bool>("withEnglishHelp");
        QTest::addColumn<QByteArray>("index"); // hlpidx.ini; empty: the demo's
        QTest::addColumn<int>("tab");
        QTest::addColumn<QString>("file");
        QTest::addColumn<quint32>("id");
        QTest::addColumn<int>("damage"); // of the language's file: 1 garbage, 2 cut off
        const auto row = [](const char *name, const char *language, bool english, const char *index, int tab,
                            const char *file, quint32 id, int damage = 0) {
            QTest::newRow(name) << QByteArray(language) << english << QByteArray(index) << tab << file << id
                                << damage;
        };
        row("German, third tab", "de", true, "", 2, "pawnsketch_de.chm", 1030);
        row("English", "us", true, "", 5, "pawnsketch_us.chm", 1060);
        row("English without its file", "us", false, "", 5, "pawnsketch_de.chm", 1060);
        row("index names the topic", "de", true, "[ContentID]\r\nS19T2=1040\r\n", 2, "pawnsketch_de.chm",
            1040);
        row("not a number", "de", true, "[ContentID]\r\nS19T2=abc\r\n", 2, "pawnsketch_de.chm", 0);
        row("no key", "de", true, "[ContentID]\r\nS19T1=1020\r\n", 2, "pawnsketch_de.chm", 0);
        row("English garbage", "us", true, "", 5, "pawnsketch_de.chm", 1060, 1);
        row("English cut off", "us", true, "", 5, "pawnsketch_de.chm", 1060, 2);
        row("German cut off", "de", true, "", 5, "", 1060, 2);
    }
    void helpButton()
    {
        QFETCH(QByteArray, language);
        QFETCH(bool, withEnglishHelp);
        QFETCH(QByteArray, index);
        QFETCH(int, tab);
        QFETCH(QString, file);
        QTemporaryDir install;
        QVERIFY(GuiFixture::makeInstallation(install.path()));
        QVERIFY(GuiFixture::writeFile(install.filePath("ini/pawnsketch.ini"),
                                      "[Sprache]\r\nSprache=" + language + "\r\n"));
        if (!withEnglishHelp)
            QVERIFY(QFile::remove(install.filePath("help/pawnsketch_us.chm")));
        if (!index.isEmpty())
            QVERIFY(GuiFixture::writeFile(install.filePath("ini/hlpidx.ini"), index));
        QFETCH(int, damage);
        const QString damaged = install.filePath("help/pawnsketch_" + language + ".chm");
        if (damage)
            QVERIFY(GuiFixture::writeFile(
                damaged, damage == 1 ? QByteArray(40000, 'x') : GuiFixture::readFile(damaged).chopped(4000)));
        PlatformOverride use(m_platform);
        frmSupportKit w;
        QVERIFY(w.Form_Load("/e"));
        m_messages.clear();
        w.showPage(tab);
        w.findChild<QPushButton *>("cmdHelp")->click();
        // An unreadable file is named; the German help opens instead when it can.
        QCOMPARE(m_messages.size(), int(damage > 0));
        QVERIFY(!damage || m_messages[0].message.contains(QDir::toNativeSeparators(damaged)));
        QCOMPARE(m_platform.helpRequests.size(), int(!file.isEmpty()));
        if (file.isEmpty())
            return;
        const Platform::HelpRequest &request = m_platform.helpRequests[0];
        QCOMPARE(request.file, QDir(install.path()).filePath("help/" + file));
        QCOMPARE(request.command, Platform::HelpCommand::Topic);
        QTEST(request.contextId, "id");
    }

    void actionDialogHelp()
    {
        QTemporaryDir install;
        QVERIFY(GuiFixture::makeInstallation(install.path()));
        PlatformOverride use(m_platform);
        frmSelectAction dialog;
        dialog.Form_Load();
        auto *help = GuiFixture::control<QPushButton>(dialog, "Command2");
        help->click();
        GuiFixture::control<QRadioButton>(dialog, "optSelAction_1")->setChecked(true);
        help->click();
        QCOMPARE(m_platform.helpRequests.size(), 2);
        QCOMPARE(m_platform.helpRequests[0].contextId, 1000u);
        QCOMPARE(m_platform.helpRequests[1].contextId, 1010u);
    }

    void helpWindow()
    {
#ifdef Q_OS_WIN
        QSKIP("Windows shows compiled help with its own viewer");
#else
        const QString file =
            TestSupport::sourceDir() + QStringLiteral("/demo/install/help/pawnsketch_de.chm");
        Platform::HelpRequest request{file, Platform::HelpCommand::Topic, 1060, {}, 0};
        QVERIFY(HelpWindow::showRequest(request));
        HelpWindow *window = HelpWindow::current();
        QVERIFY(window && window->isVisible());
        auto *browser = window->findChild<QTextBrowser *>("browser");
        auto *note = window->findChild<QLabel *>("lblNote");
        auto *tabs = window->findChild<QTabWidget *>("tabNavigation");
        QCOMPARE(window->currentTopic(), "/fonts.html");
        QVERIFY(browser->toPlainText().contains("Installieren macht die mitgelieferten Fonts"));
        QVERIFY(note->isHidden());
        QCOMPARE(window->findChild<QTreeWidget *>("treeContents")->topLevelItemCount(), 12);

        // A link inside the file leads to its page.
        browser->anchorClicked(QUrl("chm:///willkommen.html"));
        QCOMPARE(window->currentTopic(), "/willkommen.html");

        request.contextId = 4711;
        QVERIFY(HelpWindow::showRequest(request));
        QCOMPARE(HelpWindow::current(), window);
        QCOMPARE(tabs->currentIndex(), 0);
        QVERIFY(!note->isHidden());

        request.command = Platform::HelpCommand::Search;
        request.query = "composer";
        QVERIFY(HelpWindow::showRequest(request));
        QCOMPARE(tabs->currentIndex(), 2);
        QCOMPARE(window->findChild<QListWidget *>("lstSearch")->count(), 2);

        request.file = TestSupport::sourceDir() + QStringLiteral("/demo/install/ini/hlpidx.ini");
        QVERIFY(!HelpWindow::showRequest(request));
        window->close();
#endif
    }
};

QTEST_MAIN(TestContextHelp)
#include "tst_contexthelp.moc"
