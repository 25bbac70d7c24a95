#include "core/NativePlatform.h"

#include <QDir>

#include <windows.h>

#include <shellapi.h>

// The shell opens the program as a double-click would, with no working folder of its own
// and a normal window. A failure is only told to the caller, who does not report it.
Platform::LaunchResult NativePlatform::startProgram(const QString &path, const QString &parameters)
{
    const std::wstring file = QDir::toNativeSeparators(path).toStdWString();
    const std::wstring params = parameters.toStdWString();
    const HINSTANCE result =
        ShellExecuteW(nullptr, L"open", file.c_str(), params.c_str(), nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > 32 ? LaunchResult::Started : LaunchResult::Failed;
}
