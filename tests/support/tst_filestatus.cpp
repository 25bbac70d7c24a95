#include "support/FileStatus.h"

#include <QTest>

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
        QTest::newRow("1000") << qint64(1000) << true << "1 KB";
        QTest::newRow("1500 half to even up") << qint64(1500) << true << "2 KB";
        QTest::newRow("2345") << qint64(2345) << true << "2 KB";
        QTest::newRow("2500 half to even down") << qint64(2500) << true << "2 KB";
        QTest::newRow("2501") << qint64(2501) << true << "3 KB";
        QTest::newRow("3500") << qint64(3500) << true << "4 KB";
    }
    void sizeText()
    {
        QFETCH(qint64, bytes);
        QFETCH(bool, exists);
        QFETCH(QString, expected);
        QCOMPARE(FileSizeText(bytes, exists), expected);
    }

    void dateText_data()
    {
        QTest::addColumn<QDateTime>("time");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("expected");
        const QDateTime afternoon(QDate(2024, 3, 7), QTime(14, 5, 9));
        QTest::newRow("de") << afternoon << "de"
                            << "07.03.2024 - 14:05:09";
        QTest::newRow("us") << afternoon << "us"
                            << "2024/03/07 - 14:05:09";
        QTest::newRow("morning, 24 hours") << QDateTime(QDate(2023, 12, 31), QTime(2, 0, 0)) << "se"
                                           << "2023/12/31 - 02:00:00";
        QTest::newRow("UTC shown in local time") << afternoon.toUTC() << "de"
                                                 << "07.03.2024 - 14:05:09";
        QTest::newRow("invalid") << QDateTime() << "de"
                                 << "";
    }
    void dateText()
    {
        QFETCH(QDateTime, time);
        QFETCH(QString, language);
        QFETCH(QString, expected);
        QCOMPARE(FileDateText(time, language), expected);
    }

    void counter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("withCrLf");
        QTest::addColumn<QString>("counter");
        QTest::newRow("empty") << ""
                               << ""
                               << "0 Zeichen";
        QTest::newRow("CR LF counts two") << "ab\r\ncd"
                                          << "ab\r\ncd"
                                          << "6 Zeichen";
        QTest::newRow("edit control's LF counts two") << "\nab\ncd\n"
                                                      << "\r\nab\r\ncd\r\n"
                                                      << "10 Zeichen";
    }
    void counter()
    {
        QFETCH(QString, text);
        QFETCH(QString, withCrLf);
        QFETCH(QString, counter);
        QCOMPARE(WithCrLf(text), withCrLf);
        QCOMPARE(CounterText(CountedCharacters(text), QStringLiteral("Zeichen")), counter);
    }
};

QTEST_GUILESS_MAIN(TestFileStatus)
#include "tst_filestatus.moc"
