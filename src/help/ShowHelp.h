#pragma once

#include <QtGlobal>

class QWidget;

// Opens the help of the current language (German when that language has none) through the
// platform's help viewer. mode: 0 table of contents, 1 the topic of contextId, 2 index,
// 3 full-text search for "composer". owner: the window the viewer belongs to, the active
// one when none is given. Nothing happens when there is no help file at all; a file that
// cannot be read is named in a message, and the German help opens instead when it can.
void ShowHelp(int mode, quint32 contextId, QWidget *owner = nullptr);
