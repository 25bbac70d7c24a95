#pragma once

#include <QString>
#include <QStringList>

struct MessageText
{
    QString message;
    QString title;
};

// Turns a message text "message#title" into what the box shows: placeholders <var1>..<var5>
// filled everywhere (a missing value counts as empty), "@" as a line break (CR),
// "<<at>>" and "<<numbersign>>" as literal "@" and "#". The title only gets its placeholders.
MessageText ComposeMessage(const QString &text, const QStringList &vars);

// The text of message key from lng_msg of the current language, or germanDefault when the
// file or the key gives nothing.
QString messageText(const QString &key, const QString &germanDefault);
