#include "app/PageStartOptions.h"

#include "ui_PageStartOptions.h"

PageStartOptions::PageStartOptions(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::PageStartOptions>())
{
    ui->setupUi(this);
}

PageStartOptions::~PageStartOptions() = default;
