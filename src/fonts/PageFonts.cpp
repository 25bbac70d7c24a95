#include "fonts/PageFonts.h"

#include "ui_PageFonts.h"

PageFonts::PageFonts(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::PageFonts>())
{
    ui->setupUi(this);
}

PageFonts::~PageFonts() = default;
