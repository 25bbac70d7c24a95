#include "maintenance/ProgramFileActions.h"

#include "dialogs/PathHelpers.h"
#include "localisation/ShowMsg.h"
#include "maintenance/Backups.h"
#include "maintenance/FileInfo.h"

#include <QDir>
#include <QFontMetrics>
#include <QLabel>

bool ReplaceProgramFile(const QString &target, const QString &source, QWidget *owner)
{
    if (IsProcessRunning(QStringLiteral("pawnsketch.exe"))) {
        ShowMsg(1, QStringLiteral("M19210"), 0, QStringLiteral("Bitte beenden Sie zuerst Pawnsketch!"),
                owner);
        return false;
    }
    if (!FileExists(source)) {
        ShowMsg(1, QStringLiteral("M19211"), 0, QStringLiteral("Backup-Datei nicht gefunden!"), owner);
        return false;
    }
    const ReplaceResult result = runKeepingEventsFlowing([&] { return replaceFileSafely(target, source); });
    if (!result.ok) {
        showReplaceFailure(result, owner);
        return false;
    }
    // The same words when a download was installed: users know this box by them.
    ShowMsg(
        1, QStringLiteral("M19212"), 64,
        QStringLiteral("Das Restore wurde erfolgreich ausgeführt!@Folgende Programmversion von Pawnsketch "
                       "wurde wiederhergestellt:@@<var1>#Restore einer Programmversion"),
        owner, {messageLiteral(versionWithBuild(GetFileInfo(target)))});
    return true;
}

bool installPickedProgramFile(const QString &pickedFile, QWidget *owner)
{
    const QString programFile = programFilePath();
    const QString backupFolder = backupFolderPath();
    const QDateTime now = QDateTime::currentDateTime();
    const PickedInstallResult result = runKeepingEventsFlowing(
        [&] { return installPickedFile(programFile, pickedFile, backupFolder, now); });
    // Without a backup the program file is not touched, and that is all.
    if (!result.backupMade)
        return false;
    showReplaceFailure(result.replace, owner);
    return result.replace.ok;
}

void showReplaceFailure(const ReplaceResult &result, QWidget *owner)
{
    QString key;
    QString text;
    switch (result.failedStep) {
    case ReplaceStep::None:
        return;
    case ReplaceStep::Copy:
        key = QStringLiteral("M19215");
        text = QStringLiteral(
            "Die neue Programmdatei konnte nicht in den Programmordner kopiert werden:@<var1>@@"
            "Die bisherige Programmdatei ist unverändert.#Programmdatei nicht ersetzt");
        break;
    case ReplaceStep::Flush:
        key = QStringLiteral("M19216");
        text = QStringLiteral(
            "Die neue Programmdatei konnte nicht auf den Datenträger geschrieben werden:@"
            "<var1>@@Die bisherige Programmdatei ist unverändert.#Programmdatei nicht ersetzt");
        break;
    case ReplaceStep::Check:
        key = QStringLiteral("M19217");
        text =
            QStringLiteral("Die Kopie der neuen Programmdatei ist unvollständig oder keine Programmdatei mit "
                           "Versionsangaben (<var1>).@@Die bisherige Programmdatei ist unverändert."
                           "#Programmdatei nicht ersetzt");
        break;
    case ReplaceStep::Rename:
        key = QStringLiteral("M19218");
        text = QStringLiteral("Die neue Programmdatei konnte nicht an die Stelle der bisherigen gesetzt "
                              "werden:@<var1>@@Die bisherige Programmdatei ist unverändert."
                              "#Programmdatei nicht ersetzt");
        break;
    case ReplaceStep::Locked:
        key = QStringLiteral("M19219");
        text =
            QStringLiteral("Die Programmdatei wird von einem anderen Programm verwendet (zum Beispiel von "
                           "Pawnsketch oder einem Virenscanner) und konnte nicht ersetzt werden:@<var1>@@"
                           "Die bisherige Programmdatei ist unverändert. Bitte versuchen Sie es in einigen "
                           "Sekunden noch einmal.#Programmdatei nicht ersetzt");
        break;
    }
    ShowMsg(1, key, 48, text, owner, {messageLiteral(result.error)});
}

void showPathInLabel(QLabel *label, const QString &path, bool lowerCase)
{
    const QString lower =
        lowerCase ? QDir::toNativeSeparators(path).toLower() : QDir::toNativeSeparators(path);
    label->setToolTip(QDir::toNativeSeparators(path));
    const QFontMetrics metrics(label->font());
    // A label not laid out yet (a hidden page) has no width to go by: keep it all.
    const int width = label->width() > 20 ? label->contentsRect().width() : 0;
    QString shown = lower;
    for (int length = int(lower.size()); width > 0 && length > 4; --length) {
        shown = MaxDirLen(lower, length);
        if (metrics.horizontalAdvance(shown) <= width)
            break;
    }
    label->setText(shown);
}

QString messageLiteral(QString text)
{
    text.replace(u'@', QLatin1String("<<at>>"));
    text.replace(u'#', QLatin1String("<<numbersign>>"));
    return text;
}
