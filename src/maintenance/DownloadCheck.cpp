#include "maintenance/DownloadCheck.h"

#include "maintenance/PeVersion.h"
#include "maintenance/ReleaseTrust.h"

#include <QCryptographicHash>
#include <QFile>

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

DownloadVerdict checkDownloadedProgram(const QString &path, qint64 announcedSize,
                                       const QString &expectedSha256, qint64 expectedSize)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != announcedSize)
        return DownloadVerdict::Incomplete;
    if (file.size() != expectedSize)
        return DownloadVerdict::SizeMismatch;
    if (!readPeVersion(file).ok)
        return DownloadVerdict::NotAProgram;
    if (expectedSha256.isEmpty())
        return DownloadVerdict::ChecksumMismatch;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.seek(0) || !hash.addData(&file))
        return DownloadVerdict::Incomplete;
    const QByteArray actual = hash.result().toHex();
    return QString::fromLatin1(actual).compare(expectedSha256, Qt::CaseInsensitive) == 0
               ? DownloadVerdict::Ok
               : DownloadVerdict::ChecksumMismatch;
}
