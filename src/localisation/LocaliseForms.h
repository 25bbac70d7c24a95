#pragma once

#include <QString>
#include <QVariant>

class QWidget;

// Sets code as the current language (refreshing the language files) and localises every
// open form whose object name occurs in formNames. languageByte receives the language
// index; 99 means several forms, whose own bytes (their "languageByte" property) get it.
// Returns the code in use (a missing main file falls back to "de" and leaves the
// missing-file message in PendingMessage).
QString ChangeLanguage(const QString &code, const QString &formNames, int &languageByte);
// Localises one form and its controls from the current language's files.
void localiseForm(QWidget *form);

// The language a form with the option pair optLng_0 (German) / optLng_1 (English) is to
// use: the checked option's, or - when none is checked yet - Pawnsketch's setting, else
// the system default; the matching option is then checked. An unknown code from the
// settings is used as written, with the German option checked.
QString chooseFormLanguage(QWidget *form);

// Which entry of a control group is set, found by name inside scope:
// 1 option-button array "name_N": index of the first checked member, -1 if none;
// 2 list box: first selected row, -1 if none;
// 4 list view: text of item number item;
// 5 check-box array: index of the first checked member, -1 if none;
// other modes: invalid QVariant.
QVariant GetSelectedItem(int mode, const QWidget *scope, const QString &name, int item = 0);

// The send buttons carry "<var1>" in caption and tool tip, which stands for what they send
// (a log, the report). Fills it in every member of the button array arrayName inside
// scope, taking the tool tip from toolTip.
void fillVar1(QWidget *scope, const QString &arrayName, const QString &toolTip, const QString &value);
