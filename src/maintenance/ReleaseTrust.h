#pragma once

#include "core/Minisign.h"

#include <QByteArray>
#include <QString>

class clsDownload;

// What the publisher's signatures vouch for. The server's version text and download list
// come with "<name>.minisig" beside them; a build trusts the keys of
// Config::releaseKeys() and nothing else, so a server (or anyone between it and the
// user) can no longer hand out a program file together with a matching checksum.

enum class TrustCheck
{
    Ok,
    NoReleaseKey,      // the build names no key: nothing from the server is trusted
    NoSignature,       // no signature file came (missing, failed, or far too big)
    BrokenSignature,   // the signature file cannot be read
    UnknownKey,        // signed, but not by a key of this build
    SignatureMismatch, // the file or its trusted comment changed after signing
    WrongFile,         // the trusted comment names another file
    WrongVersion,      // the trusted comment names another version than the file
    MissingChecksum,   // the download list names no size or no SHA-256 of the program file
};

// The signature file of a file is fetched with a bound far below a normal query's.
constexpr qsizetype kSignatureQueryLimit = Minisign::kMaxSignatureFile;
QString signatureUrl(const QString &fileUrl);
bool startSignatureQuery(clsDownload &download, const QString &fileUrl);

// data signed by one of the build's keys, with "file:<fileName>" and "version:<version>"
// in the trusted comment.
TrustCheck checkSignedFile(const QByteArray &data, const QByteArray &signatureFile, const QString &fileName,
                           const QString &version);

// A value of section [Downloads] of the download list (key and section without regard to
// case, the value trimmed and without surrounding quotes); "" when it names none.
QString downloadListValue(const QString &downloadList, const QString &key);

struct SignedDownloadList
{
    TrustCheck check = TrustCheck::NoSignature;
    QString version; // "pawnsketch.exe=" of the list
    QString sha256;
    qint64 size = -1;
};
SignedDownloadList checkDownloadList(const QByteArray &downloadList, const QByteArray &signatureFile);

// Versions such as "13.2 Build 2210" compared number by number: <0, 0, >0.
int compareVersions(const QString &a, const QString &b);

// Why a check failed, in the current language; <var1> of the texts is the file's name.
QString trustCheckText(TrustCheck check, const QString &fileName);
// The status lines of a refused download and of a version that is not announced.
QString refusedDownloadText(const QString &reason);
QString refusedVersionText(const QString &reason);
