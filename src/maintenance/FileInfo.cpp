#include "maintenance/FileInfo.h"

#include "core/Platform.h"

#include <QFile>
#include <QFileInfo>

namespace {
// Version numbers are shown as the signed 16-bit values they always were.
QString signed16(quint32 value)
{
    return QString::number(qint16(quint16(value)));
}
} // namespace

QString fileTypeText(quint32 code)
{
    switch (code) {
    case 0:
        return QStringLiteral("Unbekannt");
    case 1:
        return QStringLiteral("Anwendung");
    case 2:
        return QStringLiteral("Dynamic Link Library (DLL)");
    case 3:
        return QStringLiteral("Geräte Trieber"); // sic, users know it this way
    case 4:
        return QStringLiteral("Schriftart");
    case 5:
        return QStringLiteral("Virtueller Geräte Treiber");
    case 7:
        return QStringLiteral("Static Library");
    default:
        return {};
    }
}

QString fileNameOfPath(const QString &path)
{
    const qsizetype separator = qMax(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/'));
    return path.mid(separator + 1);
}

FileInfo fileInfoFromFixed(const QString &path, const PeFixedFileInfo &fixed)
{
    FileInfo info;
    info.FileName = fileNameOfPath(path);
    info.FileType = fileTypeText(fixed.fileType);
    info.Version = signed16(fixed.fileVersionMS >> 16) + u'.' + signed16(fixed.fileVersionMS);
    info.Build = signed16(fixed.fileVersionLS);
    info.Path = path;
    return info;
}

QString versionWithBuild(const FileInfo &info)
{
    return info.Version + QStringLiteral(" Build ") + info.Build;
}

FileInfo GetFileInfo(const QString &path)
{
    PeFixedFileInfo fixed; // all zero: what a file without version block shows
    // Only regular files: opening a FIFO or device could block or never end.
    if (QFileInfo(path).isFile()) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) {
            const PeVersionResult result = readPeVersion(file);
            if (result.ok)
                fixed = result.info;
        }
    }
    return fileInfoFromFixed(path, fixed);
}

bool FileExists(const QString &path)
{
    return !path.isEmpty() && QFileInfo(path).isFile();
}

bool IsProcessRunning(const QString &name)
{
    return platform().isProcessRunning(name);
}
