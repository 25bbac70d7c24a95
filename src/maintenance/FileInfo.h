#pragma once

#include "maintenance/PeVersion.h"

#include <QString>

// What the program shows about a program file; all fields are display texts.
struct FileInfo
{
    QString FileName, FileType, Version, Build, Path;
};

// Reads the file's version resource with our own PE reader (the same on every
// platform). A missing, unreadable or non-PE file gives Version "0.0",
// Build "0" and FileType "Unbekannt".
FileInfo GetFileInfo(const QString &path);
// True for an existing regular file (symbolic links followed); false for
// folders, missing paths and anything that cannot be examined.
bool FileExists(const QString &path);
// True when a running process's executable name contains `name`, compared
// without regard to case ("pawnsketch.exe" also finds MyPawnsketch.EXE).
bool IsProcessRunning(const QString &name);

// German name of a version resource file-type code, "" for codes without one.
QString fileTypeText(quint32 code);
// The part after the last "\" or "/"; the whole path when it has neither.
QString fileNameOfPath(const QString &path);
FileInfo fileInfoFromFixed(const QString &path, const PeFixedFileInfo &fixed);
// "13.2 Build 2209", the form in which versions are shown everywhere.
QString versionWithBuild(const FileInfo &info);
