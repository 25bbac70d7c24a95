#include "core/NativePlatform.h"

#include <windows.h>

#include <QDir>

#include <string>

namespace {

std::wstring nativePath(const QString &path)
{
    return QDir::toNativeSeparators(path).toStdWString();
}

Platform::FileResult failure(DWORD error)
{
    Platform::FileResult result;
    // Virus scanners and indexers open new files for a moment; a running program keeps
    // its file open until it ends. All of these pass, so the caller may try again.
    result.busy = error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
                  error == ERROR_ACCESS_DENIED || error == ERROR_USER_MAPPED_FILE;
    result.error = qt_error_string(int(error));
    return result;
}

Platform::FileResult success()
{
    Platform::FileResult result;
    result.ok = true;
    return result;
}

} // namespace

Platform::FileResult NativePlatform::flushFile(const QString &path)
{
    const std::wstring name = nativePath(path);
    HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return failure(GetLastError());
    const BOOL flushed = FlushFileBuffers(file);
    const DWORD error = GetLastError();
    CloseHandle(file);
    return flushed ? success() : failure(error);
}

Platform::FileResult NativePlatform::moveFileOver(const QString &source, const QString &target)
{
    const std::wstring from = nativePath(source);
    const std::wstring to = nativePath(target);
    // Replaces the target in one step; write-through returns only when the move is on
    // the disk.
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return failure(GetLastError());
    return success();
}
