#pragma once

#include "core/Platform.h"

#include <QString>

// A path shortened for a label of at most maxLength characters. Every label that
// shows a path uses this one rule, so users always read shortened paths the same way:
// the drive or root ("C:\", "\\server\share\", "/") and the file name stay, and the
// folders in between give way, from the root side, to "..." until the rest fits:
// "C:\Programme\Pawnsketch\backup\pwk_exe.bak" becomes "C:\...\backup\pwk_exe.bak".
// When even the root has to go the result is "..." and the file name with its
// separator; only a file name that alone is too long is cut, keeping its end (the
// extension). Paths that fit are returned unchanged; both "\" and "/" separate.
QString MaxDirLen(const QString &path, int maxLength);

// Reserves a new, unique temporary file: creates it empty in folder (the system's
// temporary folder when empty) with a name made of prefix, random characters and
// ".tmp", and returns its full path. Creating the file, like Windows' GetTempFileName,
// keeps two callers from getting the same name; the caller removes it when done.
// "" when the folder is missing or not writable.
QString GetTempName(const QString &folder = {}, const QString &prefix = QStringLiteral("sk"));

// text with everything but letters (of any script, umlauts included) and decimal
// digits removed; suits turning user text into a file-name part.
QString OnlyAlphaNum(const QString &text);

// The folder of that kind as the system knows it, "" when it has none.
QString GetSpecialFolder(Platform::SpecialFolder kind);
