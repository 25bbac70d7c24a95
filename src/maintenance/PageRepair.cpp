#include "maintenance/PageRepair.h"

#include "core/PageHost.h"

#include "ui_PageRepair.h"

PageRepair::PageRepair(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageRepair>())
{
    ui->setupUi(this);
}

PageRepair::~PageRepair() = default;

void PageRepair::setBusy(bool busy)
{
    ui->Command2->setProperty("busyMarker", busy);
}

bool PageRepair::isBusy() const
{
    return ui->Command2->property("busyMarker").toBool();
}
