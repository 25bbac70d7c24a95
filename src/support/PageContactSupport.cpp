#include "support/PageContactSupport.h"

#include "core/PageHost.h"
#include "localisation/Fields.h"
#include "localisation/LocaliseForms.h"
#include "support/SupportTexts.h"

#include "core/Images.h"

#include "ui_PageContactSupport.h"

#include <QEvent>
#include <QIcon>

PageContactSupport::PageContactSupport(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageContactSupport>())
{
    initImages(); // the expand/collapse picture
    ui->setupUi(this);
    ui->Picture1->installEventFilter(this);
}

PageContactSupport::~PageContactSupport() = default;

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
    setCounterText(ui->Label65, ui->Label65->text().section(u' ', 0, 0).toInt(), m_host.counterUnit());
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
