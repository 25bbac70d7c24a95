#include "fonts/FontCheck.h"

#include <QtTest>

class TestFontCheck : public QObject
{
    Q_OBJECT

private slots:
    void separator_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QChar>("separator");
        QTest::newRow("59") << "59" << QChar(u';');
        QTest::newRow("1") << "1" << QChar(1);
        QTest::newRow("254") << "254" << QChar(254);
        QTest::newRow("0") << "0" << QChar(u'\t');
        QTest::newRow("255") << "255" << QChar(u'\t');
        QTest::newRow("abc") << "abc" << QChar(u'\t');
        QTest::newRow("negative") << "-59" << QChar(u'\t');
    }
    void separator()
    {
        QFETCH(QString, value);
        QTEST(fontListSeparator(value), "separator");
    }

    void list_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("fonts"); // name + "|" + file
        QTest::newRow("comments, empty lines, CR LF")
            << "; Name;Datei\r\n\r\nA;a.ttf\r\n;B;b.ttf\r\nC;c.ttf" << QStringList({"A|a.ttf", "C|c.ttf"});
        QTest::newRow("further fields ignored") << "A;a.ttf;x;y\n" << QStringList({"A|a.ttf"});
        QTest::newRow("no separator: whole line, no file") << "Only A\n" << QStringList({"Only A|"});
        QTest::newRow("blank is not empty") << " \nA;a.ttf" << QStringList({" |", "A|a.ttf"});
    }
    void list()
    {
        QFETCH(QString, text);
        QStringList read;
        for (const ChessFont &font : parseChessFonts(text, u';'))
            read << font.name + u'|' + font.file;
        QTEST(read, "fonts");
    }
};

QTEST_GUILESS_MAIN(TestFontCheck)
#include "tst_fontcheck.moc"
