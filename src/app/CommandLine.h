#pragma once

#include <QString>
#include <QStringList>

// Cuts the command line into blank-separated items. True when there are no arguments.
bool GetCommandItems(const QString &commandLine, QStringList &items);

// The error record Pawnsketch passes after "/e": "user=<name>@key=value@...".
struct ErrorRecord
{
    QString userName;
    QStringList values; // the other fields' values in order, at most four
};
ErrorRecord parseErrorRecord(const QString &record);
// The lines of tbErrorMessage, each led by its caption from the label list
// ("Fehlernummer:", ...), joined by CR LF.
QString errorRecordText(const ErrorRecord &record, const QString &labelList);
