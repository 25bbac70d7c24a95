#include "support/PageLogFiles.h"

#include "ui_PageLogFiles.h"

PageLogFiles::PageLogFiles(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageLogFiles>())
{
    ui->setupUi(this);
}

PageLogFiles::~PageLogFiles() = default;
