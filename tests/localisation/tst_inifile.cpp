#include "core/TextFile.h"
#include "localisation/IniFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestIniFile : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
            qFatal("cannot write %s", qPrintable(path));
        f.write(bytes);
        return path;
    }

private slots:
    void readsLikeWindows_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("def");
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &content, const char *section, const char *key,
                            const char *def, const char *expected, int size = 1200) {
            QTest::newRow(name) << content << QString::fromUtf8(section) << QString::fromUtf8(key)
                                << QString::fromUtf8(def) << size << QString::fromUtf8(expected);
        };
        const QByteArray basic = "[de]\r\nA=Eins\r\nb = zwei  \r\n";
        row("section and key ignore case", basic, "DE", "a", "x", "Eins");
        row("blanks around key and value", basic, "de", "B", "x", "zwei");
        row("blanks around the asked key", basic, " de ", " b ", "x", "zwei");
        row("missing key gives default", basic, "de", "c", "dflt", "dflt");
        row("missing section gives default", basic, "us", "A", "dflt", "dflt");
        row("default loses trailing blanks", basic, "us", "A", " d  ", " d");
        row("default of blanks keeps one", basic, "us", "A", "   ", " ");
        row("empty value is not the default", "[de]\nA=\n", "de", "A", "d", "");
        row("blank value is not the default", "[de]\nA=   \n", "de", "A", "d", "");
        row("first key wins", "[de]\nA=1\nA=2\n", "de", "A", "", "1");
        row("first section wins", "[de]\nA=1\n[us]\nA=u\n[DE]\nA=2\nB=3\n", "de", "B", "-", "-");
        row("matching double quotes removed", "[de]\nA=\" x \"\n", "de", "A", "", " x ");
        row("matching single quotes removed", "[de]\nA='x'\n", "de", "A", "", "x");
        row("unmatched quotes stay", "[de]\nA=\"x'\n", "de", "A", "", "\"x'");
        row("lone quote stays", "[de]\nA=\"\n", "de", "A", "", "\"");
        row("only one pair removed", "[de]\nA=\"\"x\"\"\n", "de", "A", "", "\"x\"");
        row("value cut at size-1", "[de]\nA=abcdef\n", "de", "A", "", "abc", 4);
        row("default cut at size-1", "[de]\n", "de", "A", "abcdef", "ab", 3);
        row("size zero", basic, "de", "A", "x", "", 0);
        row("line without = is no value", "[de]\nA\nB=2\n", "de", "A", "d", "d");
        row("line without = does not break the next", "[de]\nA\nB=2\n", "de", "B", "d", "2");
        row("value keeps later =", "[de]\nA=x=y\n", "de", "A", "", "x=y");
        row("tab around value", "[de]\nA=\tx\t\n", "de", "A", "", "x");
        row("mixed line ends", "[de]\r\nA=1\rB=2\nC=3", "de", "C", "", "3");
        row("UTF-8 BOM before the section", "\xEF\xBB\xBF[de]\nA=\xC3\xBC\n", "de", "A", "", "ü");
        row("Windows-1252 bytes", "[de]\nA=\x80 Gr\xF6\xDF\n", "de", "A", "", "€ Größ");
        // Section headers as Windows reads them.
        row("keys above the first header", "A=0\n[de]\nA=1\n", "", "A", "d", "0");
        row("header without ] opens no section", "[de]\nA=1\n[us\nB=2\n", "de", "B", "d", "2");
        row("] inside the name", "[a]b]\nA=1\n", "a]b", "A", "d", "1");
        row("text after the ]", "[de] x\nA=1\n", "de", "A", "d", "1");
        // The nameless section above the first header comes first: "[]" repeats its name.
        row("empty header is never read", "[de]\n[]\nA=1\n", "", "A", "d", "d");
        row("garbage", QByteArray("\x00\xff[[[\n==\n]", 11), "de", "A", "d", "d");
    }

    void readsLikeWindows()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, def);
        QFETCH(int, size);
        const QString path = write(QStringLiteral("t.ini"), content);
        QTEST(ReadIniString(section, key, def, path, size), "expected");
    }

    void missingFileAndFolderGiveDefault()
    {
        QCOMPARE(ReadIniString("de", "A", "d ", m_dir.filePath("none.ini")), QString("d"));
        QCOMPARE(ReadIniString("de", "A", "d", m_dir.path()), QString("d"));
    }

    void fileNameMatchedWithoutCase()
    {
        write(QStringLiteral("Language.DE"), "[de]\nA=1\n");
        QCOMPARE(ReadIniString("de", "A", "", m_dir.filePath("language.de")), QString("1"));
    }

    void changedFileIsReadAgain()
    {
        const QString path = write(QStringLiteral("c.ini"), "[de]\nA=1\n");
        QCOMPARE(ReadIniString("de", "A", "", path), QString("1"));
        write(QStringLiteral("c.ini"), "[de]\nA=22\n");
        QCOMPARE(ReadIniString("de", "A", "", path), QString("22"));
    }

    void decodesInstallationText()
    {
        QCOMPARE(decodeInstallationText("\xEF\xBB\xBFx"), QString("x"));
        QCOMPARE(decodeInstallationText("\xE2\x82\xAC"), QString::fromUtf8("\xE2\x82\xAC"));
        // A single invalid byte makes the whole file Windows-1252, as Pawnsketch wrote it.
        QCOMPARE(decodeInstallationText("\xE2\x82\xAC \x80"),
                 QString::fromUtf8("\xC3\xA2\xE2\x80\x9A\xC2\xAC \xE2\x82\xAC"));
    }
};

QTEST_GUILESS_MAIN(TestIniFile)
#include "tst_inifile.moc"
