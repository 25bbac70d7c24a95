#include "app/PageStartOptions.h"

#include "app/StartSwitches.h"
#include "core/PageHost.h"
#include "core/Platform.h"
#include "core/ProgramFolder.h"
#include "localisation/ShowMsg.h"
#include "maintenance/FileInfo.h"

#include "ui_PageStartOptions.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>

PageStartOptions::PageStartOptions(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageStartOptions>())
{
    ui->setupUi(this);
    // Standard mode first: the safe-mode boxes only mean something in safe mode.
    ui->optStartingMode_1->setChecked(true);
    optStartingMode_Click();
    connect(ui->optStartingMode_1, &QRadioButton::toggled, this, &PageStartOptions::optStartingMode_Click);
    connect(ui->cmdOK, &QPushButton::clicked, this, &PageStartOptions::cmdOK_Click);
}

void PageStartOptions::setPawnsketchRunning()
{
    ui->cmdOK->setEnabled(false);
}

void PageStartOptions::optStartingMode_Click()
{
    // Boxes keep their marks when disabled: switching back to safe mode restores the choice.
    const bool safe = ui->optStartingMode_2->isChecked();
    for (QCheckBox *box :
         {ui->Check1, ui->Check3, ui->Check4, ui->Check5, ui->Check7, ui->Check8, ui->Check9})
        box->setEnabled(safe);
}

void PageStartOptions::cmdOK_Click()
{
    const QString freshInstall = installPath(QStringLiteral("res/fresh_install"));
    if (FileExists(freshInstall))
        QFile::remove(freshInstall);

    const auto checked = [](const QCheckBox *box) { return box->checkState() == Qt::Checked; };
    StartOptions options;
    options.logStart = checked(ui->Check2);
    options.newStartLog = checked(ui->Check6);
    options.safeMode = ui->optStartingMode_2->isChecked();
    options.backupIni = checked(ui->Check1);
    options.noDesign = checked(ui->Check3);
    options.backupDesign = checked(ui->Check5);
    options.noComposer = checked(ui->Check4);
    options.noFile = checked(ui->Check7);
    options.repairDesigns = checked(ui->Check8);
    options.noMacType = checked(ui->Check9);
    m_switches += StartSwitches(options);

    const QString path = installPath(QStringLiteral("pawnsketch.exe"));
    // "@" breaks a message line; a folder name may hold one.
    QString shownPath = QDir::toNativeSeparators(path);
    shownPath.replace(u'@', QLatin1String("<<at>>"));
    if (!FileExists(path))
        ShowMsg(1, QStringLiteral("M19230"), 48,
                QStringLiteral("Datei nicht gefunden:@@<var1>@@Bitte \u00fcberpr\u00fcfen Sie das "
                               "Installationsverzeichnis!#Pawnsketch nicht gefunden"),
                this, {shownPath});

    // Without the file the start fails quietly and the window still closes, as on Windows.
    if (platform().startProgram(path, m_switches) == Platform::LaunchResult::RunnerMissing) {
        ShowMsg(
            1, QStringLiteral("M19231"), 48,
            QStringLiteral("Pawnsketch ist ein Windows-Programm und wird hier mit Wine gestartet, "
                           "doch Wine wurde nicht gefunden (kein Programm \"wine\" im Suchpfad).@@"
                           "Bitte installieren Sie Wine und versuchen Sie es erneut.#Wine nicht gefunden"),
            this);
        return;
    }
    window()->close();
}

PageStartOptions::~PageStartOptions() = default;
