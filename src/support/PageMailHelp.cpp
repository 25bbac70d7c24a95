#include "support/PageMailHelp.h"

#include "ui_PageMailHelp.h"

PageMailHelp::PageMailHelp(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageMailHelp>())
{
    ui->setupUi(this);
}

PageMailHelp::~PageMailHelp() = default;
