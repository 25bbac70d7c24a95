#pragma once

#include "maintenance/ProgramFileReplace.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

// Backups of the program file live in backup\pwk_exe of the ProgramFolder. Two kinds of
// name meet there: the backups offered for restore ("pwk_exe_*.bak") and those the
// installs of picked files write ("pawnsketch_<date>_<time>.bak"), which are kept but
// deliberately not offered.

QString programFilePath();
QString backupFolderPath();

// "pwk_exe_" at the start and ".bak" at the end, both without regard to case.
bool isRestorableBackup(const QString &fileName);
// Names of the restorable backups in folder, in descending name order (the newest first
// for names carrying a version or a date that sorts so); empty for a missing folder.
QStringList restorableBackups(const QString &folder);

// "pawnsketch_" + MMDDYYYY + "_" + HHMMSS (24-hour clock) + ".bak".
QString backupFileName(const QDateTime &when);

struct PickedInstallResult
{
    bool attempted = false; // program file and picked file both existed
    bool backupMade = false;
    QString backupFile;
    ReplaceResult replace; // ok when the picked file is now the program file
};

// Installs a picked update or beta file: only when both files exist; backupFolder is
// created when missing (one level: its parent must exist), the program file copied there
// under backupFileName(when), replacing a backup of the same name, and only when that
// backup exists is the program file replaced by the picked one.
PickedInstallResult installPickedFile(const QString &programFile, const QString &pickedFile,
                                      const QString &backupFolder, const QDateTime &when);
