#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

class PageHost;
class clsDownload;
class ConnectionTest;
struct NetDiagnosis;
struct NetResult;

namespace Ui {
class PageRepair;
}

// Tab "Reparaturfunktionen 2": downloading the current program file and installing it,
// and restoring a backup.
//
// The download runs on the engine's signals while the window goes on as usual; its state
// belongs to this page. Download acts as Stop while a download is under way and stops it
// at once, whatever the engine is doing; a partial file never stays behind.
class PageRepair : public QWidget
{
    Q_OBJECT

public:
    enum class DownloadState
    {
        Idle,
        Connecting, // the connection test before a download
        Running,
        Stopping,
        Verifying,  // size, program file and checksum of a finished download
        Installing, // the downloaded file replaces the program file
    };

    explicit PageRepair(PageHost &host, QWidget *parent = nullptr);
    // A download still under way is stopped and its partial file deleted.
    ~PageRepair() override;

    // The busy marker lives on the download button: while it is set the window refuses
    // to close, because ending then would leave a half-written file.
    void setBusy(bool busy);
    bool isBusy() const;
    DownloadState downloadState() const { return m_state; }

    // Lists the restorable backups, newest first.
    void FillBackupList();
    // The forms were localised again: the download button keeps saying what it does.
    void languageChanged();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void Command2_Click();
    void startConnectionTest(bool report);
    void onConnectionTested(bool connected);
    void onSignatureFetched();
    void startTransfer();
    void stopDownload();
    void dl_Update();
    void onResuming(int attempt, int maxAttempts, int pauseMs);
    void onDownloadFinished();
    void finishTransfer();
    void refuse(std::function<QString()> text);
    void Command7_Click();
    void Command6_Click();
    // The status line is kept as how to say it, so that it follows a change of language.
    void setStatus(std::function<QString()> text);
    QString failureStatus(const NetResult &result, const NetDiagnosis &diagnosis) const;
    QString downloadTarget() const;

    PageHost &m_host;
    std::unique_ptr<Ui::PageRepair> ui;
    DownloadState m_state = DownloadState::Idle;
    ConnectionTest *m_connection = nullptr;
    bool m_reportConnection = false;
    clsDownload *m_download = nullptr;
    QString m_downloadCaption;               // "Download" in the current language
    QString m_runningFirst, m_runningSecond; // the two parts of the running status text
    clsDownload *m_signatureQuery = nullptr; // the download list's signature
    QByteArray m_downloadList;               // as the server sent it, for its signature
    QString m_expectedSha256;                // published by the signed download list
    qint64 m_expectedSize = -1;              // likewise
    QString m_downloadedFile;                // offered for install; Label15 shows it
    QString m_downloadedVersion;             // its version, shown in lblDLFileVer
    std::function<QString()> m_status;
    bool m_downloadStopped = false;
};
