#include "core/TextFile.h"
#include "support/PagedText.h"
#include "testsupport/TestSupport.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

// The paged log reader against the whole-file decoder, with blocks and pages so small that
// every line break and every character falls on a boundary somewhere.
class TestPagedText : public QObject
{
    Q_OBJECT

    static void indexAll(PagedText &text, qint64 page)
    {
        PagedText::Step step;
        int turns = 0;
        while ((step = text.indexStep(page)) == PagedText::Step::More)
            QVERIFY(++turns < 100000);
        QCOMPARE(step, PagedText::Step::Done);
    }

    // What the box must show: the decoded file and its lines.
    static void check(const PagedText &text, const QByteArray &bytes)
    {
        const QString whole = decodeInstallationText(bytes);
        QCOMPARE(text.slice(0, text.length()), whole);
        const QStringList lines = whole.split(QRegularExpression("\r\n|\r|\n"));
        QCOMPARE(text.lineCount(), lines.size());
        qsizetype pos = 0;
        for (qsizetype i = 0; i < lines.size(); ++i) {
            QCOMPARE(text.lineStart(i), pos);
            QCOMPARE(text.slice(pos, pos + lines[i].size()), lines[i]);
            pos += lines[i].size() + (whole.mid(pos + lines[i].size(), 2) == "\r\n" ? 2 : 1);
        }
        if (!whole.isEmpty())
            QCOMPARE(text.at(whole.size() - 1), whole.back());
        QCOMPARE(text.bytesBefore(text.length()), bytes.size() - (bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0));
    }

private slots:
    void readsLikeTheWholeFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("changed"); // written while shown
        const QByteArray euro = "\xE2\x82\xAC";
        QTest::newRow("empty") << QByteArray() << QByteArray();
        QTest::newRow("CR LF, LF, CR") << QByteArray("ab\r\ncd\nef\rg\r\r\n\n\rh") << QByteArray();
        QTest::newRow("ends with CR LF") << QByteArray("a\r\nb\r\n") << QByteArray();
        QTest::newRow("ends with CR") << QByteArray("a\rb\r") << QByteArray();
        QTest::newRow("UTF-8 across blocks")
            << "x" + euro + euro + "\xF0\x9F\x98\x80" + euro + "\n" + euro << QByteArray();
        QTest::newRow("BOM") << QByteArray("\xEF\xBB\xBF\xC3\xBC\r\nz") << QByteArray();
        QTest::newRow("BOM inside") << QByteArray("a\n\xEF\xBB\xBF"
                                                  "b")
                                    << QByteArray();
        QTest::newRow("Windows-1252 late") << QByteArray("\xC3\xBCx\r\nyy\nzz\x80\x81") << QByteArray();
        QTest::newRow("long line") << QByteArray(40, 'w') + "\r\n" + euro.repeated(9) << QByteArray();
        QTest::newRow("grows, CR gets its LF")
            << QByteArray("a\r\nb\r") << QByteArray("a\r\nb\r\nc\n" + euro);
        QTest::newRow("grows into Windows-1252")
            << QByteArray("a\n" + euro) << QByteArray("a\n" + euro + "\xFC");
        QTest::newRow("truncated") << QByteArray("line one\r\nline two\r\n") << QByteArray("new\n");
        QTest::newRow("emptied") << QByteArray("a\nb") << QByteArray("", 0);
        QTest::newRow("grows from empty") << QByteArray("", 0) << QByteArray("a\r\nb");
    }
    void readsLikeTheWholeFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, changed);
        if (changed.isNull())
            changed = bytes;
        QTemporaryDir dir;
        const QString path = dir.filePath("errorlog.txt");
        for (const qint64 block : {1, 2, 3, 5, 64}) {
            for (const qint64 page : {1, 4, 1 << 20}) {
                QVERIFY(TestSupport::writeFile(path, bytes));
                PagedText text(path, block);
                indexAll(text, page);
                check(text, bytes);
                if (QTest::currentTestFailed())
                    return qWarning("block %lld page %lld", block, page);
                // Shown, then the file changes: the box reads blanks rather than fail until
                // the pass has gone on.
                QVERIFY(TestSupport::writeFile(path, changed));
                QCOMPARE(text.slice(0, text.length()).size(), text.length());
                indexAll(text, page);
                check(text, changed);
                if (QTest::currentTestFailed())
                    return qWarning("changed, block %lld page %lld", block, page);
            }
        }
    }

    void unreadable()
    {
        QTemporaryDir dir;
        QCOMPARE(PagedText(dir.path()).indexStep(100), PagedText::Step::Failed);
        QCOMPARE(PagedText(dir.filePath("none")).indexStep(100), PagedText::Step::Failed);
    }
};

QTEST_GUILESS_MAIN(TestPagedText)
#include "tst_pagedtext.moc"
