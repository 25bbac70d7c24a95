#include "core/NativePlatform.h"

#include <windows.h>

#include <shellapi.h>
#include <shlwapi.h>

// The program Windows would start for a mailto address; the user's choice in the settings
// counts, not only the classic HKEY_CLASSES_ROOT entry.
bool NativePlatform::hasMailHandler() const
{
    wchar_t executable[MAX_PATH] = {};
    DWORD length = MAX_PATH;
    if (SUCCEEDED(AssocQueryStringW(ASSOCF_IS_PROTOCOL, ASSOCSTR_EXECUTABLE, L"mailto", L"open", executable,
                                    &length)) &&
        executable[0] != L'\0') {
        return true;
    }
    wchar_t command[1024] = {};
    LONG size = sizeof command;
    return RegQueryValueW(HKEY_CLASSES_ROOT, L"mailto\\shell\\open\\command", command, &size) ==
               ERROR_SUCCESS &&
           command[0] != L'\0';
}

// The address goes to the shell as composed; ShellExecute hands it to the mail program
// without re-encoding anything.
bool NativePlatform::openMailto(const QString &address)
{
    const std::wstring file = address.toStdWString();
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", file.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > 32;
}
