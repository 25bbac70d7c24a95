#pragma once

#include <QChar>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

// The separator of chessfonts.ini, from pawnsketch.ini's [Fonts] Separator: the character
// of code n for a number 1 <= n < 255, a TAB for anything else (empty, 0, 255, "abc").
QChar fontListSeparator(const QString &iniValue);

struct ChessFont
{
    QString name; // as the system knows the font
    QString file; // its font file's name, "" when the line has no separator
};
// The fonts of chessfonts.ini in file order; lines starting with ";" and empty lines are
// skipped, fields after the second ignored.
QList<ChessFont> parseChessFonts(const QString &text, QChar separator);
// The fonts of the list file at path; none when it is missing, unreadable or far too large
// for a list.
QList<ChessFont> readChessFonts(const QString &path, QChar separator);

struct FontCheckResult
{
    QStringList names, files;   // every font read, and its file at the same index
    QStringList missingEntries; // unusable fonts as name + ";" + file
    QStringList unusable;       // names of fonts the system cannot use
    QStringList absent;         // names of those whose file is not in the fonts folders
};
// A font is usable when its file is in the fonts folders and the system knows its name;
// a present file with an unknown name is unusable but not absent.
FontCheckResult checkChessFonts(const QList<ChessFont> &fonts,
                                const std::function<bool(const QString &file)> &filePresent,
                                const std::function<bool(const QString &name)> &fontAvailable);

// The names of the font files (not folders) in folders and their subfolders, as fontconfig
// reads them; each name once, in the order found.
QStringList fontFilesIn(const QStringList &folders);
