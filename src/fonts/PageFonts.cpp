#include "fonts/PageFonts.h"

#include "core/PageHost.h"

#include "ui_PageFonts.h"

PageFonts::PageFonts(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageFonts>())
{
    ui->setupUi(this);
}

PageFonts::~PageFonts() = default;
