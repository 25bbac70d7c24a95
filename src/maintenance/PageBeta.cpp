#include "maintenance/PageBeta.h"

#include "ui_PageBeta.h"

PageBeta::PageBeta(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageBeta>())
{
    ui->setupUi(this);
}

PageBeta::~PageBeta() = default;
