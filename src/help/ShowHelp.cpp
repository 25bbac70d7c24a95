#include "help/ShowHelp.h"

#include "core/HelpViewer.h"
#include "core/Platform.h"
#include "core/ProgramFolder.h"
#include "help/ChmData.h"
#include "help/HelpFiles.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QWidget>

#ifndef Q_OS_WIN
#include "help/HelpWindow.h"
#endif

namespace {
bool helpFileReadable(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && chmFileReadable(file);
}

void reportUnreadable(const QString &path, QWidget *owner)
{
    ShowMsg(1, QStringLiteral("M19400"), 48,
            QStringLiteral("Die Hilfedatei kann nicht gelesen werden:@<var1>@@Sie ist besch\u00e4digt oder "
                           "unvollst\u00e4ndig.#Hilfe nicht lesbar"),
            owner, {QDir::toNativeSeparators(path)});
}
} // namespace

void ShowHelp(int mode, quint32 contextId, QWidget *owner)
{
#ifndef Q_OS_WIN
    if (!helpViewer())
        setHelpViewer(&HelpWindow::showRequest);
#endif
    QString file = helpFilePath(languageState().code);
    if (!QFileInfo(file).isFile())
        return;
    if (!owner)
        owner = QApplication::activeWindow();
    if (!helpFileReadable(file)) {
        reportUnreadable(file, owner);
        // As for a missing file of the language: the German help, when that one is sound.
        const QString german = installPath(QStringLiteral("help/pawnsketch_de.chm"));
        if (QFileInfo(file) == QFileInfo(german) || !QFileInfo(german).isFile())
            return;
        if (!helpFileReadable(german)) {
            reportUnreadable(german, owner);
            return;
        }
        file = german;
    }
    Platform::HelpRequest request;
    request.file = file;
    request.contextId = contextId;
    switch (mode) {
    case 1:
        request.command = Platform::HelpCommand::Topic;
        break;
    case 2:
        request.command = Platform::HelpCommand::Index;
        break;
    case 3:
        // The search opens without an owner window.
        request.command = Platform::HelpCommand::Search;
        request.query = QStringLiteral("composer");
        owner = nullptr;
        break;
    default:
        request.command = Platform::HelpCommand::Contents;
        break;
    }
    request.owner = owner ? quintptr(owner->winId()) : 0;
    platform().showHelp(request);
}
