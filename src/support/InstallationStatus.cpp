#include "support/InstallationStatus.h"

#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "support/FileStatus.h"
#include "support/LogFiles.h"

#include <QFileInfo>

FileState readFileState(const QString &path, const QString &languageCode)
{
    FileState state;
    state.path = path;
    const QFileInfo info(path);
    state.exists = info.isFile();
    state.sizeText = FileSizeText(state.exists ? info.size() : 0, state.exists);
    if (state.exists) {
        ProgramState &program = programState();
        program.fileCreated = info.birthTime().toLocalTime();
        program.fileAccessed = info.lastRead().toLocalTime();
        program.fileWritten = info.lastModified().toLocalTime();
        state.dateText = FileDateText(program.fileWritten, languageCode);
    }
    return state;
}

InstallationStatus readInstallationStatus(const QString &languageCode)
{
    return {readFileState(logFilePath(1), languageCode), readFileState(logFilePath(2), languageCode),
            readFileState(installPath(QStringLiteral("res/pwk_err")), languageCode)};
}
