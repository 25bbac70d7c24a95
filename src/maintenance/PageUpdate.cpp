#include "maintenance/PageUpdate.h"

#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "dialogs/FileDialogs.h"
#include "localisation/ShowMsg.h"
#include "maintenance/Backups.h"
#include "maintenance/FileInfo.h"
#include "maintenance/ProgramFileActions.h"

#include "ui_PageUpdate.h"

#include <QDir>

namespace {
// The dialog offers every file: support may send the update under any name.
constexpr int kAllFiles = 22;

QString captionWithoutColon(const QString &caption)
{
    QString text = caption.trimmed();
    if (text.endsWith(u':'))
        text.chop(1);
    return text;
}
} // namespace

PageUpdate::PageUpdate(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageUpdate>())
{
    ui->setupUi(this);
    m_installCaption = ui->cmdUpdate->text();
    connect(ui->Command3, &QPushButton::clicked, this, &PageUpdate::Command3_Click);
    connect(ui->cmdUpdate, &QPushButton::clicked, this, &PageUpdate::cmdUpdate_Click);
    connect(ui->List1, &QListWidget::itemClicked, this, &PageUpdate::List1_Click);
    // Stepping through the list with the keys shows each version, without the box.
    connect(ui->List1, &QListWidget::currentRowChanged, this, &PageUpdate::showBackupVersion);
    connect(ui->Command1, &QPushButton::clicked, this, &PageUpdate::Command1_Click);
    fillBackupList();
}

PageUpdate::~PageUpdate() = default;

void PageUpdate::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Backups may have come or gone while the page was hidden.
    fillBackupList();
}

void PageUpdate::languageChanged()
{
    // The last line: a language file without the key leaves the version line in place.
    m_installCaption = ui->cmdUpdate->text().section(u'\n', -1);
    // Localising put "not selected" back over the picked file.
    if (!m_updateFile.isEmpty())
        showPathInLabel(ui->Label4, m_updateFile);
    showUpdateCaption();
}

void PageUpdate::fillBackupList()
{
    const QString current = ui->List1->currentItem() ? ui->List1->currentItem()->text() : QString();
    ui->List1->clear();
    ui->List1->addItems(restorableBackups(installPath(QStringLiteral("backup"))));
    const QList<QListWidgetItem *> same = ui->List1->findItems(current, Qt::MatchExactly);
    ui->List1->setCurrentRow(same.isEmpty() ? 0 : ui->List1->row(same.first()));
    showBackupVersion();
}

void PageUpdate::showBackupVersion()
{
    const QListWidgetItem *item = ui->List1->currentItem();
    ui->Label53->setText(
        item ? versionWithBuild(GetFileInfo(installPath(QStringLiteral("backup/") + item->text())))
             : QString());
    ui->Command1->setEnabled(item != nullptr);
}

void PageUpdate::List1_Click()
{
    const QListWidgetItem *item = ui->List1->currentItem();
    if (!item)
        return;
    // The folder and the name meet without a separator: the box has always shown it so.
    ShowMsg(1, QString(), 0, QStringLiteral("<var1>"), this,
            {messageLiteral(QDir::toNativeSeparators(programFolder()) + QStringLiteral("\\backup") +
                            item->text())});
    showBackupVersion();
}

void PageUpdate::Command1_Click()
{
    // Asks and restores nothing: the restore itself is on the repair page.
    IsProcessRunning(QStringLiteral("pawnsketch.exe"));
}

void PageUpdate::Command3_Click()
{
    const QString path =
        SelectFile(kAllFiles, this, captionWithoutColon(ui->lblUpdateFileCap->text()), programFolder());
    if (path.isEmpty())
        return;
    m_updateFile = path;
    showPathInLabel(ui->Label4, path);
    ui->cmdUpdate->setEnabled(true);
    m_updateVersion = versionWithBuild(GetFileInfo(path));
    ui->Label52->setText(m_updateVersion);
    showUpdateCaption();
}

void PageUpdate::showUpdateCaption()
{
    ui->cmdUpdate->setText(m_updateFile.isEmpty() ? m_installCaption
                                                  : m_updateVersion + u'\n' + m_installCaption);
}

void PageUpdate::cmdUpdate_Click()
{
    if (!installPickedProgramFile(m_updateFile, this))
        return;
    ui->Label6->setVisible(true);
    ui->Label5->setVisible(true);
    ui->Label7->setVisible(true);
    showPathInLabel(ui->Label7, backupFolderPath());
    m_host.refreshStatus();
}
