#include "support/FileStatus.h"

#include <QtTest>

class TestFileStatus : public QObject
{
    Q_OBJECT

private slots:
    void sizeText_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<bool>("exists");
        QTest::addColumn<QString>("expected");
        QTest::newRow("missing") << qint64(5000) << false << "0 KB";
        QTest::newRow("empty") << qint64(0) << true << "1 KB";
        QTest::newRow("999") << qint64(999) << true << "1 KB";
        QTest::newRow("1500 half to even up") << qint64(1500) << true << "2 KB";
        QTest::newRow("2500 half to even down") << qint64(2500) << true << "2 KB";
        QTest::newRow("2501") << qint64(2501) << true << "3 KB";
    }
    void sizeText()
    {
        QFETCH(qint64, bytes);
        QFETCH(bool, exists);
        QTEST(FileSizeText(bytes, exists), "expected");
    }

    void dateText_data()
    {
        QTest::addColumn<QDateTime>("time");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("expected");
        const QDateTime afternoon(QDate(2024, 3, 7), QTime(14, 5, 9));
        const auto row = [](const char *name, const QDateTime &time, const char *language,
                            const char *expected) { QTest::newRow(name) << time << language << expected; };
        row("de", afternoon, "de", "07.03.2024 - 14:05:09");
        row("us", afternoon, "us", "2024/03/07 - 14:05:09");
        row("morning, 24 hours", QDateTime(QDate(2023, 12, 31), QTime(2, 0, 0)), "se",
            "2023/12/31 - 02:00:00");
        row("UTC shown in local time", afternoon.toUTC(), "de", "07.03.2024 - 14:05:09");
        row("invalid", QDateTime(), "de", "");
    }
    void dateText()
    {
        QFETCH(QDateTime, time);
        QFETCH(QString, language);
        QTEST(FileDateText(time, language), "expected");
    }

    void counter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("withCrLf");
        QTest::addColumn<QString>("counter");
        const auto row = [](const char *name, const char *text, const char *withCrLf, const char *counter) {
            QTest::newRow(name) << text << withCrLf << counter;
        };
        row("empty", "", "", "0 Zeichen");
        row("CR LF counts two", "ab\r\ncd", "ab\r\ncd", "6 Zeichen");
        row("edit control's LF counts two", "\nab\ncd\n", "\r\nab\r\ncd\r\n", "10 Zeichen");
    }
    void counter()
    {
        QFETCH(QString, text);
        QTEST(WithCrLf(text), "withCrLf");
        QTEST(CounterText(CountedCharacters(text), QStringLiteral("Zeichen")), "counter");
    }
};

QTEST_GUILESS_MAIN(TestFileStatus)
#include "tst_filestatus.moc"
