#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// State shared by the whole program, owned by the application frame.
struct ProgramState
{
    QString defaultLanguage; // "de" or "us", from the system's country code
    int startPage = 10;
    int selectedAction = -1;
    bool selectActionLoaded = false;
    bool selectActionShown = false;
    bool selectActionCancelled = false;
    QStringList commandItems;
    bool connected = false; // result of the last connection test
    bool automaticUpdateCheck = false;
    bool clipboardOk = false;
    QDateTime fileCreated, fileAccessed, fileWritten; // times of the last file examined
};

ProgramState &programState();
