#include "maintenance/Backups.h"

#include "core/ProgramFolder.h"
#include "maintenance/FileInfo.h"

#include <QDir>
#include <QFile>

#include <algorithm>

QString programFilePath()
{
    return installPath(QStringLiteral("pawnsketch.exe"));
}

QString backupFolderPath()
{
    return installPath(QStringLiteral("backup/pwk_exe"));
}

bool isRestorableBackup(const QString &fileName)
{
    return fileName.startsWith(QLatin1String("pwk_exe_"), Qt::CaseInsensitive) &&
           fileName.endsWith(QLatin1String(".bak"), Qt::CaseInsensitive);
}

QStringList restorableBackups(const QString &folder)
{
    QStringList names;
    const QStringList entries = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : entries) {
        if (isRestorableBackup(name))
            names.append(name);
    }
    // The sorted list box this replaces compares without regard to case; its entries
    // are then taken from the last to the first.
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) {
        const int c = a.compare(b, Qt::CaseInsensitive);
        return c != 0 ? c > 0 : a > b;
    });
    return names;
}

QString backupFileName(const QDateTime &when)
{
    return QStringLiteral("pawnsketch_") + when.toString(QStringLiteral("MMddyyyy_HHmmss")) +
           QStringLiteral(".bak");
}

PickedInstallResult installPickedFile(const QString &programFile, const QString &pickedFile,
                                      const QString &backupFolder, const QDateTime &when)
{
    PickedInstallResult result;
    if (!FileExists(programFile) || !FileExists(pickedFile))
        return result;
    result.attempted = true;
    if (!QFileInfo(backupFolder).isDir())
        QDir().mkdir(backupFolder);
    if (!QFileInfo(backupFolder).isDir())
        return result;
    result.backupFile = QDir(backupFolder).filePath(backupFileName(when));
    // Two installs within one second write the same backup name; the later one wins.
    if (QFileInfo::exists(result.backupFile))
        QFile::remove(result.backupFile);
    result.backupMade = QFile::copy(programFile, result.backupFile) && FileExists(result.backupFile);
    if (!result.backupMade)
        return result;
    result.replace = replaceFileSafely(programFile, pickedFile);
    return result;
}
