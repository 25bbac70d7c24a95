#include "support/PageFeedback.h"

#include "ui_PageFeedback.h"

PageFeedback::PageFeedback(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageFeedback>())
{
    ui->setupUi(this);
}

PageFeedback::~PageFeedback() = default;
