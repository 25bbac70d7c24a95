#include "maintenance/PageBeta.h"

#include "core/PageHost.h"

#include "ui_PageBeta.h"

PageBeta::PageBeta(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageBeta>())
{
    ui->setupUi(this);
}

PageBeta::~PageBeta() = default;
