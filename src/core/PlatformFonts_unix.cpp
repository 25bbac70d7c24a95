#include "core/NativePlatform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fontconfig/fontconfig.h>

// Every folder fontconfig is configured to read; it reads their subfolders too.
QStringList NativePlatform::fontFolders() const
{
    QStringList folders;
    FcStrList *dirs = FcConfigGetFontDirs(nullptr);
    if (!dirs)
        return folders;
    while (const FcChar8 *dir = FcStrListNext(dirs))
        folders << QFile::decodeName(reinterpret_cast<const char *>(dir));
    FcStrListDone(dirs);
    // The user's font folder counts even before it exists: fontconfig reads it once it does.
    const QString user = specialFolder(SpecialFolder::Fonts);
    if (!user.isEmpty() && !folders.contains(user))
        folders << user;
    return folders;
}

// Fonts of a user live in the user's font folder, which needs no administrator rights and
// which fontconfig reads for every program. The folder's cache is rebuilt at once, so that
// programs started from now on, Pawnsketch under Wine among them, find the font without
// scanning for it. A file of the same name already there is the user's and stays.
QString NativePlatform::addFont(const QString &path)
{
    const QString folder = specialFolder(SpecialFolder::Fonts);
    if (folder.isEmpty() || !QDir().mkpath(folder))
        return {};
    const QString target = QDir(folder).filePath(QFileInfo(path).fileName());
    if (!QFileInfo::exists(target) && !QFile::copy(path, target))
        return {};
    const QByteArray dir = QFile::encodeName(folder);
    if (FcCache *cache = FcDirCacheRead(reinterpret_cast<const FcChar8 *>(dir.constData()), FcTrue, nullptr))
        FcDirCacheUnload(cache);
    return target;
}
