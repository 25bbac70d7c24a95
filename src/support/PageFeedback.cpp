#include "support/PageFeedback.h"

#include "core/PageHost.h"
#include "core/ProgramState.h"
#include "localisation/Fields.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "support/ClipboardAction.h"
#include "support/FileStatus.h"
#include "support/MailHandoff.h"
#include "support/SendMail.h"
#include "support/SupportTexts.h"

#include "ui_PageFeedback.h"

namespace {
constexpr int kMailHelpPage = 8;
} // namespace

PageFeedback::PageFeedback(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageFeedback>())
{
    ui->setupUi(this);
    connect(ui->tbFeedback, &QPlainTextEdit::textChanged, this, &PageFeedback::tbFeedback_Change);
    connect(ui->cmdErrReport_4, &QPushButton::clicked, this, [this] { SendFeedback(4); });
    connect(ui->cmdErrReport_5, &QPushButton::clicked, this, [this] { SendFeedback(5); });
    connect(ui->cmdErrReport_6, &QPushButton::clicked, this, [this] { m_host.showPage(kMailHelpPage); });
}

PageFeedback::~PageFeedback() = default;

void PageFeedback::languageChanged()
{
    fillVar1(this, QStringLiteral("cmdErrReport"), sendButtonTip(),
             GetField(m_host.labelList(), 3, QStringLiteral("#")));
    tbFeedback_Change();
}

void PageFeedback::tbFeedback_Change()
{
    ui->Label63->setText(CounterText(CountedCharacters(ui->tbFeedback->toPlainText()), m_host.counterUnit()));
}

void PageFeedback::SendFeedback(int index)
{
    const QString text = ui->tbFeedback->toPlainText();
    programState().clipboardOk = ClipboardAction(1, text).toBool();
    if (index == 5) {
        showWebmailInstructions(this);
        return;
    }
    const MailTextSource source = mailTextSource(MailTopic::Feedback);
    openSupportMail(this,
                    FeedbackMail(ui->tbSubject->text(), text, lngText(source.key, source.germanDefault)));
}
