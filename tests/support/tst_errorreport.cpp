#include "support/ErrorReport.h"

#include <QtTest>

#include <functional>

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

    // Log shapes around the places where the builder joins its parts.
    void builderMatchesFullBuild_data()
    {
        QTest::addColumn<QString>("startLog");
        QTest::addColumn<QString>("errorLog");
        const auto row = [](const char *name, const char *start, const char *error) {
            QTest::newRow(name) << start << error;
        };
        row("plain", "s1\r\ns2", "e1\r\ne2");
        row("line breaks at the ends", "\r\n\r\ns1\r\n\r\n", "\r\ne1\r\n");
        row("empty and only line breaks", "", "\r\n\r\n\r\n");
        row("blanks and stray CR at the ends", "  s1\r", "\r\ne1  ");
        row("personal data", "C:\\Users\\ann\\x\r\n\r\nann", "/home/ann/y");
    }
    void builderMatchesFullBuild()
    {
        QFETCH(QString, startLog);
        QFETCH(QString, errorLog);
        ErrorReportInput in{.userLine = kUser,
                            .startLog = startLog,
                            .errorLog = errorLog,
                            .accountName = QStringLiteral("ann"),
                            .homeFolder = QStringLiteral("C:\\Users\\ann")};
        // Each edit says whether it may touch the logs' part; the others must leave it alone.
        struct Edit
        {
            bool tailMayChange;
            std::function<void(ErrorReportInput &)> apply;
        };
        QList<Edit> edits{
            {true, [](ErrorReportInput &) {}},
            {true, [](ErrorReportInput &r) { r.appendStartLog = true; }},
            {true, [](ErrorReportInput &r) { r.appendErrorLog = true; }},
            {false, [](ErrorReportInput &r) { r.reportError = true; }},
        };
        for (const QChar c : QStringLiteral(" Ab\r\n\r\nc "))
            edits.append({false, [c](ErrorReportInput &r) { r.errorMessage += c; }});
        edits += {
            {false, [](ErrorReportInput &r) { r.additionalText = QStringLiteral("\r\nmehr\r\n"); }},
            {false, [](ErrorReportInput &r) { r.userLine = QStringLiteral("User name: Hans"); }},
            {false,
             [](ErrorReportInput &r) { r.startLog = QString(r.startLog.constData(), r.startLog.size()); }},
            {true, [](ErrorReportInput &r) { r.hidePersonalData = true; }},
            {false, [](ErrorReportInput &r) { r.errorMessage += QStringLiteral(" ann"); }},
            {true, [](ErrorReportInput &r) { r.appendStartLog = false; }},
            {true, [](ErrorReportInput &r) { r.errorLog += QStringLiteral("\r\n\r\nneu"); }},
            {false, [](ErrorReportInput &r) { r.errorMessage.clear(), r.additionalText.clear(); }},
            {true, [](ErrorReportInput &r) { r.appendErrorLog = false; }},
        };

        ErrorReportBuilder builder;
        for (qsizetype step = 0; step < edits.size(); ++step) {
            edits[step].apply(in);
            const QList<QStringView> tailBefore = builder.tailParts();
            const ErrorReportBuilder::Changes changes = builder.setInput(in);
            const QString expected = BuildErrorReport(in);
            const QByteArray where = "step " + QByteArray::number(step);
            QVERIFY2(builder.text() == expected, where);
            QVERIFY2(builder.length() == expected.size() && builder.isEmpty() == expected.isEmpty(), where);
            QVERIFY2(builder.head() + builder.tailText() == expected, where);
            if (edits[step].tailMayChange)
                continue;
            QVERIFY2(!changes.tailChanged && builder.tailParts().size() == tailBefore.size(), where);
            for (qsizetype i = 0; i < tailBefore.size(); ++i)
                QVERIFY2(builder.tailParts()[i].data() == tailBefore[i].data(), where);
        }
    }
};

QTEST_GUILESS_MAIN(TestErrorReport)
#include "tst_errorreport.moc"
