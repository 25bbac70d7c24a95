#pragma once

#include <QString>

// The files the status labels speak of, as they are now.
struct FileState
{
    QString path;
    bool exists = false;
    QString sizeText; // "0 KB" for a missing file
    QString dateText; // last write, local time, in the language's pattern; "" when unknown
};

struct InstallationStatus
{
    FileState startLog;    // logfiles\startlog.txt
    FileState errorLog;    // logfiles\errorlog.txt
    FileState errorRecord; // res\pwk_err, Pawnsketch's last error record
};

// Looks at one file; the three times of the file are kept in the program state.
FileState readFileState(const QString &path, const QString &languageCode);
InstallationStatus readInstallationStatus(const QString &languageCode);
