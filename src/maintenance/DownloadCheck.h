#pragma once

#include "net/clsDownload.h"

#include <QByteArray>
#include <QList>
#include <QString>

// Whether a downloaded program file may be offered for install.

// The SHA-256 that the server's download list ("downloads.ini") publishes for the program
// file: key "pawnsketch.exe.sha256" of section "[Downloads]", both without regard to
// case, the value trimmed and without surrounding quotes; "" when the list names none.
QString publishedSha256(const QString &downloadList);

enum class DownloadVerdict
{
    Ok,
    Incomplete,       // not the size the server announced
    NotAProgram,      // no PE file with a readable version resource
    ChecksumMismatch, // the download list publishes another SHA-256 (or an unusable one, or none)
    SizeMismatch,     // not the size the signed download list names
};

// What a download left: the file, the size its server announced, and the count and SHA-256
// of the bytes it wrote, taken while it ran.
struct DownloadedFile
{
    QString path;
    qint64 announcedSize = 0;
    qint64 written = 0;
    QByteArray sha256;
};

// The signed list vouches for the file only through both its size and its SHA-256: neither
// may be left out. The file is not read again but for its version resource.
DownloadVerdict checkDownloadedProgram(const DownloadedFile &file, const QString &expectedSha256,
                                       qint64 expectedSize);

// How a download of the program file goes on after its connection broke off: at most
// three attempts after growing pauses.
clsDownload::ResumePolicy programResumePolicy();
// Tests make the pauses short (or long, to act while one lasts).
void setProgramResumePausesForTesting(const QList<int> &pausesMs);
