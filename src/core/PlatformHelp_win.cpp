#include "core/NativePlatform.h"

#include <QDir>

#include <windows.h>

namespace {
// The HTML Help API as htmlhelp.h declares it; taken from hhctrl.ocx at run time, so that
// the build needs no import library for it.
constexpr UINT kDisplayToc = 0x0001;
constexpr UINT kDisplayIndex = 0x0002;
constexpr UINT kDisplaySearch = 0x0003;
constexpr UINT kHelpContext = 0x000F;

struct FtsQuery
{
    int cbStruct;
    BOOL fUniCodeStrings;
    LPCWSTR pszSearchQuery;
    LONG iProximity;
    BOOL fStemmedSearch;
    BOOL fTitleOnly;
    BOOL fExecute;
    LPCWSTR pszWindow;
};

using HtmlHelpFunction = HWND(WINAPI *)(HWND, LPCWSTR, UINT, DWORD_PTR);

HtmlHelpFunction htmlHelp()
{
    static const HtmlHelpFunction function = [] {
        HMODULE module = LoadLibraryW(L"hhctrl.ocx");
        // Through a plain function pointer: GetProcAddress knows no signature.
        return module ? reinterpret_cast<HtmlHelpFunction>(
                            reinterpret_cast<void (*)()>(GetProcAddress(module, "HtmlHelpW")))
                      : nullptr;
    }();
    return function;
}
} // namespace

bool NativePlatform::showHelp(const HelpRequest &request)
{
    const HtmlHelpFunction function = htmlHelp();
    if (!function)
        return false;
    const std::wstring file = QDir::toNativeSeparators(request.file).toStdWString();
    HWND owner = reinterpret_cast<HWND>(request.owner);
    switch (request.command) {
    case HelpCommand::Contents:
        return function(owner, file.c_str(), kDisplayToc, 0) != nullptr;
    case HelpCommand::Index:
        return function(owner, file.c_str(), kDisplayIndex, 0) != nullptr;
    case HelpCommand::Topic:
        return function(owner, file.c_str(), kHelpContext, DWORD_PTR(request.contextId)) != nullptr;
    case HelpCommand::Search: {
        // The query record of the search: viewer's default proximity, titles only, not run
        // at once. The strings are wide, as the wide entry point takes them.
        const std::wstring query = request.query.toStdWString();
        FtsQuery record{int(sizeof(FtsQuery)), TRUE, query.c_str(), -1, FALSE, TRUE, FALSE, L""};
        return function(nullptr, file.c_str(), kDisplaySearch, reinterpret_cast<DWORD_PTR>(&record)) !=
               nullptr;
    }
    }
    return false;
}
