#include "app/frmSupportKit.h"

#include "app/Images.h"
#include "app/PageOverview.h"
#include "app/PageStartOptions.h"
#include "app/PageVersionInfo.h"
#include "fonts/PageFonts.h"
#include "maintenance/PageBeta.h"
#include "maintenance/PageRepair.h"
#include "maintenance/PageUpdate.h"
#include "support/PageContactSupport.h"
#include "support/PageFeedback.h"
#include "support/PageLogFiles.h"
#include "support/PageMailHelp.h"

#include "ui_frmSupportKit.h"

#include <QLayout>
#include <QScrollArea>

frmSupportKit::frmSupportKit(QWidget *parent) : QMainWindow(parent), ui(std::make_unique<Ui::frmSupportKit>())
{
    initImages();
    ui->setupUi(this);
    // The page list shows caption and description; the page number is only for the code.
    ui->ListView1->setColumnHidden(1, true);

    insertPage(0, m_pageStartOptions = new PageStartOptions);
    insertPage(1, m_pageLogFiles = new PageLogFiles);
    insertPage(2, m_pageUpdate = new PageUpdate);
    insertPage(3, m_pageBeta = new PageBeta);
    insertPage(4, m_pageRepair = new PageRepair);
    insertPage(5, m_pageFonts = new PageFonts);
    insertPage(6, m_pageContactSupport = new PageContactSupport);
    // Tab 7 is not used and stays empty.
    insertPage(8, m_pageMailHelp = new PageMailHelp);
    insertPage(9, m_pageVersionInfo = new PageVersionInfo);
    insertPage(10, m_pageFeedback = new PageFeedback);
    insertPage(11, m_pageOverview = new PageOverview);
}

frmSupportKit::~frmSupportKit() = default;

// Each page sits in a frameless scroll area: on a screen smaller than the window's
// minimum the page scrolls instead of being cut off.
void frmSupportKit::insertPage(int tab, QWidget *page)
{
    auto *scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("scrollPage_%1").arg(tab));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(page);
    ui->SSTab19->widget(tab)->layout()->addWidget(scroll);
}
