#include "core/NativePlatform.h"

#include <windows.h>

#include <tlhelp32.h>

#include <QByteArray>

// The country as Windows reports it: LOCALE_ICOUNTRY is the international calling code.
QString NativePlatform::countryCode() const
{
    const LCID lcid = GetSystemDefaultLCID();
    const int length = GetLocaleInfoA(lcid, LOCALE_ICOUNTRY, nullptr, 0);
    if (length <= 0)
        return {};
    QByteArray buffer(length, '\0');
    if (GetLocaleInfoA(lcid, LOCALE_ICOUNTRY, buffer.data(), length) <= 0)
        return {};
    return QString::fromLatin1(buffer.constData()); // stops at the terminating NUL
}

bool NativePlatform::isProcessRunning(const QString &name) const
{
    const QString wanted = name.toLower();
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE || snapshot == nullptr)
        return false;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    bool found = false;
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !found;
         more = Process32NextW(snapshot, &entry)) {
        found = QString::fromWCharArray(entry.szExeFile).toLower().contains(wanted);
    }
    CloseHandle(snapshot);
    return found;
}

// Alt+Print: Windows copies the active window with its frame to the clipboard.
bool NativePlatform::sendSnapshotKeys()
{
    keybd_event(VK_MENU, 0, 0, 0);
    keybd_event(VK_SNAPSHOT, 0, 0, 0);
    keybd_event(VK_SNAPSHOT, 0, KEYEVENTF_KEYUP, 0);
    keybd_event(VK_MENU, 0, KEYEVENTF_KEYUP, 0);
    return true;
}

std::unique_ptr<Platform> createNativePlatform()
{
    return std::make_unique<NativePlatform>();
}
