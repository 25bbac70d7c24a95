#include "support/PageFeedback.h"

#include "core/PageHost.h"
#include "localisation/Fields.h"
#include "localisation/LocaliseForms.h"
#include "support/SupportTexts.h"

#include "ui_PageFeedback.h"

PageFeedback::PageFeedback(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageFeedback>())
{
    ui->setupUi(this);
}

PageFeedback::~PageFeedback() = default;

void PageFeedback::languageChanged()
{
    fillVar1(this, QStringLiteral("cmdErrReport"), sendButtonTip(),
             GetField(m_host.labelList(), 3, QStringLiteral("#")));
    setCounterText(ui->Label63, ui->Label63->text().section(u' ', 0, 0).toInt(), m_host.counterUnit());
}
