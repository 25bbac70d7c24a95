#include "GuiFixture.h"
#include "app/SupportKitMain.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"
#include "testsupport/TestSupport.h"

#include "pewriter/PeWriter.h"

#include "ui_PageContactSupport.h"
#include "ui_PageOverview.h"
#include "ui_frmSelectAction.h"
#include "ui_frmSupportKit.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

namespace {
void writeText(const QString &path, const QByteArray &text)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(text);
}

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

    // A fresh installation from the demo files, with a program file beside SupportKit.
    void makeInstallation(bool withProgram = true)
    {
        m_install = std::make_unique<QTemporaryDir>();
        QVERIFY(GuiFixture::makeInstallation(m_install->path(), withProgram));
    }

    void setIniLanguage(const QByteArray &code)
    {
        writeText(m_install->filePath("ini/pawnsketch.ini"), "[Sprache]\r\nSprache=" + code + "\r\n");
    }

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        frmSupportKit::setActionDialogAnswererForTesting({});
    }

    void installationCheckEndsTheProgram_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<bool>("folderNamedLikeProgram");
        QTest::newRow("no arguments") << "" << false;
        QTest::newRow("with /e") << "/e user=x@1" << false;
        QTest::newRow("with 1") << "1" << false;
        QTest::newRow("a folder is no program file") << "" << true;
    }
    void installationCheckEndsTheProgram()
    {
        QFETCH(QString, arguments);
        QFETCH(bool, folderNamedLikeProgram);
        makeInstallation(false);
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
        QCOMPARE(shownText,
                 QString::fromUtf8("Support-Kit muß sich im Installationsordner von Pawnsketch befinden!\n"
                                   "Das programm wird beendet..."));
        QCOMPARE(buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QVERIFY(!actionDialogShown);
    }

    void programFileFoundWithoutCase()
    {
        makeInstallation(false);
        PeWriter::Options options;
        QVERIFY(PeWriter::writeFile(m_install->filePath("PawnSketch.EXE"), options));
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QVERIFY(m_messages.isEmpty());
    }

    void errorRecordFillsTheReportPage()
    {
        makeInstallation();
        frmSupportKit w;
        QVERIFY(w.Form_Load("/e   user=Hans@nr=53@text=Datei_fehlt@module=modMain "));
        w.show();
        QCOMPARE(w.currentPage(), 6);
        auto *contact = w.findChild<QLabel *>("lblUserName");
        QCOMPARE(contact->text(), QString("Hans"));
        QCOMPARE(w.findChild<QPlainTextEdit *>("tbErrorMessage")->toPlainText(),
                 QString("Fehlernummer: 53\nFehlertext: Datei_fehlt\nModul: modMain"));
        QCOMPARE(w.form()->txtlabel->text(), w.form()->SSTab19->tabText(6));
        QCOMPARE(w.windowTitle(),
                 QString::fromUtf8("Pawnsketch · Support Kit 1.0 Build ") + w.windowTitle().section(' ', -1));
    }

    void runningPawnsketchOpensTheLogPage()
    {
        makeInstallation();
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        QCOMPARE(w.currentPage(), 1);
        QVERIFY(!w.findChild<QPushButton *>("cmdOK")->isEnabled());
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
        QFETCH(int, page);
        makeInstallation();
        frmSupportKit::setActionDialogAnswererForTesting([&](frmSelectAction &d) {
            d.show();
            auto *f = d.form();
            f->cbAppendLogfile_1->setChecked(true);
            if (how == "cancel") {
                f->Command1->click();
            } else if (how == "escape") {
                QTest::keyClick(&d, Qt::Key_Escape);
            } else if (how == "close") {
                d.close();
            } else if (how == "dblclick1") {
                QTest::mouseDClick(f->optSelAction_1, Qt::LeftButton);
            } else {
                if (how != "none")
                    d.findChild<QRadioButton *>("optSelAction_" + how)->setChecked(true);
                f->Command->click();
            }
        });
        frmSupportKit w;
        QCOMPARE(w.Form_Load(QString()), goesOn);
        QCOMPARE(w.exitCode(), 0);
        if (!goesOn)
            return;
        w.show();
        QCOMPARE(w.currentPage(), page);
        QVERIFY(w.findChild<QCheckBox *>("cbAppendLogfile_1")->isChecked());
        QVERIFY(!w.findChild<QCheckBox *>("cbAppendLogfile_0")->isChecked());
    }

    void englishChosenInTheDialogSwitchesTheWindow()
    {
        makeInstallation();
        frmSupportKit::setActionDialogAnswererForTesting([](frmSelectAction &d) {
            d.form()->optLng_1->click();
            QCOMPARE(d.form()->Command1->text(), QString("&Cancel"));
            d.form()->Command->click();
        });
        frmSupportKit w;
        QVERIFY(w.Form_Load(QString()));
        QVERIFY(w.form()->optLng_1->isChecked());
        QCOMPARE(w.form()->cmdCancel->text(), QString("Quit"));
    }

    void languageFromSettingsAndSwitch()
    {
        makeInstallation();
        setIniLanguage("us");
        const QByteArray iniBefore = [&] {
            QFile f(m_install->filePath("ini/pawnsketch.ini"));
            f.open(QIODevice::ReadOnly);
            return f.readAll();
        }();
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        QVERIFY(w.form()->optLng_1->isChecked());
        QCOMPARE(w.form()->cmdCancel->text(), QString("Quit"));
        QCOMPARE(w.form()->SSTab19->tabText(5), QString("Fonts"));
        QCOMPARE(listItemForPage(w, 9)->text(0), QString("Version information"));

        w.showPage(5);
        w.form()->optLng_0->click();
        QCOMPARE(w.form()->cmdCancel->text(), QString("Beenden"));
        QCOMPARE(listItemForPage(w, 9)->text(0), QString("Versionsinformationen"));
        QCOMPARE(w.currentPage(), 5);
        QCOMPARE(w.form()->txtlabel->text(), QString("Fonts"));
        QFile f(m_install->filePath("ini/pawnsketch.ini"));
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), iniBefore);
    }

    void missingLanguageFileIsReported()
    {
        makeInstallation();
        setIniLanguage("se");
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QCOMPARE(m_messages.size(), 1);
        QCOMPARE(m_messages[0].title, QString("Missing Language File"));
        QCOMPARE(m_messages[0].style, 48);
        QCOMPARE(w.languageCode(), QString("de"));
        QCOMPARE(w.form()->cmdCancel->text(), QString("Beenden"));
    }

    void pageListKeepsTheBarAsymmetry()
    {
        makeInstallation();
        writeText(m_install->filePath("language/language.de"), "[de]\n"
                                                               "S19T0=Start\n" // no "|": a blank line
                                                               "S19T1=Logs|\n" // ends in "|": no line
                                                               "S19T2=Update|zwei\n"
                                                               "S19T3=Beta|drei\n"
                                                               "S19T4=Fonts & Schriften|vier\n");
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        QCOMPARE(listItemForPage(w, 0)->text(2), QString(" "));
        QCOMPARE(listItemForPage(w, 1)->text(2), QString("zwei"));
        QCOMPARE(listItemForPage(w, 2)->text(2), QString("drei"));
        QCOMPARE(listItemForPage(w, 3)->text(2), QString("vier"));
        QVERIFY(!listItemForPage(w, 7));
        QCOMPARE(w.form()->ListView1->topLevelItemCount(), 11);
        w.show();
        w.showPage(4);
        QCOMPARE(w.form()->txtlabel->text(), QString("Fonts & Schriften"));
    }

    void navigation()
    {
        makeInstallation();
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        // The scroll bar walks the list, which skips the hidden tab 7.
        QTreeWidget *list = w.form()->ListView1;
        w.form()->scrollbar->setValue(list->indexOfTopLevelItem(listItemForPage(w, 6)) + 1);
        QCOMPARE(w.currentPage(), 8);
        // The overview's task choice.
        auto *overview = w.findChild<QRadioButton *>("optShowPage_3");
        overview->setChecked(true);
        w.findChild<QPushButton *>("cmdShowPage")->click();
        QCOMPARE(w.currentPage(), 5);
        w.findChild<QRadioButton *>("optShowPage_2")->setChecked(true);
        w.findChild<QPushButton *>("cmdShowPage")->click();
        QCOMPARE(w.currentPage(), 4);
    }

    void pictureTogglesTheReportBoxSize()
    {
        makeInstallation();
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.resize(1024, 600);
        w.show();
        w.showPage(6);
        auto *report = w.findChild<QPlainTextEdit *>("tbErrStartlogTxt");
        auto *picture = w.findChild<QLabel *>("Picture1");
        QTest::qWait(50);
        const int small = report->height();
        QTest::mouseClick(picture, Qt::LeftButton);
        QTest::qWait(50);
        QVERIFY(report->isVisible());
        QVERIFY2(report->height() > small, qPrintable(QString("%1 -> %2").arg(small).arg(report->height())));
        QVERIFY(!w.findChild<QPlainTextEdit *>("tbErrorMessage")->isVisible());
        QTest::mouseClick(picture, Qt::LeftButton);
        QTest::qWait(50);
        QCOMPARE(report->height(), small);
        QVERIFY(w.findChild<QPlainTextEdit *>("tbErrorMessage")->isVisible());
    }

    void closingRefusedWhileBusyButEscapeEnds()
    {
        makeInstallation();
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        w.setBusy(true);
        w.form()->cmdCancel->click();
        QVERIFY(w.isVisible());
        QVERIFY(!w.close());
        QTest::keyClick(&w, Qt::Key_Escape);
        QVERIFY(!w.isVisible());
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
