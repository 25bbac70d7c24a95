#include "localisation/AccessibleNames.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QHash>
#include <QLabel>
#include <QPushButton>
#include <QSet>

#include <algorithm>

namespace {
// Where the access key of caption is: the index of its letter, -1 when it has none.
qsizetype accessKeyIndex(const QString &caption)
{
    for (qsizetype i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != u'&')
            continue;
        if (caption[i + 1] != u'&')
            return i + 1;
        ++i;
    }
    return -1;
}

const QGroupBox *frameOf(const QWidget *w, const QWidget *page)
{
    for (const QWidget *p = w->parentWidget(); p && p != page; p = p->parentWidget()) {
        if (auto *group = qobject_cast<const QGroupBox *>(p); group && !group->title().isEmpty())
            return group;
    }
    return nullptr;
}

QString groupTitle(const QWidget *w, const QWidget *page)
{
    const QGroupBox *frame = frameOf(w, page);
    return frame ? withoutAccessKey(frame->title()) : QString();
}

bool takesFocus(const QWidget *w)
{
    return (w->focusPolicy() & Qt::TabFocus) && !w->focusProxy();
}

// The captions that carry access keys, buttons first: they act, labels only lead on.
QList<QWidget *> keyHolders(QWidget *page)
{
    QList<QWidget *> pushButtons, otherButtons, labels;
    for (QWidget *w : page->findChildren<QWidget *>()) {
        if (qobject_cast<QPushButton *>(w))
            pushButtons << w;
        else if (qobject_cast<QAbstractButton *>(w))
            otherButtons << w;
        else if (auto *label = qobject_cast<QLabel *>(w); label && label->buddy())
            labels << w;
    }
    return pushButtons + otherButtons + labels;
}

QString captionOf(const QWidget *w)
{
    if (auto *button = qobject_cast<const QAbstractButton *>(w))
        return button->text();
    return static_cast<const QLabel *>(w)->text();
}

void setCaption(QWidget *w, const QString &caption)
{
    if (auto *button = qobject_cast<QAbstractButton *>(w))
        button->setText(caption);
    else
        static_cast<QLabel *>(w)->setText(caption);
}

// The caption with a free access key, or without any when none of its letters is free.
QString withFreeKey(const QString &caption, QSet<QChar> &used)
{
    QString bare = caption;
    if (const qsizetype key = accessKeyIndex(bare); key > 0)
        bare.remove(key - 1, 1);
    qsizetype chosen = -1;
    for (int wordStartsOnly = 1; wordStartsOnly >= 0 && chosen < 0; --wordStartsOnly) {
        for (qsizetype i = 0; i < bare.size(); ++i) {
            const QChar c = bare[i];
            const bool wordStart = i == 0 || !bare[i - 1].isLetterOrNumber();
            if (c.isLetterOrNumber() && (wordStart || !wordStartsOnly) && !used.contains(c.toLower()) &&
                (i == 0 || bare[i - 1] != u'&')) {
                chosen = i;
                break;
            }
        }
    }
    if (chosen < 0)
        return bare;
    used.insert(bare[chosen].toLower());
    return bare.insert(chosen, u'&');
}

void assignKeys(const QList<QWidget *> &holders, QSet<QChar> &used)
{
    QList<QWidget *> without;
    for (QWidget *w : holders) {
        const QString caption = captionOf(w);
        const qsizetype key = accessKeyIndex(caption);
        if (key >= 0 && !used.contains(caption[key].toLower()))
            used.insert(caption[key].toLower());
        else if (!withoutAccessKey(caption).isEmpty())
            without << w;
    }
    for (QWidget *w : std::as_const(without))
        setCaption(w, withFreeKey(captionOf(w), used));
}
} // namespace

QString withoutAccessKey(const QString &caption)
{
    QString text;
    text.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == u'&' && i + 1 < caption.size())
            ++i;
        text += caption[i];
    }
    return text.trimmed();
}

void nameControls(QWidget *page)
{
    QList<QWidget *> controls;
    QSet<QWidget *> byLabel;
    for (QWidget *w : page->findChildren<QWidget *>()) {
        if (auto *label = qobject_cast<QLabel *>(w); label && label->buddy()) {
            label->buddy()->setAccessibleName(withoutAccessKey(label->text()));
            byLabel.insert(label->buddy());
        }
        if (takesFocus(w))
            controls << w;
    }
    QHash<QString, QList<QWidget *>> byName;
    for (QWidget *w : std::as_const(controls)) {
        QString name;
        if (auto *button = qobject_cast<QAbstractButton *>(w)) {
            button->setAccessibleName(QString()); // its caption, as Qt reads it
            name = withoutAccessKey(button->text());
        } else if (byLabel.contains(w)) {
            name = w->accessibleName();
        } else {
            name = groupTitle(w, page);
            w->setAccessibleName(name);
        }
        byName[name] << w;
    }
    for (const QList<QWidget *> &same : std::as_const(byName)) {
        if (same.size() < 2)
            continue;
        for (QWidget *w : same) {
            // The one in the frame around the others keeps its plain name.
            const QGroupBox *box = frameOf(w, page);
            if (std::any_of(same.begin(), same.end(),
                            [&](QWidget *other) { return box && box->isAncestorOf(other) && other != w; }) &&
                std::none_of(same.begin(), same.end(),
                             [&](QWidget *other) { return other != w && frameOf(other, page) == box; }))
                continue;
            const QString frame = groupTitle(w, page);
            const QString own = qobject_cast<QAbstractButton *>(w)
                                    ? withoutAccessKey(static_cast<QAbstractButton *>(w)->text())
                                    : w->accessibleName();
            if (!frame.isEmpty() && frame != own)
                w->setAccessibleName(frame + QStringLiteral(" \u2013 ") + own);
        }
    }
}

void assignAccessKeys(const QList<QWidget *> &shared, const QList<QWidget *> &pages)
{
    QSet<QChar> sharedKeys;
    QList<QWidget *> sharedHolders;
    for (QWidget *w : shared) {
        if (qobject_cast<QAbstractButton *>(w) || qobject_cast<QLabel *>(w))
            sharedHolders << w;
    }
    assignKeys(sharedHolders, sharedKeys);
    for (QWidget *page : pages) {
        QSet<QChar> used = sharedKeys;
        assignKeys(keyHolders(page), used);
    }
}
