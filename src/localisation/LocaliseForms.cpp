#include "localisation/LocaliseForms.h"

#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "localisation/QtTranslations.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QTreeWidget>

#include <algorithm>

namespace {
// The key of a control: its tag, or its index in a control array when the tag is empty.
// A control that is neither tagged nor part of an array has no key and stays as designed.
QString controlKey(const QObject *control)
{
    const QString tag = control->property("tag").toString();
    if (!tag.isEmpty())
        return tag;
    const QVariant index = control->property("index");
    return index.isValid() ? index.toString() : QString();
}

struct Texts
{
    QString caption;
    QString toolTip;
};

Texts lookUp(QString key)
{
    const QString file = GetLngFile(key);
    const QString value = ReadIniString(languageState().code, key, QString(), languageFilePath(file));
    if (value.contains(u'|'))
        return {GetField(value, 1, QStringLiteral("|")), GetField(value, 2, QStringLiteral("|"))};
    return {value, QString()};
}

void setToolTip(QWidget *w, const Texts &t)
{
    if (!t.toolTip.isEmpty())
        w->setToolTip(t.toolTip);
}

void localiseTabs(QTabWidget *tabs, QString tag)
{
    const QString file = GetLngFile(tag);
    for (int i = 0; i < tabs->count(); ++i) {
        const QString key = QStringLiteral("S%1T%2").arg(tag).arg(i);
        const QString value = ReadIniString(languageState().code, key, QString(), languageFilePath(file));
        const QString caption = GetField(value, 1, QStringLiteral("|"));
        if (!caption.isEmpty())
            tabs->setTabText(i, caption);
    }
}

void localiseControl(QObject *object)
{
    if (auto *action = qobject_cast<QAction *>(object)) {
        if (action->isSeparator() || action->text() == QLatin1String("-"))
            return;
        const QString key = controlKey(action);
        if (key.isEmpty())
            return;
        const Texts t = lookUp(key);
        if (!t.caption.isEmpty())
            action->setText(t.caption);
        return;
    }
    auto *w = qobject_cast<QWidget *>(object);
    if (!w)
        return;
    // Text-less controls are never touched.
    if (qobject_cast<QAbstractItemView *>(w) || qobject_cast<QProgressBar *>(w) ||
        qobject_cast<QScrollBar *>(w))
        return;
    if (auto *tabs = qobject_cast<QTabWidget *>(w)) {
        const QString tag = tabs->property("tag").toString();
        if (!tag.isEmpty())
            localiseTabs(tabs, tag);
        return;
    }
    const QString key = controlKey(w);
    if (key.isEmpty())
        return;
    const Texts t = lookUp(key);
    if (auto *edit = qobject_cast<QLineEdit *>(w)) {
        if (!t.caption.isEmpty())
            edit->setText(t.caption);
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(w)) {
        if (!t.caption.isEmpty())
            plain->setPlainText(t.caption);
    } else if (auto *rich = qobject_cast<QTextEdit *>(w)) {
        if (!t.caption.isEmpty())
            rich->setPlainText(t.caption);
    } else if (auto *label = qobject_cast<QLabel *>(w)) {
        // A label that shows a picture is an image: only its tool-tip is text.
        const bool isImage = !label->pixmap().isNull() || label->property("image").toBool();
        if (!isImage && !t.caption.isEmpty())
            label->setText(t.caption);
    } else if (auto *button = qobject_cast<QAbstractButton *>(w)) {
        if (!t.caption.isEmpty())
            button->setText(t.caption);
    } else if (auto *group = qobject_cast<QGroupBox *>(w)) {
        if (!t.caption.isEmpty())
            group->setTitle(t.caption);
    }
    setToolTip(w, t);
}
} // namespace

void localiseForm(QWidget *form)
{
    const QString tag = form->property("tag").toString();
    if (!tag.isEmpty()) {
        QString bare = tag;
        const QString file = GetLngFile(bare);
        // The form's caption is read with its key as written, suffix included.
        const QString caption = ReadIniString(languageState().code, tag, QString(), languageFilePath(file));
        if (!caption.isEmpty())
            form->setWindowTitle(caption);
    }
    const QList<QObject *> controls = form->findChildren<QObject *>();
    for (QObject *control : controls)
        localiseControl(control);
}

QString ChangeLanguage(const QString &code, const QString &formNames, int &languageByte)
{
    const QString used = RefreshLngFiles(code);
    useQtTranslation(used);
    const QString wanted = formNames.toLower();
    const QWidgetList forms = QApplication::topLevelWidgets();
    for (QWidget *form : forms) {
        const QString name = form->objectName().toLower();
        if (name.isEmpty() || !wanted.contains(name))
            continue;
        if (languageByte == 99) {
            if (name == QLatin1String("frmuserstartparams") || name == QLatin1String("frmselectaction"))
                form->setProperty("languageByte", languageState().index);
        } else {
            languageByte = languageState().index;
        }
        localiseForm(form);
    }
    return used;
}

QString chooseFormLanguage(QWidget *form)
{
    const int selected = GetSelectedItem(1, form, QStringLiteral("optLng")).toInt();
    if (selected != -1)
        return selected == 0 ? QStringLiteral("de") : QStringLiteral("us");
    QString code = ReadIniString(QStringLiteral("Sprache"), QStringLiteral("Sprache"), QString(),
                                 installPath(QStringLiteral("ini/pawnsketch.ini")));
    if (code.isEmpty())
        code = programState().defaultLanguage;
    const bool english = code.toLower() == QLatin1String("us");
    if (auto *option = form->findChild<QAbstractButton *>(english ? QStringLiteral("optLng_1")
                                                                  : QStringLiteral("optLng_0")))
        option->setChecked(true);
    return code;
}

namespace {
template <typename T> QList<T *> arrayMembers(const QWidget *scope, const QString &name)
{
    QList<T *> members;
    const QString prefix = name + u'_';
    const QList<T *> all = scope->findChildren<T *>();
    for (T *w : all) {
        if (w->objectName().startsWith(prefix) && w->property("index").isValid())
            members.append(w);
    }
    std::sort(members.begin(), members.end(),
              [](T *a, T *b) { return a->property("index").toInt() < b->property("index").toInt(); });
    return members;
}
} // namespace

QVariant GetSelectedItem(int mode, const QWidget *scope, const QString &name, int item)
{
    if (!scope)
        return {};
    switch (mode) {
    case 1:
    case 5: {
        for (QAbstractButton *b : arrayMembers<QAbstractButton>(scope, name)) {
            if (b->isChecked())
                return b->property("index").toInt();
        }
        return -1;
    }
    case 2: {
        const auto *list = scope->findChild<QListWidget *>(name);
        if (!list)
            return -1;
        for (int row = 0; row < list->count(); ++row) {
            if (list->item(row)->isSelected())
                return row;
        }
        return -1;
    }
    case 4: {
        const auto *view = scope->findChild<QTreeWidget *>(name);
        if (!view || item < 0 || item >= view->topLevelItemCount())
            return {};
        return view->topLevelItem(item)->text(0);
    }
    default:
        return {};
    }
}

void fillVar1(QWidget *scope, const QString &arrayName, const QString &toolTip, const QString &value)
{
    const QList<QPushButton *> buttons = scope->findChildren<QPushButton *>();
    for (QPushButton *b : buttons) {
        if (!b->objectName().startsWith(arrayName + u'_'))
            continue;
        b->setToolTip(QString(toolTip).replace(QLatin1String("<var1>"), value));
        b->setText(b->text().replace(QLatin1String("<var1>"), value));
    }
}
