#pragma once

#include <QString>

// Reads one value the way Windows' GetPrivateProfileString does, so that the language
// and settings files written for the Windows program read the same here. A file beyond
// 16 MB is no ini file and reads as missing. Each file is parsed once and read again when
// its size or time changes.
QString ReadIniString(const QString &section, const QString &key, const QString &defaultValue,
                      const QString &fileName, int size = 1200);
// Reads and parses a file ahead of its first lookup, which then waits for it; meant for a
// worker thread.
void preloadIniFile(const QString &fileName);
// Drops what was read, so that every file is read again (another language was chosen).
void forgetIniFiles();
