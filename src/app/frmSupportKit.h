#pragma once

#include <QMainWindow>
#include <QStringList>

#include <functional>
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
class frmSelectAction;
class QTreeWidgetItem;
class ConnectionTest;
class UpdateCheck;
struct UpdateCheckResult;

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

    // Start-up up to the first display: caption, language, localisation, the installation
    // check and the start arguments. False when the program is to end instead of showing
    // the window; exitCode() then tells with which status.
    bool Form_Load(const QString &commandLine);
    int exitCode() const { return m_exitCode; }
    // Shows the start page; runs when the window first becomes active.
    void Form_Activate();

    void FillListWithTABCaptions();
    // Shows page (a tab number of SSTab19) as a click on its list item would.
    void showPage(int page);
    int currentPage() const;
    QString languageCode() const { return m_languageCode; }
    // True while the start-up's update check or connection test still runs.
    bool networkChecksRunning() const;

    // Set while a download runs: the window then refuses to close.
    void setBusy(bool busy);
    bool isBusy() const;

    // Offscreen tests answer the action dialog instead of a user: the function gets the
    // dialog in place of its modal display and acts on it (choose, confirm, cancel, close).
    using ActionDialogAnswerer = std::function<void(frmSelectAction &)>;
    static void setActionDialogAnswererForTesting(ActionDialogAnswerer answerer);

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void insertPage(int tab, QWidget *page);
    void connectControls();
    void loadLanguage();
    void Initialize();
    bool handleStartArguments();
    bool runActionDialog();
    void ListView1_ItemClick(QTreeWidgetItem *item);
    void scrollbar_Change(int value);
    void Picture1_Click();
    void optLng_Click();
    void cmdShowPage_Click();
    void endProgram();
    void startNetworkChecks();
    void cmdInet_Click();
    void showServerVersion(const UpdateCheckResult &result);
    void setConnectionPicture(const QString &picture);
    void lblBuild_Change();
    void showPendingWhenVisible();

    UpdateCheck *m_startUpdateCheck = nullptr;
    ConnectionTest *m_startConnectionTest = nullptr;

    QStringList m_commandItems;
    QString m_languageCode;
    int m_languageByte = 0;
    int m_exitCode = 0;
    bool m_loading = false;
    bool m_activated = false;
    bool m_ending = false;
    bool m_logExpanded = false;

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
