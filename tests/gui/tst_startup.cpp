#include "GuiFixture.h"
#include "app/SupportKitMain.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"

#include "ui_frmSelectAction.h"
#include "ui_frmSupportKit.h"

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

namespace {
QTreeWidgetItem *listItemForPage(frmSupportKit &w, int page)
{
    QTreeWidget *list = w.form()->ListView1;
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        if (list->topLevelItem(row)->text(1).toInt() == page)
            return list->topLevelItem(row);
    }
    return nullptr;
}
} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_install;
    QList<ShownMessage> m_messages;

    QString installed(const char *name) const { return m_install->filePath(QLatin1String(name)); }
    void setIniLanguage(const QByteArray &code)
    {
        QVERIFY(
            GuiFixture::writeFile(installed("ini/pawnsketch.ini"), "[Sprache]\r\nSprache=" + code + "\r\n"));
    }
    // The window as started with arguments; null when the start ended the program.
    static std::unique_ptr<frmSupportKit> load(const QString &arguments = QStringLiteral("1"))
    {
        auto w = std::make_unique<frmSupportKit>();
        if (!w->Form_Load(arguments))
            return nullptr;
        w->show();
        return w;
    }

private slots:
    // A fresh installation from the demo files, with a program file beside SupportKit.
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        frmSupportKit::setActionDialogAnswererForTesting({});
        m_install = std::make_unique<QTemporaryDir>();
        QVERIFY(GuiFixture::makeInstallation(m_install->path()));
    }

    void installationCheckEndsTheProgram_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<bool>("folderNamedLikeProgram");
        QTest::newRow("with /e") << "/e user=x@1" << false;
        QTest::newRow("with 1") << "1" << false;
        QTest::newRow("no arguments, a folder is no program file") << "" << true;
    }
    void installationCheckEndsTheProgram()
    {
        QFETCH(QString, arguments);
        QFETCH(bool, folderNamedLikeProgram);
        QVERIFY(QFile::remove(installed("pawnsketch.exe")));
        if (folderNamedLikeProgram)
            QDir(m_install->path()).mkdir("pawnsketch.exe");
        // The real box, closed by the test as a user would.
        setMessageAnswererForTesting({});
        QString shownText;
        QMessageBox::StandardButtons buttons;
        bool actionDialogShown = false;
        frmSupportKit::setActionDialogAnswererForTesting(
            [&](frmSelectAction &) { actionDialogShown = true; });
        QTimer::singleShot(0, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            shownText = box->text();
            buttons = box->standardButtons();
            box->button(QMessageBox::Ok)->click();
        });
        QCOMPARE(supportKitMain(arguments.split(' ', Qt::SkipEmptyParts)), 1);
        QCOMPARE(shownText, QString::fromUtf8("Support-Kit muß sich im Installationsordner von Pawnsketch "
                                              "befinden!\nDas programm wird beendet..."));
        QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QVERIFY(!actionDialogShown);
    }

    void errorRecordFillsTheReportPage()
    {
        // The program file is found whatever the case of its name.
        QVERIFY(QFile::rename(installed("pawnsketch.exe"), installed("PawnSketch.EXE")));
        const auto w = load("/e   user=Hans@nr=53@text=Datei_fehlt@module=modMain ");
        QVERIFY(w);
        QCOMPARE(w->currentPage(), 6);
        QCOMPARE(w->findChild<QLabel *>("lblUserName")->text(), QString("Hans"));
        QCOMPARE(w->findChild<QPlainTextEdit *>("tbErrorMessage")->toPlainText(),
                 QString("Fehlernummer: 53\nFehlertext: Datei_fehlt\nModul: modMain"));
        QCOMPARE(w->form()->txtlabel->text(), w->form()->SSTab19->tabText(6));
        QCOMPARE(w->windowTitle(), QString::fromUtf8("Pawnsketch · Support Kit 1.0 Build ") +
                                       w->windowTitle().section(' ', -1));
    }

    void actionDialogOutcomes_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<bool>("goesOn");
        QTest::addColumn<int>("page");
        QTest::newRow("report error") << "0" << true << 6;
        QTest::newRow("start problems") << "1" << true << 0;
        QTest::newRow("feedback") << "3" << true << 10;
        QTest::newRow("other") << "4" << true << 10;
        QTest::newRow("nothing chosen") << "none" << true << 10;
        QTest::newRow("double-click") << "dblclick1" << true << 0;
        QTest::newRow("cancel") << "cancel" << false << -1;
        QTest::newRow("escape") << "escape" << false << -1;
        QTest::newRow("close box") << "close" << false << -1;
    }
    void actionDialogOutcomes()
    {
        QFETCH(QString, how);
        QFETCH(bool, goesOn);
        frmSupportKit::setActionDialogAnswererForTesting([&](frmSelectAction &d) {
            d.show();
            auto *f = d.form();
            f->cbAppendLogfile_1->setChecked(true);
            if (how == "cancel")
                f->Command1->click();
            else if (how == "escape")
                QTest::keyClick(&d, Qt::Key_Escape);
            else if (how == "close")
                d.close();
            else if (how == "dblclick1")
                QTest::mouseDClick(f->optSelAction_1, Qt::LeftButton);
            else if (how != "none")
                d.findChild<QRadioButton *>("optSelAction_" + how)->setChecked(true);
            if (how.size() <= 4)
                f->Command->click(); // a choice, or none
        });
        frmSupportKit w;
        QCOMPARE(w.Form_Load(QString()), goesOn);
        QCOMPARE(w.exitCode(), 0);
        if (!goesOn)
            return;
        w.show();
        QTEST(w.currentPage(), "page");
        QVERIFY(w.findChild<QCheckBox *>("cbAppendLogfile_1")->isChecked());
        QVERIFY(!w.findChild<QCheckBox *>("cbAppendLogfile_0")->isChecked());
    }

    void englishChosenInTheDialogSwitchesTheWindow()
    {
        frmSupportKit::setActionDialogAnswererForTesting([](frmSelectAction &d) {
            d.form()->optLng_1->click();
            QCOMPARE(d.form()->Command1->text(), QString("&Cancel"));
            d.form()->Command->click();
        });
        const auto w = load(QString());
        QVERIFY(w);
        QVERIFY(w->form()->optLng_1->isChecked());
        QCOMPARE(w->form()->cmdCancel->text().remove(u'&'), QString("Quit"));
    }

    void languageFromSettingsAndSwitch()
    {
        setIniLanguage("us");
        const QByteArray iniBefore = GuiFixture::readFile(installed("ini/pawnsketch.ini"));
        const auto w = load();
        QVERIFY(w);
        QVERIFY(w->form()->optLng_1->isChecked());
        QCOMPARE(w->form()->cmdCancel->text().remove(u'&'), QString("Quit"));
        QCOMPARE(w->form()->SSTab19->tabText(5), QString("Fonts"));
        QCOMPARE(listItemForPage(*w, 9)->text(0), QString("Version information"));
        // Pages built when first opened come up in the language shown, with the texts the
        // window fills in (the log page's frames) as well as their own.
        QCOMPARE(GuiFixture::control<QGroupBox>(*w, "Frame2")->title(), QString("Start log file"));
        w->showPage(5);
        QCOMPARE(GuiFixture::control<QPushButton>(*w, "Command5")->text().remove(u'&'), QString("Check"));
        w->form()->optLng_0->click();
        QCOMPARE(w->form()->cmdCancel->text().remove(u'&'), QString("Beenden"));
        QCOMPARE(listItemForPage(*w, 9)->text(0), QString("Versionsinformationen"));
        QCOMPARE(w->currentPage(), 5);
        QCOMPARE(w->form()->txtlabel->text(), QString("Fonts"));
        QCOMPARE(GuiFixture::readFile(installed("ini/pawnsketch.ini")), iniBefore);
    }

    void missingLanguageFileIsReported()
    {
        setIniLanguage("se");
        const auto w = load();
        QVERIFY(w);
        QCOMPARE(m_messages.size(), 1);
        QVERIFY(m_messages[0].title == "Missing Language File" && m_messages[0].style == 48);
        QCOMPARE(w->languageCode(), QString("de"));
        QCOMPARE(w->form()->cmdCancel->text().remove(u'&'), QString("Beenden"));
    }

    void pageListKeepsTheBarAsymmetry()
    {
        QVERIFY(GuiFixture::writeFile(installed("language/language.de"),
                                      "[de]\nS19T0=Start\n" // no "|": a blank line
                                      "S19T1=Logs|\n"       // ends in "|": no line
                                      "S19T2=Update|zwei\nS19T3=Beta|drei\nS19T4=Fonts & Schriften|vier\n"));
        const auto w = load();
        QVERIFY(w);
        QCOMPARE(listItemForPage(*w, 0)->text(2), QString(" "));
        QCOMPARE(listItemForPage(*w, 1)->text(2), QString("zwei"));
        QCOMPARE(listItemForPage(*w, 2)->text(2), QString("drei"));
        QCOMPARE(listItemForPage(*w, 3)->text(2), QString("vier"));
        QVERIFY(!listItemForPage(*w, 7));
        QCOMPARE(w->form()->ListView1->topLevelItemCount(), 11);
        w->showPage(4);
        QCOMPARE(w->form()->txtlabel->text(), QString("Fonts & Schriften"));
    }

    void navigation()
    {
        const auto w = load();
        QVERIFY(w);
        // A running Pawnsketch opens the log page, and nothing may start another one.
        QCOMPARE(w->currentPage(), 1);
        QVERIFY(!GuiFixture::control<QPushButton>(*w, "cmdOK")->isEnabled());
        // The scroll bar walks the list, which skips the hidden tab 7.
        QTreeWidget *list = w->form()->ListView1;
        w->form()->scrollbar->setValue(list->indexOfTopLevelItem(listItemForPage(*w, 6)) + 1);
        QCOMPARE(w->currentPage(), 8);
        // The overview's task choice.
        for (const auto &[option, page] : {std::pair{3, 5}, {2, 4}}) {
            GuiFixture::control<QRadioButton>(*w, qPrintable(QStringLiteral("optShowPage_%1").arg(option)))
                ->setChecked(true);
            GuiFixture::control<QPushButton>(*w, "cmdShowPage")->click();
            QCOMPARE(w->currentPage(), page);
        }
    }

    void pictureTogglesTheReportBoxSize()
    {
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.resize(1024, 600);
        w.show();
        w.showPage(6);
        auto *report = w.findChild<QWidget *>("tbErrStartlogTxt");
        auto *message = w.findChild<QPlainTextEdit *>("tbErrorMessage");
        auto *picture = w.findChild<QLabel *>("Picture1");
        QTest::qWait(50);
        const int small = report->height();
        QTest::mouseClick(picture, Qt::LeftButton);
        QTest::qWait(50);
        QVERIFY(report->isVisible());
        QVERIFY2(report->height() > small, qPrintable(QString("%1 -> %2").arg(small).arg(report->height())));
        QVERIFY(!message->isVisible());
        QTest::mouseClick(picture, Qt::LeftButton);
        QTest::qWait(50);
        QCOMPARE(report->height(), small);
        QVERIFY(message->isVisible());
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
