#include "app/frmSupportKit.h"

#include "app/CommandLine.h"
#include "app/PageOverview.h"
#include "app/PageStartOptions.h"
#include "app/PageVersionInfo.h"
#include "app/frmSelectAction.h"
#include "core/Config.h"
#include "core/Images.h"
#include "core/Locale.h"
#include "core/Platform.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "fonts/PageFonts.h"
#include "help/HelpFiles.h"
#include "help/ShowHelp.h"
#include "localisation/AccessibleNames.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "localisation/PendingMessage.h"
#include "localisation/ShowMsg.h"
#include "maintenance/FileInfo.h"
#include "maintenance/NetworkChecks.h"
#include "maintenance/PageBeta.h"
#include "maintenance/PageRepair.h"
#include "maintenance/PageUpdate.h"
#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"
#include "support/InstallationStatus.h"
#include "support/LogFiles.h"
#include "support/PageContactSupport.h"
#include "support/PageFeedback.h"
#include "support/PageLogFiles.h"
#include "support/PageMailHelp.h"
#include "support/Screenshot.h"

#include "ui_frmSupportKit.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStatusBar>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>

namespace {
const QString kLabelListDefault =
    QStringLiteral("Start-Logdatei#Fehler-Logdatei#Fehlerbeschreibung#Fehlernummer:#Fehlertext:#Parameter:#"
                   "Sonstige Fehlermeldung / "
                   "erg\u00e4nzender Text:#Programm Fehlermeldung:#Modul:#Benutzername:");

constexpr int kErrorReportPage = 6;
constexpr int kHiddenTab = 7;

frmSupportKit::ActionDialogAnswerer &actionAnswerer()
{
    static frmSupportKit::ActionDialogAnswerer answerer;
    return answerer;
}

// The page the action dialog's choice opens; anything unrecognised keeps page 10.
int pageForAction(int action)
{
    switch (action) {
    case 0:
        return 6;
    case 1:
        return 0;
    default:
        return 10;
    }
}
} // namespace

frmSupportKit::frmSupportKit(QWidget *parent)
    : QMainWindow(parent), m_checks(new NetworkChecks(this)), m_logs(new LogFileLoader(this)),
      ui(std::make_unique<Ui::frmSupportKit>())
{
    // The language Form_Load will most likely choose (Pawnsketch's setting, else the
    // system's): its files are parsed while the window is built.
    const QString setting = ReadIniString(QStringLiteral("Sprache"), QStringLiteral("Sprache"), QString(),
                                          installPath(QStringLiteral("ini/pawnsketch.ini")));
    preloadLanguageFiles(setting.isEmpty() ? defaultLanguageFromCountry(platform().countryCode()) : setting);
    initImages();
    ui->setupUi(this);
    // The page list shows caption and description; the page number is only for the code.
    ui->ListView1->setColumnHidden(1, true);

    connectControls();
}

frmSupportKit::~frmSupportKit()
{
    m_checks->cancel();
    setWaitCursor(false);
}

void frmSupportKit::setWaitCursor(bool wait)
{
    if (wait == m_waitCursor)
        return;
    m_waitCursor = wait;
    if (wait)
        QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    else
        QGuiApplication::restoreOverrideCursor();
}

QWidget *frmSupportKit::page(int tab)
{
    if (QWidget *built = m_pages.value(tab))
        return built;
    QWidget *built = buildPage(tab);
    if (!built)
        return nullptr;
    m_pages.insert(tab, built);
    // Each page sits in a frameless scroll area: on a screen smaller than the window's
    // minimum the page scrolls instead of being cut off.
    auto *scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("scrollPage_%1").arg(tab));
    scroll->setFrameShape(QFrame::NoFrame);
    // Not a stop of its own for Tab: it scrolls to whichever of its controls has the focus.
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidgetResizable(true);
    ui->SSTab19->widget(tab)->layout()->addWidget(scroll);
    // In a window already shown the layout would show it only on the next turn of the event
    // loop: the page is to be there for whatever follows its building.
    scroll->show();
    // The page goes into its scroll area when its tab is shown: the scroll area lays out the
    // page's texts at once to size itself. Until then it waits there hidden, its controls
    // already usable by the code.
    built->setParent(scroll);
    built->hide();
    m_unplacedPages.insert(tab, built);
    preparePage(tab);
    return built;
}

// Building every page before the window showed took a third of the start-up; each is built
// when it is first opened or asked for.
QWidget *frmSupportKit::buildPage(int tab)
{
    PageHost &host = *this;
    switch (tab) {
    case 0:
        return m_pageStartOptions = new PageStartOptions(host);
    case 1:
        return m_pageLogFiles = new PageLogFiles(host, *m_logs);
    case 2:
        return m_pageUpdate = new PageUpdate(host);
    case 3:
        return m_pageBeta = new PageBeta(host);
    case 4:
        return m_pageRepair = new PageRepair(host);
    case 5:
        return m_pageFonts = new PageFonts(host);
    case kErrorReportPage:
        return m_pageContactSupport = new PageContactSupport(host, *m_logs);
    case 8:
        return m_pageMailHelp = new PageMailHelp(host);
    case 9:
        return m_pageVersionInfo = new PageVersionInfo(host);
    case 10:
        return m_pageFeedback = new PageFeedback(host);
    case 11:
        return m_pageOverview = new PageOverview(host);
    default: // the unused tab stays empty
        return nullptr;
    }
}

void frmSupportKit::preparePage(int tab)
{
    // Tab goes from the tabs into the page and from there on to the buttons below it, as if
    // the page had been made with the window's own controls.
    QWidget *built = m_pages.value(tab);
    QWidgetList chain;
    for (QWidget *w = nextInFocusChain(); w != this; w = w->nextInFocusChain()) {
        // Qt moves a control together with its inner parts and ignores what takes no focus.
        if (built->isAncestorOf(w) && w->focusPolicy() != Qt::NoFocus)
            chain << w;
    }
    // Behind the tab bar's own scroll buttons.
    QTabBar *bar = ui->SSTab19->tabBar();
    QWidget *previous = bar;
    while (bar->isAncestorOf(previous->nextInFocusChain()) &&
           previous->nextInFocusChain()->focusPolicy() != Qt::NoFocus)
        previous = previous->nextInFocusChain();
    for (QWidget *w : std::as_const(chain)) {
        setTabOrder(previous, w);
        previous = w;
    }

    // The language, status and start arguments the page would have got at start-up.
    localiseForm(built);
    pageLanguageChanged(tab);
    showStatusOnPages(GetFileInfo(installPath(QStringLiteral("pawnsketch.exe"))), tab);
    if (tab == 0 && m_pawnsketchRunning)
        m_pageStartOptions->setPawnsketchRunning();
    QWidget *tabPage = ui->SSTab19->widget(tab);
    nameControls(tabPage);
    assignAccessKeys(windowControls(), {tabPage});
}

void frmSupportKit::pageLanguageChanged(int tab)
{
    switch (tab) {
    case 1:
        m_pageLogFiles->languageChanged();
        break;
    case 2:
        m_pageUpdate->languageChanged();
        break;
    case 3:
        m_pageBeta->languageChanged();
        break;
    case 4:
        m_pageRepair->languageChanged();
        break;
    case kErrorReportPage:
        m_pageContactSupport->languageChanged();
        break;
    case 10:
        m_pageFeedback->languageChanged();
        break;
    default:
        break;
    }
}

void frmSupportKit::placePage(int tab)
{
    page(tab);
    QWidget *placed = m_unplacedPages.take(tab);
    if (auto *scroll = placed ? qobject_cast<QScrollArea *>(placed->parentWidget()) : nullptr)
        scroll->setWidget(placed);
}

void frmSupportKit::setActionDialogAnswererForTesting(ActionDialogAnswerer answerer)
{
    actionAnswerer() = std::move(answerer);
}

void frmSupportKit::connectControls()
{
    connect(ui->SSTab19, &QTabWidget::currentChanged, this, &frmSupportKit::placePage);
    connect(ui->ListView1, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem *item) { ListView1_ItemClick(item); });
    // Enter in the list opens the page as a click does.
    connect(ui->ListView1, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem *item) { ListView1_ItemClick(item); });
    // A tab chosen on the tab bar itself takes the heading and the list along.
    connect(ui->SSTab19, &QTabWidget::currentChanged, this, &frmSupportKit::followTab);
    connect(ui->scrollbar, &QScrollBar::valueChanged, this, &frmSupportKit::scrollbar_Change);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(ui->cmdInet, &QPushButton::clicked, this, &frmSupportKit::cmdInet_Click);
    connect(ui->cmdScreenshot, &QPushButton::clicked, this,
            [this] { programState().clipboardOk = copyScreenshotToClipboard(this); });
    // The help of the page shown: hlpidx.ini names its topic by the tab's key.
    connect(ui->cmdHelp, &QPushButton::clicked, this, [this] {
        ShowHelp(1, helpContextId(QStringLiteral("S19T%1").arg(ui->SSTab19->currentIndex())), this);
    });
    connect(ui->optLng_0, &QRadioButton::clicked, this, &frmSupportKit::optLng_Click);
    connect(ui->optLng_1, &QRadioButton::clicked, this, &frmSupportKit::optLng_Click);
    // Escape ends the program at once, whichever control has the focus.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &frmSupportKit::endProgram);

    connect(m_checks, &NetworkChecks::connectionTested, this, &frmSupportKit::showConnectionState);
    connect(m_checks, &NetworkChecks::serverVersionFound, this, &frmSupportKit::showServerVersion);
    connect(m_checks, &NetworkChecks::serverVersionRefused, this,
            [this](const QString &status) { statusBar()->showMessage(status); });
    connect(m_checks, &NetworkChecks::connectionReport, this, [this](bool connected) {
        const ConnectionTestMessage msg = connectionTestMessage(connected);
        ShowMsg(1, msg.key, msg.style, msg.germanDefault, this, {msg.var1},
                connected ? QString() : connectionCauseParagraph(lastConnectionDiagnosis()));
    });
    // The box of a report and any pending message wait until the checks have unwound.
    connect(m_checks, &NetworkChecks::finished, this, &frmSupportKit::onChecksFinished, Qt::QueuedConnection);
}

bool frmSupportKit::Form_Load(const QString &commandLine)
{
    GetCommandItems(commandLine, m_commandItems);
    programState().commandItems = m_commandItems;
    setWindowTitle(Config::windowCaption());
    programState().defaultLanguage = defaultLanguageFromCountry(platform().countryCode());
    languageState().defaultCode = programState().defaultLanguage;

    loadLanguage();

    // Fit the window to the screen: the layouts shrink down to the pages' minimum.
    if (const QScreen *s = screen()) {
        const QSize available = s->availableGeometry().size();
        resize(QSize(1024, 700).boundedTo(available));
    }

    Initialize();
    return m_exitCode == 0 && !m_ending;
}

void frmSupportKit::loadLanguage()
{
    m_loading = true;
    const QString code = chooseFormLanguage(this);
    InitLngFiles(code);
    m_languageCode = ChangeLanguage(code, objectName(), m_languageByte);

    ui->lblLanguage->setText(lngText(QStringLiteral("T64"), kLabelListDefault));
    const QString second = lngText(QStringLiteral("T62"), QString());
    if (!second.isEmpty())
        ui->lblLanguage2->setText(second);
    for (auto it = m_pages.cbegin(); it != m_pages.cend(); ++it)
        pageLanguageChanged(it.key());
    showConnectionToolTip();
    updateAccessibility();
    m_loading = false;

    if (pendingMessage().isSet())
        ShowPendingMessage(isVisible() ? this : nullptr);
}

QString frmSupportKit::labelList() const
{
    return ui->lblLanguage->text();
}

QString frmSupportKit::counterUnit() const
{
    return ui->Label66->text();
}

void frmSupportKit::Initialize()
{
    if (!FileExists(installPath(QStringLiteral("pawnsketch.exe")))) {
        ShowMsg(1, QString(), 0,
                QStringLiteral(
                    "Support-Kit mu\u00df sich im Installationsordner von Pawnsketch befinden!@Das programm "
                    "wird beendet...#") +
                    QCoreApplication::applicationName());
        m_exitCode = 1;
        return;
    }

    refreshStatus();
    // Logs can be large: the window does not wait for them. Their reading starts once the
    // event loop runs, after the window has been shown: a thread decoding 40 MB beside
    // the window's own start-up slowed it on a busy machine.
    QTimer::singleShot(0, m_logs, &LogFileLoader::start);

    // The checks must not hold up the window: it appears at once with the "not tested"
    // picture, and their results arrive when they end.
    setConnectionPicture(QStringLiteral("www_unconnected"));
    m_checks->startStartupChecks();

    ui->SSTab19->setTabVisible(kHiddenTab, false);
    FillListWithTABCaptions();

    if (!handleStartArguments())
        m_ending = true;
}

void frmSupportKit::refreshStatus()
{
    const FileInfo info = GetFileInfo(installPath(QStringLiteral("pawnsketch.exe")));
    ui->lblBuild_0->setText(versionWithBuild(info));
    lblBuild_Change();
    showStatusOnPages(info);
}

void frmSupportKit::showStatusOnPages(const FileInfo &info, int onlyTab)
{
    const auto wanted = [onlyTab](int tab, const QWidget *built) {
        return built && (onlyTab < 0 || onlyTab == tab);
    };
    if (wanted(9, m_pageVersionInfo))
        m_pageVersionInfo->showProgramFile(info);
    if (!wanted(11, m_pageOverview) && !wanted(kErrorReportPage, m_pageContactSupport))
        return;
    const InstallationStatus status = readInstallationStatus(m_languageCode);
    if (wanted(11, m_pageOverview))
        m_pageOverview->showStatus(status);
    if (wanted(kErrorReportPage, m_pageContactSupport))
        m_pageContactSupport->showStatus(status);
}

bool frmSupportKit::handleStartArguments()
{
    ProgramState &state = programState();
    if (m_commandItems.isEmpty()) {
        state.startPage = 10;
        return runActionDialog();
    }
    for (qsizetype i = 0; i < m_commandItems.size(); ++i) {
        const QString item = m_commandItems[i].toLower();
        if (item == QLatin1String("1")) {
            // Sent by a running Pawnsketch: it must not be started a second time.
            m_pawnsketchRunning = true;
            if (m_pageStartOptions)
                m_pageStartOptions->setPawnsketchRunning();
            ui->SSTab19->setTabToolTip(1, QString());
            ui->tabPage_1->setProperty("pawnsketchRunning", true);
            state.startPage = 1;
        } else if (item == QLatin1String("/e")) {
            ui->SSTab19->setCurrentIndex(kErrorReportPage);
            state.startPage = kErrorReportPage;
            const ErrorRecord record = parseErrorRecord(m_commandItems.value(i + 1));
            page(kErrorReportPage);
            m_pageContactSupport->showErrorRecord(record.userName, errorRecordText(record, labelList()));
        }
    }
    return true;
}

bool frmSupportKit::runActionDialog()
{
    ProgramState &state = programState();
    frmSelectAction dialog;
    dialog.Form_Load();
    if (actionAnswerer())
        actionAnswerer()(dialog);
    else
        dialog.exec();
    if (state.selectActionCancelled)
        return false;

    page(kErrorReportPage);
    m_pageContactSupport->setAppendLogs(dialog.appendStartLog(), dialog.appendErrorLog());
    const bool english = dialog.englishChosen();
    if (english != ui->optLng_1->isChecked()) {
        (english ? ui->optLng_1 : ui->optLng_0)->setChecked(true);
        optLng_Click();
    }
    state.startPage = pageForAction(state.selectedAction);
    return true;
}

void frmSupportKit::FillListWithTABCaptions()
{
    QTreeWidget *list = ui->ListView1;
    list->clear();
    ui->lstTemp->clear();

    QString tag = ui->SSTab19->property("tag").toString();
    GetLngFile(tag);
    const QString file = languageFilePath(languageState().lastFile);
    const int tabs = ui->SSTab19->count();
    for (int i = 0; i < tabs && i < 256; ++i) {
        const QString value =
            ReadIniString(languageState().code, QStringLiteral("S%1T%2").arg(tag).arg(i), QString(), file);
        // A value ending in "|" adds no line and shifts the later descriptions up; the page
        // descriptions in the language files are written with that in mind.
        const QString description =
            value.contains(u'|') ? GetField(value, 2, QStringLiteral("|")) : QStringLiteral(" ");
        if (!description.isEmpty())
            ui->lstTemp->addItem(description);
    }
    for (int i = 0; i < tabs; ++i) {
        if (!ui->SSTab19->isTabVisible(i))
            continue;
        auto *item = new QTreeWidgetItem(list);
        item->setText(0, ui->SSTab19->tabText(i));
        item->setText(1, QString::number(i));
        if (i < ui->lstTemp->count()) {
            item->setText(2, ui->lstTemp->item(i)->text());
            // The list is narrow: the whole description is there on pointing at it.
            item->setToolTip(0, ui->lstTemp->item(i)->text().trimmed());
            item->setToolTip(2, item->toolTip(0));
        }
    }
    // Each description whole, the list scrolling sideways where it is wider than the list.
    list->resizeColumnToContents(0);
    list->resizeColumnToContents(2);
    ui->scrollbar->blockSignals(true);
    ui->scrollbar->setRange(0, qMax(0, list->topLevelItemCount() - 1));
    ui->scrollbar->blockSignals(false);

    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        if (list->topLevelItem(row)->text(1).toInt() == programState().startPage)
            list->setCurrentItem(list->topLevelItem(row));
    }
}

void frmSupportKit::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    // The start page first: the page the tabs were designed with is not built on the way.
    if (!m_activated) {
        m_activated = true;
        Form_Activate();
    }
    placePage(ui->SSTab19->currentIndex());
}

void frmSupportKit::Form_Activate()
{
    showPage(programState().startPage);
    if (!networkChecksRunning())
        showPendingWhenVisible();
}

bool frmSupportKit::networkChecksRunning() const
{
    return m_checks->isRunning();
}

void frmSupportKit::cmdInet_Click()
{
    // Whatever still runs (the start-up checks, say) is replaced: the user asked now.
    ui->cmdInet->setEnabled(false);
    setWaitCursor(true);
    m_checks->startButtonChecks();
}

void frmSupportKit::onChecksFinished()
{
    // Queued: newer checks may have started in the meantime; they end this one's turn.
    if (m_checks->isRunning())
        return;
    setWaitCursor(false);
    ui->cmdInet->setEnabled(true);
    showPendingWhenVisible();
}

void frmSupportKit::showPendingWhenVisible()
{
    // A message prepared by a check that ended before the window was shown waits for it.
    if (isVisible() && pendingMessage().isSet())
        ShowPendingMessage(this);
}

void frmSupportKit::showConnectionState(bool connected)
{
    setConnectionPicture(connected ? QStringLiteral("www_connected") : QStringLiteral("www_disconnected"));
    m_connectionTested = true;
    showConnectionToolTip();
}

void frmSupportKit::showConnectionToolTip()
{
    if (m_connectionTested)
        ui->cmdInet->setToolTip(connectionToolTip(programState().connected, lastConnectionDiagnosis()));
}

void frmSupportKit::setConnectionPicture(const QString &picture)
{
    ui->cmdInet->setIcon(QIcon(QStringLiteral(":/images/%1.svg").arg(picture)));
    // Which picture is shown, for those who cannot look at it.
    ui->cmdInet->setProperty("picture", picture);
}

void frmSupportKit::showServerVersion(const QString &version)
{
    ui->lblFileInfo_3->setText(version);
    ui->lblBuild_1->setText(version);
    // A signed version puts an earlier refusal's reason out of date.
    statusBar()->clearMessage();
    lblBuild_Change();
}

void frmSupportKit::lblBuild_Change()
{
    // Any difference shows: the comparison knows nothing of older or newer. Until the
    // server has named its version there is nothing to compare with, and a red installed
    // version would only alarm the user.
    const bool differ =
        !ui->lblBuild_1->text().isEmpty() && buildsDiffer(ui->lblBuild_0->text(), ui->lblBuild_1->text());
    ui->lblBuild_0->setStyleSheet(differ ? QStringLiteral("color: rgb(255, 0, 0);") : QString());
}

void frmSupportKit::showPage(int page)
{
    QTreeWidget *list = ui->ListView1;
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = list->topLevelItem(row);
        if (item->text(1).toInt() == page) {
            list->setCurrentItem(item);
            list->scrollToItem(item);
            ListView1_ItemClick(item);
            return;
        }
    }
}

int frmSupportKit::currentPage() const
{
    return ui->SSTab19->currentIndex();
}

void frmSupportKit::ListView1_ItemClick(QTreeWidgetItem *item)
{
    if (!item)
        return;
    // The heading shows an ampersand in a caption as it is, never as an access key.
    QString heading = item->text(0);
    ui->txtlabel->setText(heading.replace(QLatin1String("&&"), QLatin1String("&")));
    ui->SSTab19->setCurrentIndex(item->text(1).toInt());
    const int row = ui->ListView1->indexOfTopLevelItem(item);
    ui->scrollbar->blockSignals(true);
    ui->scrollbar->setValue(row);
    ui->scrollbar->blockSignals(false);
}

void frmSupportKit::followTab(int tab)
{
    QTreeWidget *list = ui->ListView1;
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = list->topLevelItem(row);
        if (item->text(1).toInt() != tab)
            continue;
        if (list->currentItem() != item) {
            list->setCurrentItem(item);
            list->scrollToItem(item);
        }
        QString heading = item->text(0);
        ui->txtlabel->setText(heading.replace(QLatin1String("&&"), QLatin1String("&")));
        // Screen readers announce the tab control by the page it shows.
        ui->SSTab19->setAccessibleName(ui->txtlabel->text().trimmed());
        ui->scrollbar->blockSignals(true);
        ui->scrollbar->setValue(row);
        ui->scrollbar->blockSignals(false);
        break;
    }
    // Captions the page changed since (a version on a button) get their access keys back.
    if (!m_loading)
        assignAccessKeys(windowControls(), {ui->SSTab19->widget(tab)});
}

QList<QWidget *> frmSupportKit::windowControls() const
{
    return {ui->cmdInet,  ui->cmdScreenshot, ui->cmdHelp, ui->cmdCancel,
            ui->optLng_0, ui->optLng_1,      ui->lblPages};
}

void frmSupportKit::updateAccessibility()
{
    QList<QWidget *> pages;
    for (int tab = 0; tab < ui->SSTab19->count(); ++tab) {
        pages << ui->SSTab19->widget(tab);
        nameControls(pages.last());
    }
    assignAccessKeys(windowControls(), pages);
    // An item view takes no name from its label by itself.
    ui->ListView1->setAccessibleName(withoutAccessKey(ui->lblPages->text()));
    // Qt names the tab bar's scroll buttons once, in the language it started with.
    for (QObject *child : ui->SSTab19->tabBar()->children()) {
        auto *button = qobject_cast<QToolButton *>(child);
        if (button && button->objectName() == QLatin1String("ScrollLeftButton"))
            button->setAccessibleName(QTabBar::tr("Scroll Left"));
        else if (button && button->objectName() == QLatin1String("ScrollRightButton"))
            button->setAccessibleName(QTabBar::tr("Scroll Right"));
    }
}

void frmSupportKit::scrollbar_Change(int value)
{
    QTreeWidgetItem *item = ui->ListView1->topLevelItem(value);
    if (!item)
        return;
    ui->ListView1->setCurrentItem(item);
    ui->ListView1->scrollToItem(item);
    ListView1_ItemClick(item);
}

void frmSupportKit::optLng_Click()
{
    if (m_loading)
        return;
    const int tab = ui->SSTab19->currentIndex();
    loadLanguage();
    refreshStatus(); // dates in the language's pattern
    FillListWithTABCaptions();
    showPage(tab);
}

void frmSupportKit::setBusy(bool busy)
{
    page(4);
    m_pageRepair->setBusy(busy);
}

bool frmSupportKit::isBusy() const
{
    return m_pageRepair && m_pageRepair->isBusy();
}

void frmSupportKit::closeEvent(QCloseEvent *event)
{
    if (!m_ending && isBusy()) {
        event->ignore();
        return;
    }
    event->accept();
}

void frmSupportKit::endProgram()
{
    m_ending = true;
    // A check that ends after this must not open a box on a window that is going.
    m_checks->cancel();
    setWaitCursor(false);
    close();
    QCoreApplication::exit(0);
}
