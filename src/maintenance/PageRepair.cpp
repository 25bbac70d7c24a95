#include "maintenance/PageRepair.h"

#include "core/Config.h"
#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "localisation/Fields.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"
#include "maintenance/Authenticode.h"
#include "maintenance/Backups.h"
#include "maintenance/DownloadCheck.h"
#include "maintenance/FileInfo.h"
#include "maintenance/NetworkChecks.h"
#include "maintenance/ProgramFileActions.h"
#include "maintenance/ReleaseTrust.h"
#include "net/ConnectionTest.h"
#include "net/clsDownload.h"

#include "ui_PageRepair.h"

#include <QDir>
#include <QFile>

#include <cmath>
#include <functional>
#include <utility>

namespace {

// "1:05" or "1:02:05".
QString durationText(qint64 seconds)
{
    const qint64 h = seconds / 3600;
    const qint64 m = seconds / 60 % 60;
    const qint64 s = seconds % 60;
    const QString mmss = QStringLiteral("%1:%2").arg(m).arg(s, 2, 10, QLatin1Char('0'));
    return h > 0 ? QStringLiteral("%1:%2").arg(h).arg(mmss.rightJustified(5, u'0')) : mmss;
}

QString withVars(QString text, const QStringList &vars)
{
    for (int i = 0; i < vars.size(); ++i)
        text.replace(QStringLiteral("<var%1>").arg(i + 1), vars[i]);
    return text;
}

QString incompleteText()
{
    return lngText(QStringLiteral("T19213"),
                   QStringLiteral("die unvollständige Datei wird nicht installiert."));
}

QString versionPrefix()
{
    return lngText(QStringLiteral("T19216"), QStringLiteral("Download-Version der Programmdatei:")) + u' ';
}

} // namespace

PageRepair::PageRepair(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageRepair>())
{
    ui->setupUi(this);
    m_downloadCaption = ui->Command2->text();
    connect(ui->Command2, &QPushButton::clicked, this, &PageRepair::Command2_Click);
    connect(ui->Command7, &QPushButton::clicked, this, &PageRepair::Command7_Click);
    connect(ui->Command6, &QPushButton::clicked, this, &PageRepair::Command6_Click);
    FillBackupList();
}

PageRepair::~PageRepair()
{
    // The window is going (Escape, end of the program): a download below 100 % stops
    // and leaves nothing half-written behind.
    if (clsDownload *download = std::exchange(m_download, nullptr)) {
        const bool complete = download->Size() > 0 && download->ReceivedBytes() >= download->Size();
        delete download; // closes the file
        if (!complete)
            QFile::remove(downloadTarget());
    }
}

void PageRepair::setBusy(bool busy)
{
    ui->Command2->setProperty("busyMarker", busy);
}

bool PageRepair::isBusy() const
{
    return ui->Command2->property("busyMarker").toBool();
}

void PageRepair::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    FillBackupList();
}

void PageRepair::languageChanged()
{
    m_downloadCaption = ui->Command2->text();
    const bool running = m_state == DownloadState::Connecting || m_state == DownloadState::Running;
    if (running)
        ui->Command2->setText(lngText(QStringLiteral("T19210"), QStringLiteral("Stop")));
    const QString runningText = ui->lblStatusMsg_1->text();
    m_runningFirst = GetField(runningText, 1, QStringLiteral("#"));
    m_runningSecond = GetField(runningText, 2, QStringLiteral("#"));
    // The status line and the version are said again in the new language.
    ui->lblStatus->setText(m_status ? m_status() : QString());
    ui->lblDLFileVer->setText(versionPrefix() + m_downloadedVersion);
}

void PageRepair::FillBackupList()
{
    const QString current = ui->lstDir->currentItem() ? ui->lstDir->currentItem()->text() : QString();
    ui->lstDir->clear();
    ui->lstDirTmp->clear();
    const QStringList names = restorableBackups(backupFolderPath());
    ui->lstDir->addItems(names);
    const QList<QListWidgetItem *> same = ui->lstDir->findItems(current, Qt::MatchExactly);
    if (!same.isEmpty())
        ui->lstDir->setCurrentItem(same.first());
}

QString PageRepair::downloadTarget() const
{
    // One letter short of the program file's name: the download is never taken for it.
    return QDir(installPath(QStringLiteral("download"))).filePath(QStringLiteral("pawnsktch.exe"));
}

void PageRepair::setStatus(std::function<QString()> text)
{
    m_status = std::move(text);
    ui->lblStatus->setText(m_status ? m_status() : QString());
}

// ---- download ----

void PageRepair::Command2_Click()
{
    switch (m_state) {
    case DownloadState::Idle:
        ui->Command2->setText(lngText(QStringLiteral("T19210"), QStringLiteral("Stop")));
        setStatus([this] { return ui->lblStatusMsg_0->text(); });
        startConnectionTest(false);
        break;
    case DownloadState::Connecting:
        // Stopped before anything was fetched.
        delete std::exchange(m_connection, nullptr);
        delete std::exchange(m_signatureQuery, nullptr);
        m_state = DownloadState::Idle;
        ui->Command2->setText(m_downloadCaption);
        setStatus([this] { return ui->lblStatusMsg_2->text(); });
        break;
    case DownloadState::Running:
        stopDownload();
        break;
    case DownloadState::Stopping:
    case DownloadState::Verifying:
    case DownloadState::Installing:
        break;
    }
}

void PageRepair::startConnectionTest(bool report)
{
    m_state = DownloadState::Connecting;
    m_reportConnection = report;
    m_connection = new ConnectionTest(this);
    connect(m_connection, &ConnectionTest::finished, this, &PageRepair::onConnectionTested);
    m_connection->start();
}

void PageRepair::onConnectionTested(bool connected)
{
    ConnectionTest *test = std::exchange(m_connection, nullptr);
    if (!test)
        return;
    m_downloadList = test->download().queryBytes();
    test->deleteLater(); // we are inside its signal
    m_host.showConnectionState(connected);

    if (!m_reportConnection && connected) {
        // Nothing is fetched for a build that trusts no key.
        if (Minisign::parsePublicKeys(Config::releaseKeys()).isEmpty()) {
            onSignatureFetched();
            return;
        }
        m_signatureQuery = new clsDownload(this);
        connect(m_signatureQuery, &clsDownload::queryFinished, this, &PageRepair::onSignatureFetched);
        startSignatureQuery(*m_signatureQuery, connectionTestUrl());
        return;
    }
    if (!m_reportConnection) {
        // No connection: a second test tells the user what it finds.
        startConnectionTest(true);
        return;
    }
    m_state = DownloadState::Idle;
    ui->Command2->setText(m_downloadCaption);
    setStatus({});
    const ConnectionTestMessage msg = connectionTestMessage(connected);
    ShowMsg(1, msg.key, msg.style, msg.germanDefault, this, {msg.var1},
            connected ? QString() : connectionCauseParagraph(lastConnectionDiagnosis()));
}

void PageRepair::refuse(std::function<QString()> text)
{
    m_state = DownloadState::Idle;
    ui->Command2->setText(m_downloadCaption);
    // Nothing downloaded earlier stays on offer beside a refusal.
    QFile::remove(downloadTarget());
    m_downloadedFile.clear();
    ui->Label15->clear();
    ui->Command7->setEnabled(false);
    setStatus(std::move(text));
}

void PageRepair::onSignatureFetched()
{
    const QByteArray signature = m_signatureQuery ? m_signatureQuery->queryBytes() : QByteArray();
    if (clsDownload *query = std::exchange(m_signatureQuery, nullptr)) {
        query->disconnect(this);
        query->deleteLater(); // we are inside its signal
    }
    const SignedDownloadList list = checkDownloadList(m_downloadList, signature);
    if (list.check != TrustCheck::Ok) {
        const TrustCheck check = list.check;
        refuse(
            [check] { return refusedDownloadText(trustCheckText(check, QStringLiteral("downloads.ini"))); });
        return;
    }
    // An older release, even a signed one, may carry a flaw fixed since: only the user
    // may choose to go back.
    const QString installed = versionWithBuild(GetFileInfo(programFilePath()));
    if (compareVersions(list.version, installed) < 0 &&
        ShowMsg(1, QStringLiteral("M19300"), 4 + 48,
                QStringLiteral("Der Server bietet die ältere Version <var1> an; installiert ist <var2>.@"
                               "Möchten Sie wirklich zur älteren Version zurückkehren?#Ältere Version"),
                this, {list.version, installed})
                .toInt() != IDYES) {
        const QString version = list.version;
        refuse([version] {
            return lngText(QStringLiteral("T19312"),
                           QStringLiteral("Status: Die ältere Version <var1> wird nicht geladen."))
                .replace(QLatin1String("<var1>"), version);
        });
        return;
    }
    m_expectedSha256 = list.sha256;
    m_expectedSize = list.size;
    startTransfer();
}

void PageRepair::startTransfer()
{
    setBusy(true);
    ui->Command2->setText(lngText(QStringLiteral("T19210"), QStringLiteral("Stop")));
    ui->Command7->setEnabled(false);
    ui->ProgressBar1->setValue(0);
    ui->ProgressBar1->setVisible(true);
    ui->lblDLFileVer->setVisible(false);
    m_downloadStopped = false;
    m_downloadedFile.clear();

    const QString runningText = ui->lblStatusMsg_1->text();
    m_runningFirst = GetField(runningText, 1, QStringLiteral("#"));
    m_runningSecond = GetField(runningText, 2, QStringLiteral("#"));

    const QString target = downloadTarget();
    QDir().mkpath(QFileInfo(target).path());
    // The engine writes over an older file without shortening it: that file goes first.
    QFile::remove(target);

    m_download = new clsDownload(this);
    m_download->setResumePolicy(programResumePolicy());
    // The check before install takes the hash taken on the way instead of reading the file again.
    m_download->setSha256(true);
    connect(m_download, &clsDownload::update, this, &PageRepair::dl_Update);
    connect(m_download, &clsDownload::resuming, this, &PageRepair::onResuming);
    connect(m_download, &clsDownload::downloadFinished, this, &PageRepair::onDownloadFinished);
    setStatus([this] { return ui->lblStatusMsg_0->text(); });
    m_state = DownloadState::Running;
    m_download->startDownload(Config::downloadUrl(), target);
}

// Stop: at once, also from inside one of the engine's signals (the engine allows being
// deleted there). Deleting it closes the file, so the partial file can go.
void PageRepair::stopDownload()
{
    m_state = DownloadState::Stopping;
    setBusy(false);
    ui->Command2->setText(m_downloadCaption);
    if (clsDownload *download = std::exchange(m_download, nullptr)) {
        download->disconnect(this);
        download->StopDownload(true);
        delete download;
    }
    m_downloadStopped = true;
    setStatus([this] { return ui->lblStatusMsg_2->text(); });
    if (ui->ProgressBar1->value() < 100)
        QFile::remove(downloadTarget());
    ui->Command7->setEnabled(false);
    m_state = DownloadState::Idle;
}

void PageRepair::dl_Update()
{
    if (!m_download)
        return;
    // Everything is read before a control changes: a handler of the progress bar may
    // stop the download and delete the engine.
    const NetResult result = m_download->result();
    const NetDiagnosis diagnosis = m_download->diagnosis();
    const qint64 size = m_download->Size();
    const qint64 received = m_download->ReceivedBytes();
    const double speed = m_download->Speed();
    if (!result.ok()) {
        setStatus([this, result, diagnosis] { return failureStatus(result, diagnosis); });
        return;
    }
    if (size <= 0)
        return;
    // Remaining time from the engine's speed, which counts only the time spent waiting for data.
    const qint64 seconds =
        speed > 0 && received < size ? qint64(std::ceil(double(size - received) / speed)) : -1;
    const qint64 percent = qRound64(double(received) / double(size) * 100.0);
    setStatus([this, percent, seconds] {
        QString status = m_runningFirst + QStringLiteral(", ") + QString::number(percent) +
                         QStringLiteral("% ") + m_runningSecond;
        if (seconds >= 0)
            status += QStringLiteral(", ") +
                      withVars(lngText(QStringLiteral("T19211"), QStringLiteral("Restzeit <var1>")),
                               {durationText(seconds)});
        return status;
    });
    ui->ProgressBar1->setValue(int(received * 100 / size));
}

void PageRepair::onResuming(int attempt, int maxAttempts, int pauseMs)
{
    const QStringList vars{QString::number(attempt), QString::number(maxAttempts),
                           QString::number((pauseMs + 999) / 1000)};
    setStatus([vars] {
        return withVars(
            lngText(QStringLiteral("T19212"),
                    QStringLiteral("Status: Verbindung unterbrochen, neuer Versuch <var1> von <var2> "
                                   "in <var3> s ...")),
            vars);
    });
}

void PageRepair::onDownloadFinished()
{
    clsDownload *download = std::exchange(m_download, nullptr);
    if (!download)
        return;
    const NetResult result = download->result();
    const NetDiagnosis diagnosis = download->diagnosis();
    const DownloadedFile downloaded{downloadTarget(), download->Size(), download->ReceivedBytes(),
                                    result.ok() ? download->sha256() : QByteArray()};
    download->disconnect(this);
    download->deleteLater(); // we are inside its signal

    setBusy(false);
    ui->Command2->setText(m_downloadCaption);
    const QString target = downloadTarget();

    std::function<QString()> refusal;
    if (!result.ok()) {
        refusal = [this, result, diagnosis] {
            QString text = failureStatus(result, diagnosis);
            if (result.error == NetError::ConnectionLost)
                text += QStringLiteral(" - ") + incompleteText();
            return text;
        };
    } else {
        m_state = DownloadState::Verifying;
        switch (checkDownloadedProgram(downloaded, m_expectedSha256, m_expectedSize)) {
        case DownloadVerdict::Ok:
            break;
        case DownloadVerdict::Incomplete:
            refusal = [this] {
                return ui->lblStatusMsg_4->text() + QStringLiteral(" (") +
                       netErrorText({NetError::ConnectionLost}) + QStringLiteral(") - ") + incompleteText();
            };
            break;
        case DownloadVerdict::NotAProgram:
            refusal = [] {
                return lngText(QStringLiteral("T19214"),
                               QStringLiteral("Status: Die geladene Datei ist keine Programmdatei mit "
                                              "Versionsangaben und wird nicht installiert."));
            };
            break;
        case DownloadVerdict::ChecksumMismatch:
            refusal = [] {
                return lngText(
                    QStringLiteral("T19215"),
                    QStringLiteral("Status: Die Prüfsumme der geladenen Datei stimmt nicht mit der "
                                   "vom Server genannten überein; die Datei wird nicht installiert."));
            };
            break;
        case DownloadVerdict::SizeMismatch:
            refusal = [] {
                return refusedDownloadText(
                    lngText(QStringLiteral("T19308"),
                            QStringLiteral("Die geladene Datei hat nicht die signierte Größe.")));
            };
            break;
        }
    }

    AuthenticodeResult authenticode;
    const QString publisher = Config::publisher();
    if (!refusal) {
        // The second lock: the program file's own signature, where the system checks one.
        authenticode = checkAuthenticode(target);
        if (!authenticodeAccepted(authenticode, publisher))
            refusal = [authenticode, publisher] { return authenticodeText(authenticode, publisher); };
    }

    if (refusal) {
        // Nothing broken is offered: the file goes, Install stays off.
        QFile::remove(target);
        ui->Label15->clear();
        setStatus(std::move(refusal));
        ui->Command7->setEnabled(false);
        m_state = DownloadState::Idle;
        return;
    }
    m_downloadedFile = target;
    showPathInLabel(ui->Label15, target, false);
    setStatus([this, authenticode, publisher] {
        const QString signer = authenticodeText(authenticode, publisher);
        return signer.isEmpty() ? ui->lblStatusMsg_3->text() : ui->lblStatusMsg_3->text() + u' ' + signer;
    });
    ui->Command7->setEnabled(true);
    ui->ProgressBar1->setVisible(false);
    m_downloadedVersion = versionWithBuild(GetFileInfo(target));
    ui->lblDLFileVer->setText(versionPrefix() + m_downloadedVersion);
    ui->lblDLFileVer->setVisible(true);
    m_state = DownloadState::Idle;
}

void PageRepair::Command7_Click()
{
    if (m_state != DownloadState::Idle)
        return;
    m_state = DownloadState::Installing;
    if (!FileExists(m_downloadedFile)) {
        ShowMsg(1, QStringLiteral("M19213"), 0, QStringLiteral("Download-datei nicht gefunden!"), this);
        m_state = DownloadState::Idle;
        return;
    }
    // Only an OK button: the copy always follows, as it always has.
    ShowMsg(1, QStringLiteral("M19214"), 0,
            QStringLiteral("Datei wird nun ins Programmverzeichnis kopiert!@Möchten Sie fortfahren?"), this);
    ReplaceProgramFile(programFilePath(), m_downloadedFile, this);
    m_host.refreshStatus();
    m_state = DownloadState::Idle;
}

// "Download failed (engine's description: cause)"; the cause also names what went wrong
// on the way, which the engine's numbers do not tell apart.
QString PageRepair::failureStatus(const NetResult &result, const NetDiagnosis &diagnosis) const
{
    const QString description = netErrorText(result);
    // "Connection lost" says all there is to say about a break the network layer cannot explain.
    const QString cause = diagnosis.cause == NetCause::Other ? QString() : netCauseText(diagnosis);
    return ui->lblStatusMsg_4->text() + QStringLiteral(" (") + description +
           (cause.isEmpty() ? QString() : QStringLiteral(": ") + cause) + u')';
}

// ---- restore ----

void PageRepair::Command6_Click()
{
    // Without a selection the folder itself is the source, which ends with "not found".
    const QListWidgetItem *item = ui->lstDir->currentItem();
    const QString folder = backupFolderPath();
    const QString source = item ? QDir(folder).filePath(item->text()) : folder;
    ReplaceProgramFile(programFilePath(), source, this);
    m_host.refreshStatus();
}
