#include "maintenance/PageUpdate.h"

#include "core/PageHost.h"

#include "ui_PageUpdate.h"

PageUpdate::PageUpdate(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageUpdate>())
{
    ui->setupUi(this);
}

PageUpdate::~PageUpdate() = default;
