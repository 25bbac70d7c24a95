#pragma once

#include <QList>
#include <QString>

class QWidget;

// A caption without its access-key marks, as a screen reader says it ("&&" is a real "&").
QString withoutAccessKey(const QString &caption);

// Names every field of a page for screen readers from what a sighted user reads beside it:
// the label that is its buddy, else the caption of its frame. Two controls of the page that
// would share a name (two "E-Mail vorbereiten" in different frames) get their frame's
// caption in front. Run again after each change of language.
void nameControls(QWidget *page);

// Gives the buttons (then the labels that lead to a field) an access key of their own on
// each page: shared are the controls visible beside every page, whose keys no page may
// reuse. A key the language file chose is kept while it is free; others take the first free
// letter of a word, else of the caption. Captions set by the program after this lose their
// key until it runs again.
void assignAccessKeys(const QList<QWidget *> &shared, const QList<QWidget *> &pages);
