#pragma once

#include <QByteArray>
#include <QString>

// Pawnsketch writes its ini, language and log files in whatever encoding the user's
// editor or its own version used: UTF-8 (with or without BOM) or Windows-1252.
// Every text file of the installation is read through these two functions.
QString decodeInstallationText(const QByteArray &bytes);
// The rule decodeInstallationText applies to bytes, found without decoding them: UTF-8 (after
// a BOM or when valid) or not.
bool isInstallationUtf8(QByteArrayView bytes);
// A piece of such a file whose rule is already known (from a pass over the whole file),
// cut at character boundaries.
QString decodeInstallationPiece(QByteArrayView bytes, bool utf8);
// Settings and lists that Pawnsketch or a person writes stay far below this; a larger file
// is none of them and reads as missing.
constexpr qint64 kSettingsFileLimit = 16 * 1024 * 1024;
// Reads the whole file; false (and an empty text) when it is no regular file (a FIFO or a
// device could block the reader for ever), holds more than maxBytes or cannot be read.
bool readInstallationText(const QString &path, QString &text, qint64 maxBytes);
