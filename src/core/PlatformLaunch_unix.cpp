#include "core/NativePlatform.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

// Pawnsketch is a Windows program: here Wine runs it. Wine takes the program and each
// switch as arguments of their own, and Pawnsketch finds its files from its own folder.
Platform::LaunchResult NativePlatform::startProgram(const QString &path, const QString &parameters)
{
    const QString wine = QStandardPaths::findExecutable(QStringLiteral("wine"));
    if (wine.isEmpty())
        return LaunchResult::RunnerMissing;
    QStringList arguments{path};
    arguments += parameters.split(u' ', Qt::SkipEmptyParts);
    return QProcess::startDetached(wine, arguments, QFileInfo(path).absolutePath()) ? LaunchResult::Started
                                                                                    : LaunchResult::Failed;
}
