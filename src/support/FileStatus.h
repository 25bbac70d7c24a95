#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

// How the status labels show a file: its size in kilobytes of 1000 bytes and its last-write
// time in the language's date pattern.

// "0 KB" for a missing file; below 1000 bytes, an empty file included, "1 KB"; otherwise
// bytes / 1000 rounded to the nearest whole number, halves to the even neighbour
// (1500 -> "2 KB", 2500 -> "2 KB", 3500 -> "4 KB").
QString FileSizeText(qint64 bytes, bool exists);

// "dd.mm.yyyy - hh:nn:ss" for the language "de", "yyyy/mm/dd - hh:mm:ss" for every other,
// in local time, 24 hours; "" for an invalid time.
QString FileDateText(const QDateTime &local, const QString &languageCode);

// Text of an edit control with the line breaks of the logs and the report: every LF that
// does not follow a CR gets one.
QString WithCrLf(QStringView editText);

// Length of a text as the character counters show it: a line break counts two characters,
// whether it is a CR LF (read from a file, the report) or a lone LF (as edit controls give it).
qsizetype CountedCharacters(QStringView text);
// The counter caption: count, a blank and the unit word ("1234 Zeichen").
QString CounterText(qsizetype count, const QString &unitWord);
