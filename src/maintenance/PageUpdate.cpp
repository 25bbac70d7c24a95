#include "maintenance/PageUpdate.h"

#include "ui_PageUpdate.h"

PageUpdate::PageUpdate(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageUpdate>())
{
    ui->setupUi(this);
}

PageUpdate::~PageUpdate() = default;
