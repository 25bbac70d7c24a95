#pragma once

#include "maintenance/ReleaseTrust.h"
#include "net/clsDownload.h"

#include <QObject>
#include <QString>

// The server's version file has one line "key=value" whose value is the current version
// text ("13.2 Build 2209"). Only the text after the first "=" (the whole text when there
// is none) up to the first line feed counts; a carriage return before the line feed is
// kept, so such a file never matches the installed version. Without a line feed there is
// no version: false, and version is left as it was.
bool serverVersionFromText(const QString &text, QString &version);

// Installed and server version differ: plain, case-sensitive comparison, no notion of
// older or newer.
bool buildsDiffer(const QString &installed, const QString &server);

// Address of the version file on the version server.
QString versionFileUrl();

struct UpdateCheckResult
{
    bool found = false;    // the server gave a version text signed by the publisher
    QString serverVersion; // shown beside the installed version when found
    // Why a version text that came was not taken (Ok when none came or it was taken).
    TrustCheck trust = TrustCheck::Ok;
};

// The version text and its signature as the server sent them.
UpdateCheckResult checkVersionFile(const QByteArray &versionFile, const QByteArray &signatureFile);

// Reads the version file and its signature without waiting. No connection, an unusable
// or an unsigned file: found is false and nothing is to be shown.
class UpdateCheck : public QObject
{
    Q_OBJECT

public:
    explicit UpdateCheck(QObject *parent = nullptr);

    // False when a check is already running. finished may come before start returns.
    bool start();
    bool isRunning() const { return m_download.isBusy() || m_signature.isBusy(); }
    clsDownload &download() { return m_download; }

signals:
    void finished(const UpdateCheckResult &result);

private:
    void onVersionFile(const QString &text);

    clsDownload m_download;
    clsDownload m_signature;
    QByteArray m_versionFile;
};
