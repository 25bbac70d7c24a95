#include "maintenance/FileInfo.h"

#include <windows.h>

#include <tlhelp32.h>

bool IsProcessRunning(const QString &name)
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
