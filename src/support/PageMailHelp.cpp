#include "support/PageMailHelp.h"

#include "core/PageHost.h"

#include "ui_PageMailHelp.h"

PageMailHelp::PageMailHelp(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageMailHelp>())
{
    ui->setupUi(this);
}

PageMailHelp::~PageMailHelp() = default;
