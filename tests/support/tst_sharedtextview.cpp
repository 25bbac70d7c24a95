#include "support/SharedTextView.h"

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
    }
};

QTEST_MAIN(TestSharedTextView)
#include "tst_sharedtextview.moc"
