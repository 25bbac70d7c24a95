#pragma once

#include <QMainWindow>

#include <memory>

namespace Ui {
class frmSupportKit;
}
class PageStartOptions;
class PageLogFiles;
class PageUpdate;
class PageBeta;
class PageRepair;
class PageFonts;
class PageContactSupport;
class PageMailHelp;
class PageVersionInfo;
class PageFeedback;
class PageOverview;

// The program's only working window: the page list, the tab control SSTab19 with one
// page widget per tab, and the buttons that stay visible on every page.
// Every control name is unique across the window and its pages, so that controls can be
// found by name from here (findChild) as well as through the pages' forms.
class frmSupportKit : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmSupportKit(QWidget *parent = nullptr);
    ~frmSupportKit() override;

    Ui::frmSupportKit *form() const { return ui.get(); }

    PageStartOptions *pageStartOptions() const { return m_pageStartOptions; }
    PageLogFiles *pageLogFiles() const { return m_pageLogFiles; }
    PageUpdate *pageUpdate() const { return m_pageUpdate; }
    PageBeta *pageBeta() const { return m_pageBeta; }
    PageRepair *pageRepair() const { return m_pageRepair; }
    PageFonts *pageFonts() const { return m_pageFonts; }
    PageContactSupport *pageContactSupport() const { return m_pageContactSupport; }
    PageMailHelp *pageMailHelp() const { return m_pageMailHelp; }
    PageVersionInfo *pageVersionInfo() const { return m_pageVersionInfo; }
    PageFeedback *pageFeedback() const { return m_pageFeedback; }
    PageOverview *pageOverview() const { return m_pageOverview; }

private:
    void insertPage(int tab, QWidget *page);

    std::unique_ptr<Ui::frmSupportKit> ui;
    PageStartOptions *m_pageStartOptions = nullptr;
    PageLogFiles *m_pageLogFiles = nullptr;
    PageUpdate *m_pageUpdate = nullptr;
    PageBeta *m_pageBeta = nullptr;
    PageRepair *m_pageRepair = nullptr;
    PageFonts *m_pageFonts = nullptr;
    PageContactSupport *m_pageContactSupport = nullptr;
    PageMailHelp *m_pageMailHelp = nullptr;
    PageVersionInfo *m_pageVersionInfo = nullptr;
    PageFeedback *m_pageFeedback = nullptr;
    PageOverview *m_pageOverview = nullptr;
};
