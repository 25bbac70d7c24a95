#include "maintenance/DownloadCheck.h"

#include "maintenance/PeVersion.h"
#include "maintenance/ReleaseTrust.h"

#include <QFile>

#include <algorithm>
#include <cctype>

namespace {
// A connection that dropped once is often back at once, and on a fast line every
// millisecond of waiting shows in the total; one that keeps dropping gets time to recover.
QList<int> &resumePauses()
{
    static QList<int> pauses{10, 1000, 3000};
    return pauses;
}
} // namespace

clsDownload::ResumePolicy programResumePolicy()
{
    return {3, resumePauses()};
}

void setProgramResumePausesForTesting(const QList<int> &pausesMs)
{
    resumePauses() = pausesMs;
}

QString publishedSha256(const QString &downloadList)
{
    return downloadListValue(downloadList, QStringLiteral("pawnsketch.exe.sha256"));
}

DownloadVerdict checkDownloadedProgram(const DownloadedFile &downloaded, const QString &expectedSha256,
                                       qint64 expectedSize)
{
    QFile file(downloaded.path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != downloaded.announcedSize ||
        downloaded.written != downloaded.announcedSize)
        return DownloadVerdict::Incomplete;
    if (file.size() != expectedSize)
        return DownloadVerdict::SizeMismatch;
    if (!readPeVersion(file).ok)
        return DownloadVerdict::NotAProgram;
    // fromHex skips what is no hex digit: only the exact 64 digits count.
    const QByteArray hex = expectedSha256.toLatin1();
    const bool wellFormed = hex.size() == 64 && std::all_of(hex.begin(), hex.end(), [](char c) {
                                return std::isxdigit(static_cast<unsigned char>(c)) != 0;
                            });
    return wellFormed && QByteArray::fromHex(hex) == downloaded.sha256 ? DownloadVerdict::Ok
                                                                       : DownloadVerdict::ChecksumMismatch;
}
