#pragma once

class QWidget;
struct MailContent;

// Opens a new mail to support in the user's mail program. When there is none, or it
// cannot be started, the web-mail instructions appear instead, led by a sentence that
// says so: the material is on the clipboard either way.
void openSupportMail(QWidget *owner, const MailContent &content);
// The web-mail instructions: paste the clipboard into a new web mail to support.
void showWebmailInstructions(QWidget *owner);
