#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

class QWidget;

// Windows message-box result codes, which callers compare against.
enum MsgResult
{
    IDOK = 1,
    IDCANCEL = 2,
    IDABORT = 3,
    IDRETRY = 4,
    IDIGNORE = 5,
    IDYES = 6,
    IDNO = 7,
};

// Shows the message of key (from lng_msg, else defaultText) with the Windows style value
// (buttons 0 OK, 1 OK/Cancel, 2 Abort/Retry/Ignore, 3 Yes/No/Cancel, 4 Yes/No, 5 Retry/Cancel;
// icons 16, 32, 48, 64), centred over owner. Mode 1 shows and returns the pressed button's
// code; any other mode shows nothing and returns an invalid QVariant. A secondParagraph
// (already composed) follows the message after a blank line.
QVariant ShowMsg(int mode, const QString &key, int style, const QString &defaultText,
                 QWidget *owner = nullptr, const QStringList &vars = {}, const QString &secondParagraph = {});
// Shows the prepared PendingMessage, if any, and clears it.
QVariant ShowPendingMessage(QWidget *owner, const QStringList &vars = {});

struct ShownMessage
{
    QString key;
    int style = 0;
    QString message; // as composed: line breaks are CR
    QString title;
    QWidget *owner = nullptr;
};

// Offscreen tests must never block on a box: when an answerer is set, no box is shown and
// its return value is the result.
using MessageAnswerer = std::function<int(const ShownMessage &)>;
void setMessageAnswererForTesting(MessageAnswerer answerer);
