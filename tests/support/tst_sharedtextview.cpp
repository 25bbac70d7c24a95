#include "support/PagedText.h"
#include "support/SharedTextView.h"

#include <QAccessible>
#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

// The log view's lines: found over parts it shares with their owner, with every kind of
// line break, and again when the head in front of the parts is replaced.
class TestSharedTextView : public QObject
{
    Q_OBJECT

    static QStringList lines(const SharedTextView &view)
    {
        QStringList found;
        for (qsizetype i = 0; i < view.lineCount(); ++i)
            found << view.lineText(i);
        return found;
    }

private slots:
    void lines_data()
    {
        QTest::addColumn<QString>("head");
        QTest::addColumn<QStringList>("parts");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QString>("newHead");
        QTest::addColumn<QStringList>("expectedAfter");
        const auto row = [](const char *name, const char *head, const QStringList &parts,
                            const QStringList &expected, const char *newHead, const QStringList &after) {
            QTest::newRow(name) << QString(head) << parts << expected << QString(newHead) << after;
        };
        row("nothing", "", {}, {""}, "a\n", {"a", ""});
        row("CR LF, LF and CR", "", {"a\r\nb\nc\rd"}, {"a", "b", "c", "d"}, "", {"a", "b", "c", "d"});
        row("CR LF torn between parts", "", {"a\r", "\nb\r", "\r\n", "c\n"}, {"a", "b", "", "c", ""}, "x",
            {"xa", "b", "", "c", ""});
        row("CR of the head, LF of the parts", "x\r", {"\ny"}, {"x", "y"}, "x\r\nz\r", {"x", "z", "y"});
        row("head without a break", "He", {"ad\r\nT"}, {"Head", "T"}, "Kopf\r\n", {"Kopf", "ad", "T"});
        row("head emptied", "a\rb\r\n", {"c"}, {"a", "b", "c"}, "", {"c"});
    }
    void lines()
    {
        QFETCH(QString, head);
        QFETCH(QStringList, parts);
        QFETCH(QString, newHead);
        // The parts are views into one string that its owner changes right away.
        QString owner = parts.join(QString());
        QList<QStringView> views;
        qsizetype offset = 0;
        for (const QString &part : parts) {
            views << QStringView(owner).sliced(offset, part.size());
            offset += part.size();
        }
        const QString whole = owner;
        SharedTextView view;
        view.setText(head, views, {owner});
        owner.fill(u'#');
        QTRY_VERIFY(!view.isIndexing());
        QTEST(lines(view), "expected");
        QCOMPARE(view.text(), head + whole);

        view.setHead(newHead);
        QTEST(lines(view), "expectedAfter");
        QCOMPARE(view.text(), newHead + whole);

        // The same text as a log file, read by the paged reader, behind the same heads.
        QTemporaryDir dir;
        QFile file(dir.filePath("startlog.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(whole.toUtf8()) == whole.toUtf8().size());
        file.close();
        auto paged = std::make_shared<PagedText>(file.fileName(), 2);
        while (paged->indexStep(3) == PagedText::Step::More) {
        }
        view.setText(head, paged);
        QTEST(lines(view), "expected");
        QCOMPARE(view.text(), head + whole);
        view.setHead(newHead);
        QTEST(lines(view), "expectedAfter");
    }

    // Ctrl+End while a log is still being read goes on to its real end.
    void followsEndWhileIndexing()
    {
        QTemporaryDir dir;
        QFile file(dir.filePath("errorlog.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray("Zeile\r\n").repeated(2000)));
        file.close();
        auto paged = std::make_shared<PagedText>(file.fileName(), 64);
        QCOMPARE(paged->indexStep(64), PagedText::Step::More);
        SharedTextView view;
        view.resize(200, 100);
        view.setPagedText(paged);
        QTest::keyClick(&view, Qt::Key_End, Qt::ControlModifier);
        while (paged->indexStep(1 << 20) == PagedText::Step::More) {
        }
        QTRY_VERIFY(view.verticalScrollBar()->maximum() > 1900);
        QTRY_COMPARE(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    }

    // Where the box works out columns and scrolling itself: a click behind a tab, End, and a
    // drag held on the last pixel row, which is still inside and must not scroll.
    void mouseAndKeys()
    {
        SharedTextView view;
        view.resize(300, 120);
        view.setText("a\tb\r\n" + QString(400, u'x') + QString("\r\ny").repeated(50));
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(&view)->textInterface();
        QWidget *port = view.viewport();
        const QRect b = text->characterRect(2);
        QTest::mouseClick(port, Qt::LeftButton, {},
                          port->mapFromGlobal(b.center() - QPoint(b.width() / 4, 0)));
        QCOMPARE(text->cursorPosition(), 2);
        QTest::keyClick(&view, Qt::Key_End);
        QVERIFY(view.horizontalScrollBar()->value() > 0);
        QCOMPARE(view.horizontalScrollBar()->value(), view.horizontalScrollBar()->maximum());
        QCOMPARE(view.verticalScrollBar()->value(), 0);
        QTest::mousePress(port, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseMove(port, QPoint(5, port->height() - 1));
        QTest::qWait(120);
        QCOMPARE(view.verticalScrollBar()->value(), 0);
        QTest::mouseRelease(port, Qt::LeftButton, {}, QPoint(5, port->height() - 1));
    }

    // What a screen reader gets through the box's accessible text interface.
    void accessibleText_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<int>("boundary");
        QTest::addColumn<int>("where"); // -1 before, 0 at, 1 after
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("start");
        const int line = QAccessible::LineBoundary, word = QAccessible::WordBoundary;
        QTest::newRow("line at") << 4 << line << 0 << "one two\r\n" << 0;
        QTest::newRow("line after") << 4 << line << 1 << "three\r" << 9;
        QTest::newRow("line before") << 16 << line << -1 << "three\r" << 9;
        QTest::newRow("empty last line") << 20 << line << 0 << "" << 20;
        QTest::newRow("word at") << 5 << word << 0 << "two" << 4;
        QTest::newRow("word at its start") << 9 << word << 0 << "three" << 9;
        QTest::newRow("word after") << 0 << word << 1 << " " << 3;
        QTest::newRow("char at") << 10 << int(QAccessible::CharBoundary) << 0 << "h" << 10;
    }
    void accessibleText()
    {
        QFETCH(int, offset);
        QFETCH(int, boundary);
        QFETCH(int, where);
        SharedTextView view;
        view.setText("one two\r\nthree\rfour\n");
        QTRY_VERIFY(!view.isIndexing());
        QAccessibleInterface *box = QAccessible::queryAccessibleInterface(&view);
        QVERIFY(box && box->textInterface());
        QVERIFY(box->state().readOnly && box->state().multiLine && box->state().focusable);
        QAccessibleTextInterface *text = box->textInterface();
        QCOMPARE(text->characterCount(), 20);
        int start = -1, end = -1;
        const auto type = QAccessible::TextBoundaryType(boundary);
        const QString got = where < 0   ? text->textBeforeOffset(offset, type, &start, &end)
                            : where > 0 ? text->textAfterOffset(offset, type, &start, &end)
                                        : text->textAtOffset(offset, type, &start, &end);
        QTEST(got, "expected");
        QTEST(start, "start");
        QCOMPARE(end - start, got.size());
        // A selection made by the screen reader is the box's.
        text->setSelection(0, start, end);
        QCOMPARE(view.selectedText(), got);
        QCOMPARE(text->cursorPosition(), end);
    }

    // A selection beyond what a mail program takes leaves with its newest part, after a line
    // that counts the bytes left out (a two-byte character among them) and names the file.
    void copyIsBounded()
    {
        QTemporaryDir dir;
        QFile file(dir.filePath("errorlog.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("\xC3\xBC" + QByteArray(10'000'005, 'x')));
        file.close();
        auto paged = std::make_shared<PagedText>(file.fileName());
        while (paged->indexStep(1 << 20) == PagedText::Step::More) {
        }
        SharedTextView view;
        view.setPagedText(paged);
        view.selectAll();
        view.copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), "[7 Bytes am Anfang ausgelassen, die ganze Datei: " +
                                                           QDir::toNativeSeparators(file.fileName()) +
                                                           "]\r\n" + QString(10'000'000, u'x'));
    }
};

QTEST_MAIN(TestSharedTextView)
#include "tst_sharedtextview.moc"
