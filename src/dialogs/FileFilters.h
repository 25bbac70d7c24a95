#pragma once

#include <QList>
#include <QString>

// One entry of a file dialog's type list: the text the user sees and the masks that
// decide which files are offered. The two are independent: "Pawnsketch Update (*.exe)"
// offers only pawnsketch_update.exe.
struct FileFilter
{
    QString description;
    QString pattern; // masks separated by ";", with "*" and "?" wildcards

    friend bool operator==(const FileFilter &, const FileFilter &) = default;
};

// The type list of a dialog, by its number in the program's table. Numbers without an
// entry (25, and anything outside 1..32) give an empty list: such a dialog offers
// every file.
QList<FileFilter> fileFilters(int filterIndex);

// The same list as the Windows common dialog takes it: every description and every
// pattern followed by a NUL character. The dialog also needs the list to end in a
// second NUL, which the NUL terminator of QString::utf16() provides.
QString filterString(int filterIndex);

// Whether a bare file name (no folder) matches one of the masks of pattern, as the
// Windows dialog decides it: without regard to case, "*" standing for any run of
// characters, "?" for exactly one, and a trailing ".*" also matching a name without
// any extension (so "*.*" offers every file). Blanks around the masks are ignored.
bool matchesFilterPattern(const QString &fileName, const QString &pattern);
