#include "GuiFixture.h"
#include "app/frmSelectAction.h"
#include "app/frmSupportKit.h"
#include "localisation/AccessibleNames.h"

#include "ui_frmSupportKit.h"

#include <QtTest>
#include <QtWidgets>

// Every page of the main window and the action dialog as screen readers (AT-SPI, UIA) see it.
class TestAccessibility : public QObject
{
    Q_OBJECT

private slots:
    void everyPage_data()
    {
        QTest::addColumn<int>("page"); // -1: the action dialog
        QTest::addColumn<bool>("english");
        for (int row = 0; row < 26; ++row) {
            if (row % 13 != 8)
                QTest::addRow("%d %d", row % 13 - 1, row / 13) << row % 13 - 1 << (row >= 13);
        }
    }
    void everyPage()
    {
        QFETCH(int, page);
        QFETCH(bool, english);
        static QList<ShownMessage> messages;
        GuiFixture::resetProgram(messages);
        QTemporaryDir install;
        QVERIFY(GuiFixture::makeInstallation(install.path()));
        std::unique_ptr<QWidget> window(page < 0 ? static_cast<QWidget *>(new frmSelectAction)
                                                 : new frmSupportKit);
        auto *main = qobject_cast<frmSupportKit *>(window.get());
        QVERIFY(main ? main->Form_Load("1")
                     : (static_cast<frmSelectAction *>(window.get())->Form_Load(), true));
        if (english)
            window->findChild<QAbstractButton *>("optLng_1")->click();
#ifndef Q_OS_WIN // the Windows package brings Qt's translations, not the test folder
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), english ? "Cancel" : "Abbrechen");
#endif
        window->show();
        QApplication::setActiveWindow(window.get());
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QWidget *pageWidget = main ? main->form()->SSTab19->widget(page) : window.get();
        if (main) { // chosen on the tab bar: heading and page list follow
            main->form()->SSTab19->tabBar()->setCurrentIndex(page);
            QCOMPARE(main->form()->txtlabel->text(), main->form()->SSTab19->tabText(page));
            QCOMPARE(main->form()->ListView1->currentItem()->text(1).toInt(), page);
        }
        // Names come from the texts a sighted user reads (the frame's caption in front of a
        // name the page has twice), no two alike; access keys are unique.
        QStringList texts;
        QList<QWidget *> controls;
        QHash<QString, QString> keys;
        QSet<QString> names;
        for (QWidget *w : window->findChildren<QWidget *>()) {
            if (!w->isVisibleTo(window.get()))
                continue;
            auto *label = qobject_cast<QLabel *>(w);
            auto *button = qobject_cast<QAbstractButton *>(w);
            auto *group = qobject_cast<QGroupBox *>(w);
            const QString text = group ? group->title() : w->property("text").toString();
            texts << withoutAccessKey(text) << w->toolTip();
            if ((w->focusPolicy() & Qt::TabFocus) && w->isEnabled() && !w->focusProxy())
                controls << w;
            const QString key = QKeySequence::mnemonic(text).toString().toLower();
            QVERIFY2(!key.isEmpty() || !qobject_cast<QPushButton *>(w), qPrintable("no access key: " + text));
            if (!key.isEmpty() && (button || (label && label->buddy()))) {
                QVERIFY2(!keys.contains(key), qPrintable("access key twice: " + text + ", " + keys[key]));
                keys[key] = text;
            }
        }
        QVERIFY(!english || !texts.contains("0 Zeichen")); // counters in the language shown
        for (QWidget *w : std::as_const(controls)) {
            const QString name = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name);
            // The text views' own interface is tested with them; Qt names its tab-bar buttons,
            // which must follow the language.
            if (qobject_cast<QTabBar *>(w->parentWidget()))
                QVERIFY2(name == QTabBar::tr("Scroll Left") || name == QTabBar::tr("Scroll Right"),
                         qPrintable(name));
            if (w->inherits("SharedTextView") || qobject_cast<QTabBar *>(w->parentWidget()))
                continue;
            for (const QString &part : name.split(" \u2013 "))
                QVERIFY2(texts.contains(part.trimmed()) && !part.isEmpty(),
                         qPrintable(w->objectName() + ": " + name));
            QVERIFY2(!names.contains(name), qPrintable("twice " + name + " " + w->objectName() + " " +
                                                       w->metaObject()->className()));
            names.insert(name);
        }
        // From the tabs Tab goes into the page (where it has controls) before the buttons below it.
        if (main && std::any_of(controls.begin(), controls.end(),
                                [&](QWidget *w) { return pageWidget->isAncestorOf(w); })) {
            QTabBar *bar = main->form()->SSTab19->tabBar();
            bar->setFocus(Qt::TabFocusReason);
            while (bar->isAncestorOf(QApplication::focusWidget()) || QApplication::focusWidget() == bar)
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY2(pageWidget->isAncestorOf(QApplication::focusWidget()),
                     qPrintable(QApplication::focusWidget()->objectName()));
        }
        // Tab alone reaches every control and stays on the page; within the page a step goes
        // up only into a column further right. Of a group of options Tab takes one (Qt's choice).
        QWidget *first = controls.first();
        first->setFocus(Qt::TabFocusReason);
        QList<QWidget *> visited{first};
        for (QWidget *from = first, *to = nullptr; to != first; from = to) {
            QTest::keyClick(from, Qt::Key_Tab);
            to = QApplication::focusWidget();
            QVERIFY2(controls.contains(to) && to != from, qPrintable("Tab from " + from->objectName()));
            const QPoint a = from->mapTo(window.get(), QPoint()), b = to->mapTo(window.get(), QPoint());
            if (pageWidget->isAncestorOf(from) && pageWidget->isAncestorOf(to) && !visited.contains(to))
                QVERIFY2(b.y() >= a.y() - 4 || b.x() >= a.x() + from->width(),
                         qPrintable("Tab goes back from " + from->objectName() + " to " + to->objectName()));
            QVERIFY(visited.size() < 3 * controls.size());
            visited << to;
        }
        for (QWidget *w : std::as_const(controls))
            QVERIFY2(visited.contains(w) || qobject_cast<QRadioButton *>(w), qPrintable(w->objectName()));
    }
};

QTEST_MAIN(TestAccessibility)
#include "tst_accessibility.moc"
