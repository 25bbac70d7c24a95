#include "support/ErrorReport.h"
#include "support/ReportText.h"

#include <QtTest>

Q_DECLARE_METATYPE(ErrorReportInput)

namespace {
const QString kUser = QStringLiteral("Benutzername: Hans");
const QString kErr = QStringLiteral("---------------[Fehlermeldung / error report]");
const QString kAdd = QStringLiteral("---------------[Zusatext / additional text]");
const QString kStart = QStringLiteral("---------------[startlog.txt]");
const QString kErrLog = QStringLiteral("---------------[errorlog.txt]");

QString lines(const QStringList &list)
{
    return list.join(QStringLiteral("\r\n"));
}
} // namespace

class TestErrorReport : public QObject
{
    Q_OBJECT

private slots:
    void build_data()
    {
        QTest::addColumn<ErrorReportInput>("input");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const ErrorReportInput &in, const QString &expected) {
            QTest::newRow(name) << in << expected;
        };
        row("no box: empty, no user line", {kUser, "Absturz", "x", "s", "e"}, "");
        row("box 2 with blanks only", {kUser, "   ", " ", {}, {}, true}, "");
        row("message trimmed of blanks only", {kUser, "  \tAbsturz  ", {}, {}, {}, true},
            lines({kUser, "", kErr, "\tAbsturz"}));
        row("additional text alone keeps its line break", {kUser, {}, "Info", {}, {}, true},
            lines({kUser, "", kAdd, "Info", ""}));
        row("fixed order, no empty lines below the user line",
            {kUser, "Fehler\r\n\r\n", "Mehr\r\n\r\n\r\nText", "\r\n\r\nS1\r\n  \r\n\r\nS2\r\n", "E1\r\n\r\n",
             true, true, true},
            lines({kUser, "", kErr, "Fehler", kAdd, "Mehr", "Text", kStart, "S1", "  ", "S2", kErrLog, "E1",
                   ""}));
        row("log sections even when empty or missing",
            {kUser, "not asked for", {}, "Missing: C:\\PS\\logfiles\\startlog.txt", {}, false, true, true},
            lines({kUser, "", kStart, "Missing: C:\\PS\\logfiles\\startlog.txt", kErrLog, ""}));
        row("personal data hidden below the user line",
            {"Benutzername: hans",
             "hans hat ein Problem",
             {},
             {},
             "C:\\Users\\Hans\\x.ini\r\nhansi\r\n",
             true,
             false,
             true,
             true,
             "hans",
             "C:/Users/hans/"},
            lines({"Benutzername: hans", "", kErr, "<user> hat ein Problem", kErrLog, "<home>\\x.ini",
                   "hansi", ""}));
    }
    void build()
    {
        QFETCH(ErrorReportInput, input);
        QTEST(BuildErrorReport(input), "expected");
    }

    void collapse_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sep");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *text, const char *sep, const char *expected) {
            QTest::newRow(name) << text << sep << expected;
        };
        row("runs of any length", "a\r\n\r\n\r\n\r\n\r\nb\r\n\r\nc\r\n", "\r\n", "a\r\nb\r\nc\r\n");
        row("only separators", "\r\n\r\n\r\n", "\r\n", "\r\n");
        row("only the first character", "\r\r\r", "\r\n", "\r\n");
        row("lone LFs are not line breaks", "a\n\n\r\n", "\r\n", "a\n\n\r\n");
        row("empty", "", "\r\n", "");
        row("separator overlapping itself", "baaaaab", "aa", "baaab");
    }
    void collapse()
    {
        QFETCH(QString, text);
        QFETCH(QString, sep);
        QTEST(CollapseRepeats(text, sep), "expected");
        QVERIFY(CollapseRepeats(QString(), sep).isNull());
    }

    void hidePersonalData_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("account");
        QTest::addColumn<QString>("home");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *text, const char *account, const char *home,
                            const char *expected) {
            QTest::newRow(name) << text << account << home << expected;
        };
        row("whole words and paths only", "max maximum Max_1 max.log /home/max/a /home/maxi/b", "max",
            "/home/max", "<user> maximum Max_1 <user>.log <home>/a /home/maxi/b");
        row("either separator, any case", "c:\\users\\EVA\\a C:/Users/Eva/b D:\\Users\\Eva", "Eva",
            "C:\\Users\\Eva\\", "<home>\\a <home>/b D:\\Users\\<user>");
        row("placeholder not replaced again", "/u/home/x home", "home", "/u/home", "<home>/x <user>");
        row("root and empty name hide nothing", "/etc/x C:\\y", "", "/", "/etc/x C:\\y");
        row("drive hides nothing", "C:\\y", "", "C:\\", "C:\\y");
    }
    void hidePersonalData()
    {
        QFETCH(QString, text);
        QFETCH(QString, account);
        QFETCH(QString, home);
        QTEST(HidePersonalData(text, account, home), "expected");
    }

    // Log shapes around the places where the report's log part is cut into pieces, blocks and
    // windows, made with blocks of 1, 7 and 32 K characters against the whole-text build.
    void logPartMatchesFullBuild_data()
    {
        QTest::addColumn<QString>("startLog");
        QTest::addColumn<QString>("errorLog");
        const auto row = [](const char *name, const QString &start, const QString &error) {
            QTest::newRow(name) << start << error;
        };
        row("plain", "s1\r\ns2", "e1\r\ne2");
        row("line breaks at the ends", "\r\n\r\ns1\r\n\r\n", "\r\ne1\r\n");
        row("empty and only line breaks", "", "\r\n\r\n\r\n");
        row("blanks and stray CR at the ends", "  s1\r", "\r\ne1  ");
        row("CR, LF and runs mixed", "a\r\r\n\n\r\n\r\nb\r", "\n\r\n\r\n\r\r\n");
        row("personal data", "C:\\Users\\ann\\x\r\n\r\nann", "/home/ann/y");
        // Lines longer than the filter's window, a name across each place it may cut.
        QString longLine;
        for (int i = 0; i < 6000; ++i)
            longLine += i % 5 == 4 ? QStringLiteral("ann ") : QStringLiteral("xann ");
        row("personal data in lines longer than a window", longLine + "\r\n" + longLine.mid(3),
            QString(40000, u' ') + "ann" + QString(40000, u'x'));
    }
    void logPartMatchesFullBuild()
    {
        QFETCH(QString, startLog);
        QFETCH(QString, errorLog);
        for (const int flags : {2, 4, 6, 14, 10}) {
            for (const qsizetype block : {1, 7, 32 * 1024}) {
                if (block == 1 && startLog.size() > 1000)
                    continue;
                const ErrorReportInput in{.userLine = kUser,
                                          .startLog = startLog,
                                          .errorLog = errorLog,
                                          .appendStartLog = (flags & 2) != 0,
                                          .appendErrorLog = (flags & 4) != 0,
                                          .hidePersonalData = (flags & 8) != 0,
                                          .accountName = QStringLiteral("ann"),
                                          .homeFolder = QStringLiteral("C:\\Users\\ann")};
                const auto tail = makeReportText(in, std::make_shared<StringText>(startLog),
                                                 std::make_shared<StringText>(errorLog), block);
                while (tail->indexStep(100) == ReportText::Step::More) {
                }
                ErrorReportHead head;
                head.setInput(in);
                const QString expected = BuildErrorReport(in).mid(head.text().size());
                const QByteArray where = QByteArray::number(flags) + "/" + QByteArray::number(block);
                QVERIFY2(head.text() + expected == BuildErrorReport(in), where);
                QVERIFY2(tail->length() == expected.size() && tail->slice(0, tail->length()) == expected,
                         where);
                const StringText lines(expected);
                QVERIFY2(tail->lineCount() == lines.lineCount(), where);
                for (qsizetype line = 0; line < qMin<qsizetype>(lines.lineCount(), 50); ++line)
                    QVERIFY2(tail->lineStart(line) == lines.lineStart(line), where);
            }
        }
    }

    // A report beyond what a mail program takes keeps each log's newest part after a line naming it.
    void handoff()
    {
        const QString start =
            QStringLiteral("old\r\n") + QString(3000, u's') + QStringLiteral("\r\nnew start");
        const QString error = QStringLiteral("e1\r\ne2");
        const ErrorReportInput in{.userLine = kUser, .appendStartLog = true, .appendErrorLog = true};
        const auto tail =
            makeReportText(in, std::make_shared<StringText>(start, QStringLiteral("/l/startlog.txt")),
                           std::make_shared<StringText>(error), 16);
        while (tail->indexStep(100) == ReportText::Step::More) {
        }
        const QString whole = tail->slice(0, tail->length());
        QCOMPARE(tail->handoff(whole.size()), whole);
        const QString cut = tail->handoff(whole.size() - 2000);
        QVERIFY2(cut.size() <= whole.size() - 2000 && cut.size() > whole.size() - 2200, qPrintable(cut));
        QVERIFY(!cut.contains(QStringLiteral("old")));
        QVERIFY(cut.startsWith(kStart + QStringLiteral("\r\n[")));
        QVERIFY(cut.contains(QStringLiteral("Bytes am Anfang ausgelassen, die ganze Datei: ") +
                             QDir::toNativeSeparators(QStringLiteral("/l/startlog.txt"))));
        QVERIFY(cut.endsWith(QStringLiteral("new start\r\n") + kErrLog + QStringLiteral("\r\ne1\r\ne2")));
    }
};

QTEST_GUILESS_MAIN(TestErrorReport)
#include "tst_errorreport.moc"
