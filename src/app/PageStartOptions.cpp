#include "app/PageStartOptions.h"

#include "core/PageHost.h"

#include "ui_PageStartOptions.h"

#include <QCheckBox>

PageStartOptions::PageStartOptions(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageStartOptions>())
{
    ui->setupUi(this);
    // Standard mode first: the safe-mode boxes only mean something in safe mode.
    ui->optStartingMode_1->setChecked(true);
    for (QCheckBox *box :
         {ui->Check1, ui->Check3, ui->Check4, ui->Check5, ui->Check7, ui->Check8, ui->Check9})
        box->setEnabled(false);
}

void PageStartOptions::setPawnsketchRunning()
{
    ui->cmdOK->setEnabled(false);
}

PageStartOptions::~PageStartOptions() = default;
