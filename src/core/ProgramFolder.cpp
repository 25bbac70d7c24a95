#include "core/ProgramFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {
QString &overrideFolder()
{
    static QString folder;
    return folder;
}
} // namespace

QString programFolder()
{
    if (!overrideFolder().isEmpty())
        return overrideFolder();
    return QCoreApplication::applicationDirPath();
}

void setProgramFolderForTesting(const QString &folder)
{
    overrideFolder() = QDir::cleanPath(folder);
}

QString findPathCaseInsensitive(const QString &path)
{
    if (path.isEmpty() || QFileInfo::exists(path))
        return path;
    const QString clean = QDir::cleanPath(QDir::fromNativeSeparators(path));
    const QStringList parts = clean.split(u'/');
    QString current = parts.first().isEmpty() ? QStringLiteral("/") : parts.first();
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const QString &part = parts[i];
        if (part.isEmpty())
            continue;
        QDir dir(current);
        QString match = part;
        if (!dir.exists(part)) {
            const QStringList names =
                dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
            match.clear();
            for (const QString &name : names) {
                if (name.compare(part, Qt::CaseInsensitive) == 0) {
                    match = name;
                    break;
                }
            }
            if (match.isEmpty())
                return path;
        }
        current = dir.filePath(match);
    }
    return current;
}

QString installPath(const QString &relative)
{
    QString rel = QDir::fromNativeSeparators(relative);
    while (rel.startsWith(u'/'))
        rel.remove(0, 1);
    return findPathCaseInsensitive(QDir(programFolder()).filePath(rel));
}
