#pragma once

#include <QByteArray>
#include <QString>

// Pawnsketch writes its ini, language and log files in whatever encoding the user's
// editor or its own version used: UTF-8 (with or without BOM) or Windows-1252.
// Every text file of the installation is read through these two functions.
QString decodeInstallationText(const QByteArray &bytes);
// Reads the whole file; false (and an empty text) when it cannot be read.
bool readInstallationText(const QString &path, QString &text);
