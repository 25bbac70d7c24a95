#include "maintenance/PageRepair.h"

#include "ui_PageRepair.h"

PageRepair::PageRepair(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageRepair>())
{
    ui->setupUi(this);
}

PageRepair::~PageRepair() = default;
