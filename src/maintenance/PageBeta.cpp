#include "maintenance/PageBeta.h"

#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "dialogs/FileDialogs.h"
#include "maintenance/Backups.h"
#include "maintenance/ProgramFileActions.h"

#include "ui_PageBeta.h"

#include <QFile>

namespace {
// Every file: a beta may come under any name.
constexpr int kAllFiles = 22;
} // namespace

PageBeta::PageBeta(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageBeta>())
{
    ui->setupUi(this);
    connect(ui->Command4, &QPushButton::clicked, this, &PageBeta::Command4_Click);
    connect(ui->cmdInstallBeta, &QPushButton::clicked, this, &PageBeta::cmdInstallBeta_Click);
}

PageBeta::~PageBeta() = default;

void PageBeta::languageChanged()
{
    if (!m_betaFile.isEmpty())
        showPathInLabel(ui->Label11, m_betaFile);
}

void PageBeta::Command4_Click()
{
    QString title = ui->lblBetaFileCap->text().trimmed();
    if (title.endsWith(u':'))
        title.chop(1);
    const QString path = SelectFile(kAllFiles, this, title, programFolder());
    if (path.isEmpty())
        return;
    m_betaFile = path;
    showPathInLabel(ui->Label11, path);
    ui->cmdInstallBeta->setEnabled(true);
}

void PageBeta::cmdInstallBeta_Click()
{
    if (!installPickedProgramFile(m_betaFile, this))
        return;
    // A beta file is used once: it goes, so that it cannot be installed by mistake again.
    QFile::remove(m_betaFile);
    ui->cmdInstallBeta->setEnabled(false);
    ui->Label9->setVisible(true);
    ui->Label10->setVisible(true);
    ui->Label8->setVisible(true);
    showPathInLabel(ui->Label8, backupFolderPath());
    m_host.refreshStatus();
}
