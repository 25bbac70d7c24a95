#pragma once

#include "maintenance/ProgramFileReplace.h"

#include <QString>

class QLabel;
class QWidget;

// What the update, beta and repair pages share when they replace the program file.

// Replaces target (the program file) by source, for the restore of a backup and the
// install of a download: refuses while Pawnsketch runs, reports a missing source, names
// the failed step when the replacement fails (the program file is then as it was) and
// tells the new version when it succeeded. True when the program file was replaced.
bool ReplaceProgramFile(const QString &target, const QString &source, QWidget *owner);

// The message that names the step a replacement failed at.
void showReplaceFailure(const ReplaceResult &result, QWidget *owner);

// Installs a file the user picked after a dated backup of the program file; a failed
// replacement is reported. True when the program file was replaced.
bool installPickedProgramFile(const QString &pickedFile, QWidget *owner);

// Shows path (lower-cased unless told otherwise) in label, shortened with "..." (MaxDirLen)
// until it fits the label's width; the whole path is in the tool tip.
void showPathInLabel(QLabel *label, const QString &path, bool lowerCase = true);

// text as a message placeholder value: "@" and "#" stay literal characters.
QString messageLiteral(QString text);
