#pragma once

#include "dialogs/FileFilters.h"

#include <QList>
#include <QString>

#include <functional>

class QWidget;

enum class FileDialogMode
{
    Open, // an existing file
    Save, // a new or existing file; overwriting one is confirmed
};

// Everything a file dialog shows before the user answers.
struct FileDialogRequest
{
    QWidget *owner = nullptr;
    QList<FileFilter> filters; // the first is preselected; none offers every file
    QString title;
    QString initialFolder;
    FileDialogMode mode = FileDialogMode::Open;
};

// Asks the user for a file, offering the types of filterIndex (see fileFilters).
// Returns the chosen path, "" when the user cancels.
QString SelectFile(int filterIndex, QWidget *owner, const QString &title, const QString &initialFolder,
                   FileDialogMode mode = FileDialogMode::Open);
// Runs the dialog for the request; the path chosen or "".
QString ShowOpen(const FileDialogRequest &request);

// Tests never wait on a dialog: when an answerer is set, no dialog is shown and its
// return value is the answer ("" for cancel). An empty function restores the dialog.
using FileDialogAnswerer = std::function<QString(const FileDialogRequest &)>;
void setFileDialogAnswererForTesting(FileDialogAnswerer answerer);
