#include "app/PageOverview.h"

#include "ui_PageOverview.h"

PageOverview::PageOverview(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageOverview>())
{
    ui->setupUi(this);
}

PageOverview::~PageOverview() = default;
