#include "app/PageVersionInfo.h"

#include "ui_PageVersionInfo.h"

PageVersionInfo::PageVersionInfo(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::PageVersionInfo>())
{
    ui->setupUi(this);
}

PageVersionInfo::~PageVersionInfo() = default;
