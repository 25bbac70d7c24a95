#include "core/NativePlatform.h"

#include <QDir>
#include <QStandardPaths>

QString NativePlatform::specialFolder(SpecialFolder kind) const
{
    switch (kind) {
    case SpecialFolder::Fonts: {
#ifdef Q_OS_MACOS
        return QStandardPaths::writableLocation(QStandardPaths::FontsLocation);
#else
        // The folder fontconfig searches for the user's own fonts ($XDG_DATA_HOME/fonts),
        // not Qt's older ~/.fonts; it may not exist yet.
        const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        return data.isEmpty() ? QString() : QDir(data).filePath(QStringLiteral("fonts"));
#endif
    }
    case SpecialFolder::Desktop:
        return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    case SpecialFolder::Documents:
        return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    case SpecialFolder::AppData:
        // The root under which programs keep their data, not a folder of our own.
        return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    }
    return {};
}
