#pragma once

#include <QString>

// The compiled help file of a language in the installation's "help" folder; the German
// one when that language has none.
QString helpFilePath(const QString &languageCode);

// The help context id of a place in the program from ini\hlpidx.ini, section [ContentID];
// 0 when the file, the key or a number is missing.
quint32 helpContextId(const QString &key);
