#include "GuiFixture.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"

#include "ui_frmSupportKit.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

namespace {
QString withoutAccessKey(QString text)
{
    text.replace(QLatin1String("&&"), QStringLiteral("\x01"));
    text.remove(u'&');
    return text.replace(u'\x01', u'&').trimmed();
}

// The texts a sighted user sees in window: where every accessible name must come from.
QStringList visibleTexts(const QWidget &window)
{
    QStringList texts;
    for (const QWidget *w : window.findChildren<QWidget *>()) {
        if (!w->isVisibleTo(&window))
            continue;
        if (auto *label = qobject_cast<const QLabel *>(w))
            texts << label->text();
        else if (auto *group = qobject_cast<const QGroupBox *>(w))
            texts << group->title();
        else if (auto *button = qobject_cast<const QAbstractButton *>(w))
            texts << button->text();
        texts << w->toolTip();
    }
    for (QString &t : texts)
        t = withoutAccessKey(t);
    return texts;
}
} // namespace

// Every page of the main window and the action dialog as a screen-reader and keyboard
// user meets it, through the same accessibility interfaces that AT-SPI and UI Automation
// read.
class TestAccessibility : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_install;
    QList<ShownMessage> m_messages;

private slots:
    void init()
    {
        GuiFixture::resetProgram(m_messages);
        frmSupportKit::setActionDialogAnswererForTesting({});
        m_install = std::make_unique<QTemporaryDir>();
        QVERIFY(GuiFixture::makeInstallation(m_install->path()));
    }

    void everyPage_data()
    {
        QTest::addColumn<int>("page"); // -1: the action dialog
        QTest::addColumn<bool>("english");
        for (bool english : {false, true}) {
            QTest::addRow("action dialog %s", english ? "us" : "de") << -1 << english;
            for (int page = 0; page < 12; ++page) {
                if (page != 7)
                    QTest::addRow("page %d %s", page, english ? "us" : "de") << page << english;
            }
        }
    }
    void everyPage()
    {
        QFETCH(int, page);
        QFETCH(bool, english);
        std::unique_ptr<QWidget> window;
        QWidget *pageWidget = nullptr;
        if (page < 0) {
            auto *dialog = new frmSelectAction;
            window.reset(dialog);
            dialog->Form_Load();
            if (english)
                GuiFixture::control<QAbstractButton>(*dialog, "optLng_1")->click();
            pageWidget = dialog;
        } else {
            auto *main = new frmSupportKit;
            window.reset(main);
            QVERIFY(main->Form_Load(QStringLiteral("1")));
            if (english)
                main->form()->optLng_1->click();
            pageWidget = main->form()->SSTab19->widget(page);
        }
#ifndef Q_OS_WIN // the Windows package brings Qt's translations, not the test folder
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), english ? "Cancel" : "Abbrechen");
#endif
        window->show();
        QApplication::setActiveWindow(window.get());
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        if (auto *main = qobject_cast<frmSupportKit *>(window.get())) {
            main->showPage(page);
            QCOMPARE(main->currentPage(), page);
        }

        // The controls of the page and those of the window that stay visible on every page.
        QList<QWidget *> controls;
        for (QWidget *w : window->findChildren<QWidget *>()) {
            if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(window.get()) && w->isEnabled() &&
                !w->focusProxy())
                controls << w;
        }
        QVERIFY(!controls.isEmpty());
        const QStringList texts = visibleTexts(*window);
        // Counters carry their unit in the language shown from the start.
        QVERIFY(!english || !texts.contains(QStringLiteral("0 Zeichen")));
        QHash<QString, QString> names;
        QHash<QChar, QString> accessKeys;
        for (QWidget *w : std::as_const(controls)) {
            const QString what = w->objectName() + u' ' + w->metaObject()->className();
            // The text views are checked below for being reachable only.
            if (w->inherits("SharedTextView"))
                continue;
            const QString name = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name).trimmed();
            QVERIFY2(!name.isEmpty(), qPrintable("no name: " + what));
            // A name shared on the page has its frame's caption in front. Qt names its own
            // tab-bar buttons.
            for (const QString &part : name.split(QStringLiteral(" \u2013 ")))
                QVERIFY2(texts.contains(part) || qobject_cast<QTabBar *>(w->parentWidget()),
                         qPrintable("not a visible text: " + what + " \"" + name + u'"'));
            QVERIFY2(!names.contains(name),
                     qPrintable("twice \"" + name + "\": " + what + ", " + names[name]));
            names.insert(name, what);
        }
        for (QWidget *w : window->findChildren<QWidget *>()) {
            QString text;
            if (auto *button = qobject_cast<QAbstractButton *>(w))
                text = button->text();
            else if (auto *label = qobject_cast<QLabel *>(w); label && label->buddy())
                text = label->text();
            if (!w->isVisibleTo(window.get()) || text.isEmpty())
                continue;
            const QKeySequence key = QKeySequence::mnemonic(text);
            QVERIFY2(!key.isEmpty() || !qobject_cast<QPushButton *>(w), qPrintable("no access key: " + text));
            if (key.isEmpty())
                continue;
            const QChar letter = QChar(key[0].key()).toLower();
            QVERIFY2(!accessKeys.contains(letter),
                     qPrintable("access key twice: " + text + ", " + accessKeys[letter]));
            accessKeys.insert(letter, text);
        }

        // Tab alone reaches every control, stays on the page and follows the reading order:
        // within the page a step goes up only into a column further right.
        QWidget *first = controls.first();
        first->setFocus(Qt::TabFocusReason);
        QTRY_COMPARE(QApplication::focusWidget(), first);
        QList<QWidget *> visited{first};
        for (int step = 0; step < 3 * controls.size(); ++step) {
            QWidget *from = QApplication::focusWidget();
            QTest::keyClick(from, Qt::Key_Tab);
            QWidget *to = QApplication::focusWidget();
            QVERIFY2(to && to != from, qPrintable("Tab stays on " + from->objectName()));
            QVERIFY2(controls.contains(to), qPrintable("Tab leaves the page for " + to->objectName()));
            const QPoint a = from->mapTo(window.get(), QPoint()), b = to->mapTo(window.get(), QPoint());
            if (pageWidget->isAncestorOf(from) && pageWidget->isAncestorOf(to) && !visited.contains(to))
                QVERIFY2(b.y() >= a.y() - 4 || b.x() >= a.x() + from->width(),
                         qPrintable("Tab goes back from " + from->objectName() + " to " + to->objectName()));
            if (to == first)
                break;
            visited << to;
        }
        // Of a group of options Tab reaches one, the arrow keys the others.
        const auto reached = [&visited](QWidget *w) {
            return std::any_of(visited.begin(), visited.end(), [w](QWidget *v) {
                return v == w || (qobject_cast<QRadioButton *>(w) && qobject_cast<QRadioButton *>(v) &&
                                  v->parentWidget() == w->parentWidget());
            });
        };
        for (QWidget *w : std::as_const(controls))
            QVERIFY2(reached(w), qPrintable("Tab never reaches " + w->objectName()));
    }
};

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
