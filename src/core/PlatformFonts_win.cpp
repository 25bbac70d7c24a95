#include "core/NativePlatform.h"

#include <QDir>

#include <windows.h>

QStringList NativePlatform::fontFolders() const
{
    return {specialFolder(SpecialFolder::Fonts)};
}

// The font is added for this session from where it lies; nothing is copied into the
// Windows fonts folder. Each added font is announced on its own, to the handle with all
// bits set, as the program always has.
QString NativePlatform::addFont(const QString &path)
{
    const std::wstring file = QDir::toNativeSeparators(path).toStdWString();
    if (AddFontResourceW(file.c_str()) == 0)
        return {};
    LPARAM zero = 0;
    SendMessageW(reinterpret_cast<HWND>(static_cast<INT_PTR>(-1)), WM_FONTCHANGE, 0,
                 reinterpret_cast<LPARAM>(&zero));
    return path;
}
