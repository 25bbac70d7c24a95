#pragma once

#include <QString>
#include <QVariant>

// The program's only way to the clipboard. Another program may hold the clipboard for a
// moment; an attempt that does not take is repeated at once, ten attempts in all, and
// then the user is told (message M85) once.
//
// action 1: put data (text) on the clipboard, in format (a MIME type; plain text when empty)
//        2: put data (a QImage or QPixmap) on the clipboard
//        3: clear the clipboard
//        4: the clipboard's text in format ("" when there is none)
//        5: whether the clipboard holds format
// Actions 1, 2, 3 and 5 give true on success, false after ten failed attempts; action 4
// gives the text, "" after ten failed attempts.
QVariant ClipboardAction(int action, const QVariant &data = {}, const QString &format = {});

// Tests make the next attempts fail as a held clipboard would.
void setClipboardBlockedForTesting(int failingAttempts);
