#include "help/ShowHelp.h"

#include "core/HelpViewer.h"
#include "core/Platform.h"
#include "help/HelpFiles.h"
#include "localisation/LanguageState.h"

#include <QApplication>
#include <QFileInfo>
#include <QWidget>

#ifndef Q_OS_WIN
#include "help/HelpWindow.h"
#endif

void ShowHelp(int mode, quint32 contextId, QWidget *owner)
{
#ifndef Q_OS_WIN
    if (!helpViewer())
        setHelpViewer(&HelpWindow::showRequest);
#endif
    const QString file = helpFilePath(languageState().code);
    if (!QFileInfo(file).isFile())
        return;
    if (!owner)
        owner = QApplication::activeWindow();
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
