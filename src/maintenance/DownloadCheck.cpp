#include "maintenance/DownloadCheck.h"

#include "maintenance/PeVersion.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStringList>

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
    bool inSection = false;
    const QStringList lines = downloadList.split(u'\n');
    for (QString line : lines) {
        line = line.trimmed();
        if (line.startsWith(u'[')) {
            const qsizetype end = line.indexOf(u']');
            inSection =
                end > 0 &&
                line.mid(1, end - 1).trimmed().compare(QLatin1String("Downloads"), Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inSection || equals < 0)
            continue;
        if (line.left(equals).trimmed().compare(QLatin1String("pawnsketch.exe.sha256"),
                                                Qt::CaseInsensitive) != 0)
            continue;
        QString value = line.mid(equals + 1).trimmed();
        if (value.size() >= 2 && value.startsWith(u'"') && value.endsWith(u'"'))
            value = value.mid(1, value.size() - 2);
        return value;
    }
    return {};
}

DownloadVerdict checkDownloadedProgram(const QString &path, qint64 announcedSize,
                                       const QString &expectedSha256)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() != announcedSize)
        return DownloadVerdict::Incomplete;
    if (!readPeVersion(file).ok)
        return DownloadVerdict::NotAProgram;
    if (expectedSha256.isEmpty())
        return DownloadVerdict::Ok;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.seek(0) || !hash.addData(&file))
        return DownloadVerdict::Incomplete;
    const QByteArray actual = hash.result().toHex();
    return QString::fromLatin1(actual).compare(expectedSha256, Qt::CaseInsensitive) == 0
               ? DownloadVerdict::Ok
               : DownloadVerdict::ChecksumMismatch;
}
