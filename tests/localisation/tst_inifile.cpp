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

        const QByteArray basic = "[de]\r\nA=Eins\r\nb = zwei  \r\n";
        QTest::newRow("plain") << basic << "de"
                               << "A"
                               << "x" << 1200 << "Eins";
        QTest::newRow("section and key ignore case") << basic << "DE"
                                                     << "a"
                                                     << "x" << 1200 << "Eins";
        QTest::newRow("blanks around key and value") << basic << "de"
                                                     << "B"
                                                     << "x" << 1200 << "zwei";
        QTest::newRow("blanks around the asked key") << basic << " de "
                                                     << " b "
                                                     << "x" << 1200 << "zwei";
        QTest::newRow("missing key gives default") << basic << "de"
                                                   << "c"
                                                   << "dflt" << 1200 << "dflt";
        QTest::newRow("missing section gives default") << basic << "us"
                                                       << "A"
                                                       << "dflt" << 1200 << "dflt";
        QTest::newRow("default loses trailing blanks") << basic << "us"
                                                       << "A"
                                                       << " d  " << 1200 << " d";
        QTest::newRow("empty value is not the default") << QByteArray("[de]\nA=\n") << "de"
                                                        << "A"
                                                        << "d" << 1200 << "";
        QTest::newRow("blank value is not the default") << QByteArray("[de]\nA=   \n") << "de"
                                                        << "A"
                                                        << "d" << 1200 << "";
        QTest::newRow("first key wins") << QByteArray("[de]\nA=1\nA=2\n") << "de"
                                        << "A"
                                        << "" << 1200 << "1";
        QTest::newRow("first section wins") << QByteArray("[de]\nA=1\n[us]\nA=u\n[DE]\nA=2\nB=3\n") << "de"
                                            << "B"
                                            << "-" << 1200 << "-";
        QTest::newRow("matching double quotes removed") << QByteArray("[de]\nA=\" x \"\n") << "de"
                                                        << "A"
                                                        << "" << 1200 << " x ";
        QTest::newRow("matching single quotes removed") << QByteArray("[de]\nA='x'\n") << "de"
                                                        << "A"
                                                        << "" << 1200 << "x";
        QTest::newRow("unmatched quotes stay") << QByteArray("[de]\nA=\"x'\n") << "de"
                                               << "A"
                                               << "" << 1200 << "\"x'";
        QTest::newRow("lone quote stays") << QByteArray("[de]\nA=\"\n") << "de"
                                          << "A"
                                          << "" << 1200 << "\"";
        QTest::newRow("only one pair removed") << QByteArray("[de]\nA=\"\"x\"\"\n") << "de"
                                               << "A"
                                               << "" << 1200 << "\"x\"";
        QTest::newRow("value cut at size-1") << QByteArray("[de]\nA=abcdef\n") << "de"
                                             << "A"
                                             << "" << 4 << "abc";
        QTest::newRow("default cut at size-1") << QByteArray("[de]\n") << "de"
                                               << "A"
                                               << "abcdef" << 3 << "ab";
        QTest::newRow("size zero") << basic << "de"
                                   << "A"
                                   << "x" << 0 << "";
        QTest::newRow("line without = is no value") << QByteArray("[de]\nA\nB=2\n") << "de"
                                                    << "A"
                                                    << "d" << 1200 << "d";
        QTest::newRow("line without = does not break the next") << QByteArray("[de]\nA\nB=2\n") << "de"
                                                                << "B"
                                                                << "d" << 1200 << "2";
        QTest::newRow("value keeps later =") << QByteArray("[de]\nA=x=y\n") << "de"
                                             << "A"
                                             << "" << 1200 << "x=y";
        QTest::newRow("LF line ends") << QByteArray("[de]\nA=1\nB=2") << "de"
                                      << "B"
                                      << "" << 1200 << "2";
        QTest::newRow("CR line ends") << QByteArray("[de]\rA=1\rB=2\r") << "de"
                                      << "B"
                                      << "" << 1200 << "2";
        QTest::newRow("mixed line ends") << QByteArray("[de]\r\nA=1\rB=2\nC=3") << "de"
                                         << "C"
                                         << "" << 1200 << "3";
        QTest::newRow("UTF-8 BOM before the section") << QByteArray("\xEF\xBB\xBF[de]\nA=\xC3\xBC\n") << "de"
                                                      << "A"
                                                      << "" << 1200 << QString::fromUtf8("\xC3\xBC");
        QTest::newRow("Windows-1252 bytes") << QByteArray("[de]\nA=Gr\xF6\xDF"
                                                          "e \x80\n")
                                            << "de"
                                            << "A"
                                            << "" << 1200
                                            << QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                                                 "e \xE2\x82\xAC");
        QTest::newRow("keys before any section are ignored") << QByteArray("A=0\n[de]\n") << "de"
                                                             << "A"
                                                             << "d" << 1200 << "d";
        QTest::newRow("tab around value") << QByteArray("[de]\nA=\tx\t\n") << "de"
                                          << "A"
                                          << "" << 1200 << "x";
        QTest::newRow("garbage") << QByteArray("\x00\xff[[[\n==\n]") << "de"
                                 << "A"
                                 << "d" << 1200 << "d";
    }

    void readsLikeWindows()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, def);
        QFETCH(int, size);
        QFETCH(QString, expected);
        const QString path = write(QStringLiteral("t.ini"), content);
        QCOMPARE(ReadIniString(section, key, def, path, size), expected);
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
