#include "support/PageLogFiles.h"

#include "core/PageHost.h"
#include "localisation/Fields.h"
#include "localisation/LocaliseForms.h"
#include "support/SupportTexts.h"

#include "ui_PageLogFiles.h"

PageLogFiles::PageLogFiles(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageLogFiles>())
{
    ui->setupUi(this);
}

PageLogFiles::~PageLogFiles() = default;

void PageLogFiles::languageChanged()
{
    const QString list = m_host.labelList();
    const QString hash = QStringLiteral("#");
    ui->Frame2->setTitle(GetField(list, 1, hash));
    ui->Frame4->setTitle(GetField(list, 2, hash));
    fillVar1(this, QStringLiteral("cmdErrReport"), sendButtonTip(), GetField(list, 3, hash));
}
