#include "support/PageContactSupport.h"

#include "core/Images.h"

#include "ui_PageContactSupport.h"

PageContactSupport::PageContactSupport(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::PageContactSupport>())
{
    initImages(); // the expand/collapse picture
    ui->setupUi(this);
}

PageContactSupport::~PageContactSupport() = default;
