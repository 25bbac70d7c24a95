#pragma once

#include <QString>

// Switches Qt's own texts (file dialogs, message-box buttons, context menus) to the
// language of code ("de", "us", ...). Qt's translation files are looked for in the
// "translations" folder beside the program, then in Qt's own; a language Qt has no file for
// leaves Qt's English. Returns false then.
bool useQtTranslation(const QString &code);
