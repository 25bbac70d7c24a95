#pragma once

#include <QString>

// The ProgramFolder: always the folder of SupportKit's own executable.
QString programFolder();
// Tests run in-process against a fixture installation.
void setProgramFolderForTesting(const QString &folder);

// Pawnsketch comes from Windows, where "Language.DE" and "language.de" are the same
// file. Resolves each missing component of an absolute path case-insensitively;
// returns the path unchanged when nothing matches.
QString findPathCaseInsensitive(const QString &path);

// A file or folder inside the ProgramFolder, given with "/" or "\" separators,
// resolved case-insensitively.
QString installPath(const QString &relative);
