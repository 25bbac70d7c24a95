#include "GuiFixture.h"
#include "app/frmSupportKit.h"
#include "core/Config.h"
#include "support/ClipboardAction.h"
#include "support/ErrorReport.h"
#include "support/LogFiles.h"
#include "support/SharedTextView.h"
#include "testsupport/FakePlatform.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

using GuiFixture::control;

// The report page and the feedback page as a user works them: typing, the report that
// follows, and what reaches the clipboard, the mail program or the web-mail instructions.
class TestReportPage : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_install;
    QList<ShownMessage> m_messages;
    FakePlatform m_platform;
    std::unique_ptr<PlatformOverride> m_override;

    static QString report(frmSupportKit &w) { return control<SharedTextView>(w, "tbErrStartlogTxt")->text(); }
    void writeLog(const char *name, const QByteArray &text)
    {
        QVERIFY(GuiFixture::writeFile(m_install->filePath(QStringLiteral("logfiles/") + QLatin1String(name)),
                                      text));
    }
    // A window on the report page whose logs have been read.
    void open(frmSupportKit &w)
    {
        QVERIFY(w.Form_Load("1"));
        w.show();
        w.showPage(6);
        QTRY_VERIFY(!control<SharedTextView>(w, "tbStartLogfile")->isEmpty());
    }

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        m_install = std::make_unique<QTemporaryDir>();
        QVERIFY(GuiFixture::makeInstallation(m_install->path()));
        QFile::remove(m_install->filePath("res/pwk_err"));
        m_platform = FakePlatform();
        m_override = std::make_unique<PlatformOverride>(m_platform);
        QGuiApplication::clipboard()->clear();
    }
    void cleanup() { m_override.reset(); }

    void typingDrivesTheReport()
    {
        const QString home = QDir::homePath();
        QVERIFY(home.size() > 1);
        QByteArray log = "start 1\r\n\r\n  start 2  \r\n" + home.toUtf8() + "/pawnsketch/x.pwk\r\n";
        for (int i = 0; log.size() < 700 * 1024; ++i)
            log += "Zeile " + QByteArray::number(i) + (i % 7 ? "\r\n" : "\r\n\r\n");
        writeLog("startlog.txt", log);
        frmSupportKit w;
        open(w);
        auto *box = control<QCheckBox>(w, "cbAppendLogfile_2");
        auto *message = control<QPlainTextEdit>(w, "tbErrorMessage");
        auto *additional = control<QPlainTextEdit>(w, "tbAdditionalText");
        auto *send = control<QPushButton>(w, "cmdErrReport_0");
        QVERIFY(!box->isChecked());
        QVERIFY(!additional->isEnabled());
        QVERIFY(report(w).isEmpty());
        QVERIFY(!send->isEnabled());

        // Typing checks the box, which unlocks the second field.
        box->setChecked(true);
        QTest::keyClicks(message, "Absturz");
        QVERIFY(box->isChecked());
        QVERIFY(additional->isEnabled());
        QTest::keyClicks(additional, "bei Start");
        control<QCheckBox>(w, "cbAppendLogfile_1")->setChecked(true);
        QTest::keyClicks(message, " beim Drucken");

        ErrorReportInput in;
        in.userLine = QStringLiteral("Benutzername: ") + control<QLabel>(w, "lblUserName")->text();
        in.errorMessage = message->toPlainText();
        in.additionalText = additional->toPlainText();
        in.startLog = QString::fromLatin1(log);
        in.reportError = in.appendStartLog = true;
        const QString expected = BuildErrorReport(in);
        QCOMPARE(report(w), expected);
        QCOMPARE(control<QLabel>(w, "Label65")->text(), QStringLiteral("%1 Zeichen").arg(expected.size()));
        QVERIFY(send->isEnabled());

        // The privacy option hides the home folder in what is sent, and only while it is ticked.
        auto *privacy = control<QCheckBox>(w, "cbHidePersonalData");
        privacy->setChecked(true);
        QVERIFY(!report(w).contains(home));
        QVERIFY(report(w).contains(QLatin1String("<home>/pawnsketch/x.pwk")));
        privacy->setChecked(false);
        QCOMPARE(report(w), expected);

        // Clearing the text unchecks the box and locks the second field, text and all.
        message->clear();
        QVERIFY(!box->isChecked());
        QVERIFY(!additional->isEnabled());
        QVERIFY(!report(w).contains(QLatin1String("Zusatext")));
    }

    void missingAndEmptyLogs()
    {
        writeLog("startlog.txt", "");
        QFile::remove(m_install->filePath("logfiles/errorlog.txt"));
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        // The log page is first opened after the logs are in.
        QTRY_VERIFY(w.findChild<LogFileLoader *>()->isLoaded());
        auto *errorBox = control<SharedTextView>(w, "tbErrorLogfile");
        QVERIFY(!errorBox->isEmpty());
        QCOMPARE(errorBox->text(), QStringLiteral("Missing: ") + QDir::toNativeSeparators(m_install->filePath(
                                                                     "logfiles/errorlog.txt")));
        QVERIFY(control<SharedTextView>(w, "tbStartLogfile")->isEmpty());
        QCOMPARE(control<QLabel>(w, "Label45")->text(), QString("0 KB"));
        QCOMPARE(control<QLabel>(w, "Label41")->text(), QString("1 KB"));
        QVERIFY(!control<QPushButton>(w, "cmdSendErrlog_0")->isEnabled());

        // Asked for anyway, the missing log names the start log, as it always has.
        control<QCheckBox>(w, "cbAppendLogfile_0")->setChecked(true);
        QVERIFY(report(w).contains(QLatin1String("---------------[errorlog.txt]\r\nMissing: ")));
    }

    void sending_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("mailProgram");
        QTest::addColumn<QString>("clipboard"); // what the clipboard must begin with
        QTest::addColumn<QString>("mailto");    // "" when no address may be handed over
        QTest::addColumn<QString>("message");   // start of the box's text, "" for none
        const auto row = [](const char *name, const char *button, bool mailProgram, const char *clipboard,
                            const QString &mailto, const char *message) {
            QTest::newRow(name) << button << mailProgram << clipboard << mailto << message;
        };
        const char *const webMail = "Starten Sie nun Ihr Web-Mail Programm";
        row("start log by mail", "cmdSendStartlog_0", true, "demo start",
            "?Subject=Pawnsketch: STARTLOG.TXT&Body=Bitte druecken Sie <Ctrl><V>, um den Text aus der "
            "Zwischenablage an der Cursorposition einzufuegen%0D%0A%0D%0A",
            "");
        row("error log by web mail", "cmdSendErrlog_1", true, "demo error", "", webMail);
        row("report by mail", "cmdErrReport_0", true,
            "Benutzername:", "?Subject=Pawnsketch: Fehlerreport&Body=Setzen Sie", "");
        row("report, no mail program", "cmdErrReport_0", false, "Benutzername:", "",
            "Es wurde kein E-Mail-Programm gefunden");
        row("feedback inline", "cmdErrReport_4", true, "Lob\n", "?Subject=Gut&Body=Lob%0D%0Aund Tadel", "");
        row("feedback by web mail", "cmdErrReport_5", true, "Lob\n", "", webMail);
    }
    void sending()
    {
        QFETCH(QString, button);
        QFETCH(bool, mailProgram);
        QFETCH(QString, clipboard);
        QFETCH(QString, mailto);
        QFETCH(QString, message);
        writeLog("startlog.txt", "demo start\r\n");
        writeLog("errorlog.txt", "demo error\r\n");
        m_platform.mailHandler = mailProgram;
        frmSupportKit w;
        open(w);
        control<QPlainTextEdit>(w, "tbErrorMessage")->setPlainText(QStringLiteral("Absturz"));
        control<QLineEdit>(w, "tbSubject")->setText(QStringLiteral("Gut"));
        control<QPlainTextEdit>(w, "tbFeedback")->setPlainText(QStringLiteral("Lob\nund Tadel"));

        control<QPushButton>(w, qPrintable(button))->click();
        QVERIFY2(QGuiApplication::clipboard()->text().startsWith(clipboard),
                 qPrintable(QGuiApplication::clipboard()->text()));
        QCOMPARE(programState().clipboardOk, true);
        if (mailto.isEmpty()) {
            QVERIFY(m_platform.mailtoAddresses.isEmpty() || !mailProgram);
        } else {
            QCOMPARE(m_platform.mailtoAddresses.size(), 1);
            QVERIFY2(m_platform.mailtoAddresses[0].startsWith("mailto:" + Config::supportMail() + mailto),
                     qPrintable(m_platform.mailtoAddresses[0]));
        }
        if (message.isEmpty()) {
            QVERIFY(m_messages.isEmpty());
        } else {
            QCOMPARE(m_messages.size(), 1);
            QVERIFY2(m_messages[0].message.startsWith(message), qPrintable(m_messages[0].message));
            // The support address appears with its at sign.
            QVERIFY(m_messages[0].message.contains(Config::supportMail()));
        }
    }

    void screenshotOfTheWindow()
    {
        frmSupportKit w;
        QVERIFY(w.Form_Load("1"));
        w.show();
        control<QPushButton>(w, "cmdScreenshot")->click();
        // Where the system has no Alt+Print of its own, the picture is taken here.
        QCOMPARE(m_platform.snapshots, 1);
        QVERIFY(QGuiApplication::clipboard()->mimeData()->hasImage());
        QVERIFY(programState().clipboardOk);
    }

    void heldClipboardIsReportedOnce_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<bool>("ok");
        QTest::newRow("held nine times") << 9 << true;
        QTest::newRow("held ten times") << 10 << false;
    }
    void heldClipboardIsReportedOnce()
    {
        QFETCH(int, failures);
        QFETCH(bool, ok);
        setClipboardBlockedForTesting(failures);
        QCOMPARE(ClipboardAction(1, QStringLiteral("x")).toBool(), ok);
        setClipboardBlockedForTesting(0);
        QCOMPARE(m_messages.size(), ok ? 0 : 1);
        if (!ok)
            QCOMPARE(m_messages[0].key, QString("M85"));
    }
};

QTEST_MAIN(TestReportPage)
#include "tst_reportpage.moc"
