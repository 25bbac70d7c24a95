#pragma once

#include "core/PageHost.h"

#include <QHash>
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
struct FileInfo;
class QTreeWidgetItem;
class NetworkChecks;
class LogFileLoader;

// The program's only working window: the page list, the tab control SSTab19 with one
// page per tab, and the buttons that stay visible on every page. It creates, localises
// and wires the pages; each page handles its own controls.
class frmSupportKit : public QMainWindow, public PageHost
{
    Q_OBJECT

public:
    explicit frmSupportKit(QWidget *parent = nullptr);
    ~frmSupportKit() override;

    Ui::frmSupportKit *form() const { return ui.get(); }

    // Start-up up to the first display: caption, language, localisation, the installation
    // check and the start arguments. False when the program is to end instead of showing
    // the window; exitCode() then tells with which status.
    bool Form_Load(const QString &commandLine);
    int exitCode() const { return m_exitCode; }
    // Shows the start page; runs when the window first becomes active.
    void Form_Activate();

    void FillListWithTABCaptions();
    int currentPage() const;
    QString languageCode() const { return m_languageCode; }
    // The page on a tab, built when first needed (null for the unused tab). Everything that
    // reaches into a page - the window itself, tests, automation looking for a control by
    // name - goes through here: the window shows before any page but the first is built.
    QWidget *page(int tab);

    // True while network checks (start-up or the internet button's) still run.
    bool networkChecksRunning() const;

    // Set while a download runs: the window then refuses to close.
    void setBusy(bool busy);
    bool isBusy() const;

    // PageHost
    void showPage(int page) override;
    void refreshStatus() override;
    void showConnectionState(bool connected) override;
    QString labelList() const override;
    QString counterUnit() const override;

    // Offscreen tests answer the action dialog instead of a user: the function gets the
    // dialog in place of its modal display and acts on it (choose, confirm, cancel, close).
    using ActionDialogAnswerer = std::function<void(frmSelectAction &)>;
    static void setActionDialogAnswererForTesting(ActionDialogAnswerer answerer);

protected:
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    // The last test's outcome and cause, said again in the current language.
    void showConnectionToolTip();
    QWidget *buildPage(int tab);
    // What a page built late must get as if it had been there from the start.
    void preparePage(int tab);
    void placePage(int tab);
    void pageLanguageChanged(int tab);
    // onlyTab limits it to the one page just built.
    void showStatusOnPages(const FileInfo &info, int onlyTab = -1);
    void connectControls();
    void loadLanguage();
    void Initialize();
    bool handleStartArguments();
    bool runActionDialog();
    void ListView1_ItemClick(QTreeWidgetItem *item);
    void scrollbar_Change(int value);
    void followTab(int tab);
    // Screen-reader names and access keys of every page, after each change of language.
    void updateAccessibility();
    QList<QWidget *> windowControls() const;
    void optLng_Click();
    void endProgram();
    void cmdInet_Click();
    void onChecksFinished();
    void setWaitCursor(bool wait);
    void showServerVersion(const QString &version);
    void setConnectionPicture(const QString &picture);
    void lblBuild_Change();
    void showPendingWhenVisible();

    NetworkChecks *m_checks = nullptr;
    LogFileLoader *m_logs = nullptr;
    bool m_waitCursor = false;

    QStringList m_commandItems;
    QString m_languageCode;
    int m_languageByte = 0;
    int m_exitCode = 0;
    bool m_loading = false;
    bool m_connectionTested = false; // the tool tip names a result only after a test
    bool m_activated = false;
    bool m_ending = false;
    bool m_pawnsketchRunning = false; // started by it: it must not be started again

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
    QHash<int, QWidget *> m_pages;         // by tab, once built
    QHash<int, QWidget *> m_unplacedPages; // by tab, built but not yet shown
};
