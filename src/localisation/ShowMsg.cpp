#include "localisation/ShowMsg.h"

#include "localisation/Messages.h"
#include "localisation/PendingMessage.h"

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace {
MessageAnswerer &answerer()
{
    static MessageAnswerer a;
    return a;
}

struct ButtonChoice
{
    QMessageBox::StandardButton button;
    int result;
};

QList<ButtonChoice> buttonsFor(int style)
{
    switch (style & 0x0F) {
    case 1:
        return {{QMessageBox::Ok, IDOK}, {QMessageBox::Cancel, IDCANCEL}};
    case 2:
        return {
            {QMessageBox::Abort, IDABORT}, {QMessageBox::Retry, IDRETRY}, {QMessageBox::Ignore, IDIGNORE}};
    case 3:
        return {{QMessageBox::Yes, IDYES}, {QMessageBox::No, IDNO}, {QMessageBox::Cancel, IDCANCEL}};
    case 4:
        return {{QMessageBox::Yes, IDYES}, {QMessageBox::No, IDNO}};
    case 5:
        return {{QMessageBox::Retry, IDRETRY}, {QMessageBox::Cancel, IDCANCEL}};
    default:
        return {{QMessageBox::Ok, IDOK}};
    }
}

QMessageBox::Icon iconFor(int style)
{
    switch (style & 0xF0) {
    case 16:
        return QMessageBox::Critical;
    case 32:
        return QMessageBox::Question;
    case 48:
        return QMessageBox::Warning;
    case 64:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

int showBox(const ShownMessage &shown)
{
    QMessageBox box(shown.owner);
    box.setIcon(iconFor(shown.style));
    box.setWindowTitle(shown.title);
    box.setTextFormat(Qt::PlainText);
    // The texts use a bare CR as line break, which Qt would not break at.
    QString text = shown.message;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    box.setText(text);

    const QList<ButtonChoice> choices = buttonsFor(shown.style);
    QHash<QAbstractButton *, int> results;
    for (const ButtonChoice &choice : choices)
        results.insert(box.addButton(choice.button), choice.result);
    // Default button: 0x100 second, 0x200 third; Escape acts like Windows: Cancel where there
    // is one, and the single OK of an OK box.
    const int defaultIndex = (shown.style & 0x300) >> 8;
    if (defaultIndex < choices.size())
        box.setDefaultButton(choices[defaultIndex].button);
    for (const ButtonChoice &choice : choices) {
        if (choice.result == IDCANCEL || choices.size() == 1)
            box.setEscapeButton(box.button(choice.button));
    }
    box.exec();
    return results.value(box.clickedButton(), choices.size() == 1 ? choices.first().result : IDCANCEL);
}
} // namespace

void setMessageAnswererForTesting(MessageAnswerer a)
{
    answerer() = std::move(a);
}

QVariant ShowMsg(int mode, const QString &key, int style, const QString &defaultText, QWidget *owner,
                 const QStringList &vars, const QString &secondParagraph)
{
    MessageText composed = ComposeMessage(messageText(key, defaultText), vars);
    if (!secondParagraph.isEmpty())
        composed.message += QStringLiteral("\r\r") + secondParagraph;
    if (mode != 1)
        return {};
    ShownMessage shown{key, style, composed.message, composed.title, owner};
    if (answerer())
        return answerer()(shown);
    return showBox(shown);
}

QVariant ShowPendingMessage(QWidget *owner, const QStringList &vars)
{
    PendingMessage &pending = pendingMessage();
    if (!pending.isSet())
        return {};
    const PendingMessage msg = pending;
    pending.clear();
    return ShowMsg(1, QString(), msg.style, msg.text, owner, vars);
}
