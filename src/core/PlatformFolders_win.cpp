#include "core/NativePlatform.h"

#include <windows.h>

#include <shlobj.h>

#include <QDir>

namespace {

int csidlOf(Platform::SpecialFolder kind)
{
    switch (kind) {
    case Platform::SpecialFolder::Fonts:
        return CSIDL_FONTS;
    case Platform::SpecialFolder::Desktop:
        return CSIDL_DESKTOPDIRECTORY;
    case Platform::SpecialFolder::Documents:
        return CSIDL_PERSONAL;
    case Platform::SpecialFolder::AppData:
        return CSIDL_APPDATA;
    }
    return -1;
}

} // namespace

// Asked of the shell each time: the user may have moved a folder since.
QString NativePlatform::specialFolder(SpecialFolder kind) const
{
    const int csidl = csidlOf(kind);
    if (csidl < 0)
        return {};
    LPITEMIDLIST list = nullptr;
    // An HRESULT below zero is a failure (FAILED(), spelt out to avoid its cast).
    if (SHGetSpecialFolderLocation(nullptr, csidl, &list) < 0 || !list)
        return {};
    wchar_t buffer[MAX_PATH] = {};
    const BOOL found = SHGetPathFromIDListW(list, buffer);
    ILFree(list); // shell32's own free, so no further system library is needed
    if (!found)
        return {};
    return QDir::fromNativeSeparators(QString::fromWCharArray(buffer));
}
