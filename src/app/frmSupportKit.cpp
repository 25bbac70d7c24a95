#include "app/frmSupportKit.h"

#include "app/PageOverview.h"
#include "app/PageStartOptions.h"
#include "app/PageVersionInfo.h"
#include "core/Images.h"
#include "fonts/PageFonts.h"
#include "maintenance/PageBeta.h"
#include "maintenance/PageRepair.h"
#include "maintenance/PageUpdate.h"
#include "support/PageContactSupport.h"
#include "support/PageFeedback.h"
#include "support/PageLogFiles.h"
#include "support/PageMailHelp.h"

#include "app/CommandLine.h"
#include "app/frmSelectAction.h"
#include "core/Config.h"
#include "core/Locale.h"
#include "core/Platform.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "localisation/PendingMessage.h"
#include "localisation/ShowMsg.h"
#include "maintenance/FileInfo.h"
#include "maintenance/UpdateCheck.h"
#include "net/ConnectionTest.h"

#include "ui_PageContactSupport.h"
#include "ui_PageOverview.h"
#include "ui_PageStartOptions.h"
#include "ui_PageUpdate.h"
#include "ui_frmSelectAction.h"
#include "ui_frmSupportKit.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>

namespace {
const QString kLabelListDefault =
    QStringLiteral("Start-Logdatei#Fehler-Logdatei#Fehlerbeschreibung#Fehlernummer:#Fehlertext:#Parameter:#"
                   "Sonstige Fehlermeldung / "
                   "erg\u00e4nzender Text:#Programm Fehlermeldung:#Modul:#Benutzername:");
const QString kMailHintDefault = QStringLiteral(
    "Wenn sich kein \"Neue Mail\"-Fenster automatisch \u00f6ffnet, starten Sie bitte Ihr Mail-Programm und "
    "f\u00fcgen Sie mit <Strg> + <v> den Inhalt aus der Zwischenablage in Ihren Mail-Text ein.");
const QString kSendButtonDefault =
    QStringLiteral("<var1> in Zwischenablage kopieren und per E-Mail an Support senden");

constexpr int kErrorReportPage = 6;
constexpr int kHiddenTab = 7;

frmSupportKit::ActionDialogAnswerer &actionAnswerer()
{
    static frmSupportKit::ActionDialogAnswerer answerer;
    return answerer;
}

// The page each task of the overview leads to.
int pageForTask(int task)
{
    switch (task) {
    case 0:
        return 6; // report a program error
    case 1:
        return 0; // start problems
    case 2:
        return 4; // restore the program file
    case 3:
        return 5; // chess fonts
    default:
        return 10; // feedback and everything else
    }
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

void fillVar1(QWidget *scope, const QString &arrayName, const QString &toolTip, const QString &value)
{
    const QList<QPushButton *> buttons = scope->findChildren<QPushButton *>();
    for (QPushButton *b : buttons) {
        if (!b->objectName().startsWith(arrayName + u'_'))
            continue;
        b->setToolTip(QString(toolTip).replace(QLatin1String("<var1>"), value));
        b->setText(b->text().replace(QLatin1String("<var1>"), value));
    }
}
} // namespace

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

    connectControls();
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

void frmSupportKit::setActionDialogAnswererForTesting(ActionDialogAnswerer answerer)
{
    actionAnswerer() = std::move(answerer);
}

void frmSupportKit::connectControls()
{
    connect(ui->ListView1, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem *item) { ListView1_ItemClick(item); });
    connect(ui->scrollbar, &QScrollBar::valueChanged, this, &frmSupportKit::scrollbar_Change);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(ui->cmdInet, &QPushButton::clicked, this, &frmSupportKit::cmdInet_Click);
    connect(ui->optLng_0, &QRadioButton::clicked, this, &frmSupportKit::optLng_Click);
    connect(ui->optLng_1, &QRadioButton::clicked, this, &frmSupportKit::optLng_Click);
    connect(m_pageOverview->form()->cmdShowPage, &QPushButton::clicked, this,
            &frmSupportKit::cmdShowPage_Click);
    m_pageContactSupport->form()->Picture1->installEventFilter(this);
    // Escape ends the program at once, whichever control has the focus.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &frmSupportKit::endProgram);
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
    const QString list = ui->lblLanguage->text();
    const QString sendTip = lngText(QStringLiteral("T31"), kSendButtonDefault);
    m_pageContactSupport->form()->Text2->setPlainText(lngText(QStringLiteral("T30"), kMailHintDefault));
    const QString second = lngText(QStringLiteral("T62"), QString());
    if (!second.isEmpty())
        ui->lblLanguage2->setText(second);
    const QString hash = QStringLiteral("#");
    fillVar1(this, QStringLiteral("cmdSendStartlog"), sendTip, GetField(list, 1, hash));
    fillVar1(this, QStringLiteral("cmdSendErrlog"), sendTip, GetField(list, 2, hash));
    fillVar1(this, QStringLiteral("cmdErrReport"), sendTip, GetField(list, 3, hash));

    auto *contact = m_pageContactSupport->form();
    contact->Frame13->setTitle(GetField(list, 1, hash));
    contact->Frame14->setTitle(GetField(list, 2, hash));
    contact->lblAdditionalErrInfo->setText(GetField(list, 7, hash));
    findChild<QWidget *>(QStringLiteral("Frame2"))->setProperty("title", GetField(list, 1, hash));
    findChild<QWidget *>(QStringLiteral("Frame4"))->setProperty("title", GetField(list, 2, hash));
    // The character counters show their count with the localised word kept in Label66.
    for (const char *counter : {"Label65", "Label63"}) {
        if (auto *label = findChild<QLabel *>(QLatin1String(counter)))
            label->setText(QString::number(label->text().section(u' ', 0, 0).toInt()) + u' ' +
                           ui->Label66->text());
    }
    m_loading = false;

    if (pendingMessage().isSet())
        ShowPendingMessage(isVisible() ? this : nullptr);
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

    const FileInfo info = GetFileInfo(installPath(QStringLiteral("pawnsketch.exe")));
    const QString versionText = info.Version + QStringLiteral(" Build ") + info.Build;
    ui->lblBuild_0->setText(versionText);
    lblBuild_Change();
    for (auto [name, text] :
         {std::pair{"lblFileInfo_0", info.FileName}, std::pair{"lblFileInfo_1", versionText},
          std::pair{"lblFileInfo_2", QDir::toNativeSeparators(programFolder())}}) {
        if (auto *label = findChild<QLabel *>(QLatin1String(name)))
            label->setText(text);
    }

    // The checks must not hold up the window: it appears at once with the "not tested"
    // picture, and their results arrive when they end.
    setConnectionPicture(QStringLiteral("www_unconnected"));
    startNetworkChecks();

    ui->SSTab19->setTabVisible(kHiddenTab, false);
    FillListWithTABCaptions();

    auto *start = m_pageStartOptions->form();
    start->optStartingMode_1->setChecked(true);
    for (QCheckBox *box : {start->Check1, start->Check3, start->Check4, start->Check5, start->Check7,
                           start->Check8, start->Check9})
        box->setEnabled(false);

    if (!handleStartArguments())
        m_ending = true;
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
            m_pageStartOptions->form()->cmdOK->setEnabled(false);
            ui->SSTab19->setTabToolTip(1, QString());
            ui->tabPage_1->setProperty("pawnsketchRunning", true);
            state.startPage = 1;
        } else if (item == QLatin1String("/e")) {
            ui->SSTab19->setCurrentIndex(kErrorReportPage);
            state.startPage = kErrorReportPage;
            const ErrorRecord record = parseErrorRecord(m_commandItems.value(i + 1));
            auto *contact = m_pageContactSupport->form();
            if (!record.userName.isEmpty())
                contact->lblUserName->setText(record.userName);
            contact->tbErrorMessage->setPlainText(errorRecordText(record, ui->lblLanguage->text()));
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

    auto *dlg = dialog.form();
    auto *contact = m_pageContactSupport->form();
    contact->cbAppendLogfile_0->setChecked(dlg->cbAppendLogfile_0->isChecked());
    contact->cbAppendLogfile_1->setChecked(dlg->cbAppendLogfile_1->isChecked());
    const bool english = dlg->optLng_1->isChecked();
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
    list->resizeColumnToContents(0);
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
    if (!m_activated) {
        m_activated = true;
        Form_Activate();
    }
}

void frmSupportKit::Form_Activate()
{
    showPage(programState().startPage);
    if (!networkChecksRunning())
        showPendingWhenVisible();
}

void frmSupportKit::startNetworkChecks()
{
    m_startUpdateCheck = new UpdateCheck(this);
    m_startConnectionTest = new ConnectionTest(this);
    connect(m_startUpdateCheck, &UpdateCheck::finished, this, [this](const UpdateCheckResult &result) {
        showServerVersion(result);
        m_startConnectionTest->start();
    });
    connect(m_startConnectionTest, &ConnectionTest::finished, this, [this](bool connected) {
        setConnectionPicture(connected ? QStringLiteral("www_connected")
                                       : QStringLiteral("www_disconnected"));
        showPendingWhenVisible();
    });
    m_startUpdateCheck->start();
}

bool frmSupportKit::networkChecksRunning() const
{
    return (m_startUpdateCheck && m_startUpdateCheck->isRunning()) ||
           (m_startConnectionTest && m_startConnectionTest->isRunning());
}

void frmSupportKit::showPendingWhenVisible()
{
    // A message prepared by a check that ended before the window was shown waits for it.
    if (isVisible() && pendingMessage().isSet())
        ShowPendingMessage(this);
}

void frmSupportKit::setConnectionPicture(const QString &picture)
{
    ui->cmdInet->setIcon(QIcon(QStringLiteral(":/images/%1.svg").arg(picture)));
    // Which picture is shown, for those who cannot look at it.
    ui->cmdInet->setProperty("picture", picture);
}

void frmSupportKit::showServerVersion(const UpdateCheckResult &result)
{
    if (!result.found)
        return;
    ui->lblFileInfo_3->setText(result.serverVersion);
    ui->lblBuild_1->setText(result.serverVersion);
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

void frmSupportKit::cmdInet_Click()
{
    // The test keeps the window alive while it waits; a second click must not start another.
    ui->cmdInet->setEnabled(false);
    const bool connected = CheckINetConnection(false);
    setConnectionPicture(connected ? QStringLiteral("www_connected") : QStringLiteral("www_disconnected"));
    if (connected) {
        showServerVersion(CheckForUpdate());
    } else {
        const bool second = CheckINetConnection(false);
        const ConnectionTestMessage msg = connectionTestMessage(second);
        ShowMsg(1, msg.key, msg.style, msg.germanDefault, this, {msg.var1});
    }
    ui->cmdInet->setEnabled(true);
    if (pendingMessage().isSet())
        ShowPendingMessage(this);
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

void frmSupportKit::scrollbar_Change(int value)
{
    QTreeWidgetItem *item = ui->ListView1->topLevelItem(value);
    if (!item)
        return;
    ui->ListView1->setCurrentItem(item);
    ui->ListView1->scrollToItem(item);
    ListView1_ItemClick(item);
}

bool frmSupportKit::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_pageContactSupport->form()->Picture1 && event->type() == QEvent::MouseButtonRelease) {
        Picture1_Click();
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void frmSupportKit::Picture1_Click()
{
    // Enlarged, the report box takes the room of everything beside and above it on the page.
    auto *contact = m_pageContactSupport->form();
    m_logExpanded = !m_logExpanded;
    for (QWidget *w : std::initializer_list<QWidget *>{
             contact->Frame13, contact->Frame14, contact->Text2, contact->cmdErrReport_3, contact->Label36,
             contact->tbErrorMessage, contact->lblAdditionalErrInfo, contact->tbAdditionalText})
        w->setVisible(!m_logExpanded);
    contact->Picture1->setPixmap(
        QIcon(m_logExpanded ? QStringLiteral(":/images/collapse.svg") : QStringLiteral(":/images/expand.svg"))
            .pixmap(24, 24));
}

void frmSupportKit::optLng_Click()
{
    if (m_loading)
        return;
    const int tab = ui->SSTab19->currentIndex();
    auto *backups = m_pageUpdate->form()->List1;
    const QString backup = backups->currentItem() ? backups->currentItem()->text() : QString();

    loadLanguage();
    FillListWithTABCaptions();

    showPage(tab);
    if (!backup.isEmpty()) {
        const QList<QListWidgetItem *> found = backups->findItems(backup, Qt::MatchExactly);
        if (!found.isEmpty()) {
            backups->setCurrentItem(found.first());
            backups->scrollToItem(found.first());
        }
    }
}

void frmSupportKit::cmdShowPage_Click()
{
    const int task = GetSelectedItem(1, this, QStringLiteral("optShowPage")).toInt();
    if (task < 0)
        return;
    showPage(pageForTask(task));
}

void frmSupportKit::setBusy(bool busy)
{
    m_pageRepair->findChild<QPushButton *>(QStringLiteral("Command2"))->setProperty("busyMarker", busy);
}

bool frmSupportKit::isBusy() const
{
    return m_pageRepair->findChild<QPushButton *>(QStringLiteral("Command2"))
        ->property("busyMarker")
        .toBool();
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
    close();
    QCoreApplication::exit(0);
}
