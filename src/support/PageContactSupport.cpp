#include "support/PageContactSupport.h"

#include "core/Images.h"
#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/Fields.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "localisation/ShowMsg.h"
#include "support/ClipboardAction.h"
#include "support/ErrorReport.h"
#include "support/FileStatus.h"
#include "support/InstallationStatus.h"
#include "support/LogFiles.h"
#include "support/MailHandoff.h"
#include "support/PagedText.h"
#include "support/ReportText.h"
#include "support/SendMail.h"
#include "support/SharedTextView.h"
#include "support/SupportTexts.h"

#include "ui_PageContactSupport.h"

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QThread>

namespace {
constexpr int kMailHelpPage = 8;

QString accountName()
{
#ifdef Q_OS_WIN
    return qEnvironmentVariable("USERNAME");
#else
    return qEnvironmentVariable("USER");
#endif
}

void openTopicMail(QWidget *owner, MailTopic topic)
{
    const MailTextSource source = mailTextSource(topic);
    openSupportMail(owner, PasteHintMail(lngText(source.key, source.germanDefault), source.var1));
}
} // namespace

PageContactSupport::PageContactSupport(PageHost &host, LogFileLoader &logs, QWidget *parent)
    : QWidget(parent), m_host(host), m_logs(logs), ui(std::make_unique<Ui::PageContactSupport>()),
      m_head(std::make_unique<ErrorReportHead>())
{
    initImages(); // the expand/collapse picture
    ui->setupUi(this);
    ui->Picture1->installEventFilter(this);

    for (QCheckBox *box : {ui->cbAppendLogfile_0, ui->cbAppendLogfile_1, ui->cbAppendLogfile_2}) {
        const int index = box->property("index").toInt();
        connect(box, &QCheckBox::toggled, this, [this, index] { cbAppendLogfile_Click(index); });
    }
    connect(ui->cbHidePersonalData, &QCheckBox::toggled, this, &PageContactSupport::BuildErrorReport);
    connect(ui->tbErrorMessage, &QPlainTextEdit::textChanged, this,
            &PageContactSupport::tbErrorMessage_Change);
    connect(ui->tbAdditionalText, &QPlainTextEdit::textChanged, this, &PageContactSupport::BuildErrorReport);
    connect(ui->cmdSendStartlog_0, &QPushButton::clicked, this, [this] { cmdSendStartlog_Click(0); });
    connect(ui->cmdSendStartlog_1, &QPushButton::clicked, this, [this] { cmdSendStartlog_Click(1); });
    connect(ui->cmdSendErrlog_0, &QPushButton::clicked, this, [this] { cmdSendErrlog_Click(0); });
    connect(ui->cmdSendErrlog_1, &QPushButton::clicked, this, [this] { cmdSendErrlog_Click(1); });
    for (QPushButton *button : {ui->cmdErrReport_0, ui->cmdErrReport_1, ui->cmdErrReport_3}) {
        const int index = button->property("index").toInt();
        connect(button, &QPushButton::clicked, this, [this, index] { cmdErrReport_Click(index); });
    }
    connect(&m_logs, &LogFileLoader::loaded, this, &PageContactSupport::BuildErrorReport);
    connect(ui->tbErrStartlogTxt, &SharedTextView::indexed, this,
            &PageContactSupport::tbErrStartlogTxt_Change);
    cbAppendLogfile_Click(2);
}

PageContactSupport::~PageContactSupport()
{
    stopTailPass();
}

void PageContactSupport::languageChanged()
{
    const QString list = m_host.labelList();
    const QString hash = QStringLiteral("#");
    ui->Text2->setPlainText(mailHint());
    const QString tip = sendButtonTip();
    fillVar1(this, QStringLiteral("cmdSendStartlog"), tip, GetField(list, 1, hash));
    fillVar1(this, QStringLiteral("cmdSendErrlog"), tip, GetField(list, 2, hash));
    fillVar1(this, QStringLiteral("cmdErrReport"), tip, GetField(list, 3, hash));
    ui->Frame13->setTitle(GetField(list, 1, hash));
    ui->Frame14->setTitle(GetField(list, 2, hash));
    ui->lblAdditionalErrInfo->setText(GetField(list, 7, hash));
    // The user line is in the new language.
    BuildErrorReport();
    // An unchanged report keeps its length, but the counter's unit is a word of the language.
    tbErrStartlogTxt_Change();
}

void PageContactSupport::showStatus(const InstallationStatus &status)
{
    const auto show = [](const FileState &file, QLabel *size, QLabel *date, QPushButton *mail,
                         QPushButton *web, QCheckBox *box) {
        size->setText(file.sizeText);
        if (!file.dateText.isEmpty())
            date->setText(file.dateText);
        mail->setEnabled(file.exists);
        web->setEnabled(file.exists);
        box->setToolTip(file.exists ? QDir::toNativeSeparators(file.path) : QString());
    };
    show(status.startLog, ui->Label41, ui->Label39, ui->cmdSendStartlog_0, ui->cmdSendStartlog_1,
         ui->cbAppendLogfile_1);
    show(status.errorLog, ui->Label45, ui->Label43, ui->cmdSendErrlog_0, ui->cmdSendErrlog_1,
         ui->cbAppendLogfile_0);
    // An error record left by Pawnsketch means there is a program error to report. The box
    // stays usable without one: it unlocks the description fields.
    if (status.errorRecord.exists)
        ui->cbAppendLogfile_2->setChecked(true);
}

void PageContactSupport::showErrorRecord(const QString &userName, const QString &text)
{
    if (!userName.isEmpty())
        ui->lblUserName->setText(userName);
    ui->tbErrorMessage->setPlainText(text);
}

void PageContactSupport::setAppendLogs(bool startLog, bool errorLog)
{
    ui->cbAppendLogfile_1->setChecked(startLog);
    ui->cbAppendLogfile_0->setChecked(errorLog);
}

void PageContactSupport::cbAppendLogfile_Click(int index)
{
    if (index == 2) {
        const bool on = ui->cbAppendLogfile_2->isChecked();
        for (QWidget *w : std::initializer_list<QWidget *>{ui->Label36, ui->lblAdditionalErrInfo,
                                                           ui->tbErrorMessage, ui->tbAdditionalText})
            w->setEnabled(on);
    }
    BuildErrorReport();
}

void PageContactSupport::tbErrorMessage_Change()
{
    const bool hasText = !ui->tbErrorMessage->document()->isEmpty();
    if (ui->cbAppendLogfile_2->isChecked() != hasText)
        ui->cbAppendLogfile_2->setChecked(hasText); // runs cbAppendLogfile_Click(2)
    else
        BuildErrorReport();
}

void PageContactSupport::BuildErrorReport()
{
    ErrorReportInput in;
    in.userLine = GetField(m_host.labelList(), 10, QStringLiteral("#")) + u' ' + ui->lblUserName->text();
    // The report breaks lines with CR LF throughout, also in what the user typed.
    in.errorMessage = WithCrLf(ui->tbErrorMessage->toPlainText());
    in.additionalText = WithCrLf(ui->tbAdditionalText->toPlainText());
    in.reportError = ui->cbAppendLogfile_2->isChecked();
    in.appendStartLog = ui->cbAppendLogfile_1->isChecked();
    in.appendErrorLog = ui->cbAppendLogfile_0->isChecked();
    in.hidePersonalData = ui->cbHidePersonalData->isChecked();
    in.accountName = accountName();
    in.homeFolder = QDir::homePath();
    const bool headChanged = m_head->setInput(in);

    const auto source = [](const std::shared_ptr<const PagedText> &paged,
                           const QString &text) -> std::shared_ptr<const TextSource> {
        if (paged)
            return paged;
        return std::make_shared<StringText>(text);
    };
    const QString key = QStringLiteral("%1 %2 %3 %4 %5|%6|%7|%8|%9")
                            .arg(in.appendStartLog)
                            .arg(in.appendErrorLog)
                            .arg(in.hidePersonalData)
                            .arg(quintptr(m_logs.startPaged().get()))
                            .arg(quintptr(m_logs.errorPaged().get()))
                            .arg(m_logs.startLog(), m_logs.errorLog(), in.accountName, in.homeFolder);
    const bool tailChanged = key != m_tailKey;
    if (!headChanged && !tailChanged)
        return;
    if (tailChanged) {
        m_tailKey = key;
        stopTailPass();
        m_tail = makeReportText(in, source(m_logs.startPaged(), m_logs.startLog()),
                                source(m_logs.errorPaged(), m_logs.errorLog()));
        startTailPass();
        // While the user types only the head changes, and the logs behind it (which may be many
        // megabytes) stay in the view as they are.
        ui->tbErrStartlogTxt->setText(m_head->text(), std::static_pointer_cast<const TextSource>(m_tail));
    } else {
        ui->tbErrStartlogTxt->setHead(m_head->text());
    }
    tbErrStartlogTxt_Change();
}

// Small logs are done at once, as before; larger ones go on off the window's thread while the
// box shows what is made so far.
void PageContactSupport::startTailPass()
{
    if (!m_tail)
        return;
    const std::shared_ptr<ReportText> tail = m_tail;
    if (tail->indexStep(1 << 20) == ReportText::Step::Done)
        return;
    m_tailWorker = QThread::create([tail] {
        while (!tail->isCancelled()) {
            const qsizetype before = tail->length();
            if (tail->indexStep(1 << 20) == ReportText::Step::Done)
                break;
            // The logs' own pass is still running.
            if (tail->length() == before)
                QThread::msleep(20);
        }
    });
    connect(m_tailWorker, &QThread::finished, m_tailWorker, &QObject::deleteLater);
    m_tailWorker->start();
}

void PageContactSupport::stopTailPass()
{
    if (m_tail)
        m_tail->cancel();
    if (m_tailWorker)
        m_tailWorker->wait();
}

void PageContactSupport::tbErrStartlogTxt_Change()
{
    const bool counting = m_tail && !m_tail->isIndexed();
    const qsizetype length = m_head->text().size() + (m_tail ? m_tail->length() : 0);
    // The report goes out only when it is known whole.
    ui->cmdErrReport_0->setEnabled(length > 0 && !counting);
    ui->cmdErrReport_1->setEnabled(length > 0 && !counting);
    ui->Label65->setText(
        counting ? lngText(QStringLiteral("T19452"), QStringLiteral("Zeichen werden noch gezählt …"))
                 : CounterText(length, m_host.counterUnit()));
}

void PageContactSupport::CopyLogToClipboard(int selector)
{
    const QString path = logFilePath(selector);
    if (!QFileInfo(path).isFile()) {
        // Names the start log whichever log was asked for, as the message always has.
        ShowMsg(1, QString(), 64,
                QStringLiteral("Datei nicht gefunden / file not found:@<var1>#Dateifehler / file error"),
                this,
                {QDir::toNativeSeparators(
                    QDir(programFolder()).filePath(QStringLiteral("logfiles/startlog.txt")))});
        return;
    }
    // A paged log leaves whole, whatever its size, up to what a mail program takes.
    const std::shared_ptr<const PagedText> paged = selector == 1 ? m_logs.startPaged() : m_logs.errorPaged();
    const QString text = paged ? handoffText(*paged, 0, paged->length()) : logBoxText(path);
    programState().clipboardOk = ClipboardAction(1, text).toBool();
}

bool PageContactSupport::waitForLogs(const std::function<void()> &then)
{
    const auto done = [](const std::shared_ptr<const PagedText> &log) { return !log || log->isIndexed(); };
    if (m_logs.isLoaded() && done(m_logs.startPaged()) && done(m_logs.errorPaged()))
        return false;
    // Until the loader has read to the logs' ends the click waits for it, and the window works on.
    QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    connect(
        &m_logs, &LogFileLoader::indexed, this,
        [then] {
            QGuiApplication::restoreOverrideCursor();
            then();
        },
        Qt::SingleShotConnection);
    return true;
}

void PageContactSupport::cmdSendStartlog_Click(int index)
{
    if (waitForLogs([this, index] { cmdSendStartlog_Click(index); }))
        return;
    CopyLogToClipboard(1);
    if (index == 1)
        showWebmailInstructions(this);
    else
        openTopicMail(this, MailTopic::StartLog);
}

void PageContactSupport::cmdSendErrlog_Click(int index)
{
    if (waitForLogs([this, index] { cmdSendErrlog_Click(index); }))
        return;
    CopyLogToClipboard(2);
    if (index == 1)
        showWebmailInstructions(this);
    else
        openTopicMail(this, MailTopic::ErrorLog);
}

void PageContactSupport::cmdErrReport_Click(int index)
{
    if (index == 3) {
        m_host.showPage(kMailHelpPage);
        return;
    }
    QString report = m_head->text();
    if (m_tail)
        report += m_tail->handoff(kHandoffLimit - report.size());
    programState().clipboardOk = ClipboardAction(1, report).toBool();
    if (index == 1)
        showWebmailInstructions(this);
    else
        openTopicMail(this, MailTopic::ErrorReport);
}

bool PageContactSupport::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui->Picture1 && event->type() == QEvent::MouseButtonRelease) {
        Picture1_Click();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void PageContactSupport::Picture1_Click()
{
    // Enlarged, the report box takes the room of everything beside and above it on the page.
    m_logExpanded = !m_logExpanded;
    for (QWidget *w : std::initializer_list<QWidget *>{ui->Frame13, ui->Frame14, ui->Text2,
                                                       ui->cmdErrReport_3, ui->Label36, ui->tbErrorMessage,
                                                       ui->lblAdditionalErrInfo, ui->tbAdditionalText})
        w->setVisible(!m_logExpanded);
    ui->Picture1->setPixmap(
        QIcon(m_logExpanded ? QStringLiteral(":/images/collapse.svg") : QStringLiteral(":/images/expand.svg"))
            .pixmap(24, 24));
}
