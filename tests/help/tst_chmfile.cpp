#include "help/ChmData.h"
#ifndef Q_OS_WIN
#include "help/ChmFile.h"
#endif
#include "testsupport/TestSupport.h"

#include <QtTest>

// The demo's compiled help files, built by chmcmd from demo/help-src, read as the help
// window reads them; and the context-id map on bytes a broken file might hold.
class TestChmFile : public QObject
{
    Q_OBJECT

    static QString demoHelp(const char *code)
    {
        return TestSupport::sourceDir() + QStringLiteral("/demo/install/help/pawnsketch_%1.chm").arg(code);
    }
    static QByteArray dwords(std::initializer_list<quint32> values)
    {
        QByteArray bytes;
        for (quint32 v : values) {
            char le[4];
            qToLittleEndian(v, le);
            bytes.append(le, 4);
        }
        return bytes;
    }

private slots:
    void contextMap_data()
    {
        QTest::addColumn<QByteArray>("ivb");
        QTest::addColumn<QString>("expected"); // id=name pairs, sorted
        const QByteArray strings("\0a.html\0b.html\0", 15);
        QTest::newRow("two ids") << dwords({16, 1010, 1, 1020, 8}) << "1010=a.html 1020=b.html";
        QTest::newRow("offset outside #STRINGS") << dwords({16, 1010, 1, 1020, 99}) << "1010=a.html";
        QTest::newRow("size beyond the data") << dwords({400, 1010, 1}) << "1010=a.html";
        QTest::newRow("truncated pair") << dwords({16, 1010, 1, 1020}) << "1010=a.html";
        QTest::newRow("empty") << QByteArray() << "";
        QTest::newRow("empty name") << dwords({8, 7, 0}) << "";
    }
    void contextMap()
    {
        QFETCH(QByteArray, ivb);
        const QHash<quint32, QString> map = parseContextMap(ivb, QByteArray("\0a.html\0b.html\0", 15));
        QStringList pairs;
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            pairs << QStringLiteral("%1=%2").arg(it.key()).arg(it.value());
        pairs.sort();
        QTEST(pairs.join(u' '), "expected");
    }

    void compiledFile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<quint32>("id");
        QTest::addColumn<QString>("topic");
        QTest::addColumn<QString>("title");
        QTest::newRow("de fonts") << demoHelp("de") << 1060u << "/fonts.html"
                                  << "Schachfonts pr\u00fcfen und installieren";
        QTest::newRow("us overview") << demoHelp("us") << 1120u << "/uebersicht.html"
                                     << "Overview";
        QTest::newRow("unknown id") << demoHelp("de") << 4711u << ""
                                    << "";
    }
    void compiledFile()
    {
#ifdef Q_OS_WIN
        QSKIP("Windows shows compiled help with its own viewer");
#else
        QFETCH(QString, file);
        QFETCH(quint32, id);
        QFETCH(QString, topic);
        ChmFile chm(file);
        QVERIFY(chm.isOpen());
        QCOMPARE(chm.topicOf(id), topic);
        // The alias itself names the page inside the file, as HTML Help on Windows takes it.
        QCOMPARE(parseContextMap(chm.read("/#IVB"), chm.read("/#STRINGS")).value(id), topic);
        if (!topic.isEmpty())
            QTEST(htmlTitle(QString::fromUtf8(chm.read(topic))), "title");
        QCOMPARE(chm.defaultTopic(), "/willkommen.html");
        QCOMPARE(chm.contents().size(), 12);
        QCOMPARE(chm.index().size(), 12);
        QStringList hits;
        for (const ChmFile::Hit &hit : chm.search(QStringLiteral("COMPOSER")))
            hits << hit.topic;
        hits.sort();
        QCOMPARE(hits, QStringList({"/feedback.html", "/startoptionen.html"}));
#endif
    }

    // The demo's file, whole or damaged, as the help window checks it before opening it.
    void readable_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("readable");
        const QByteArray chm = TestSupport::readFile(demoHelp("de"));
        // The control data's entry: name, then section, offset and length as chmlib's numbers.
        const QByteArray control("::DataSpace/Storage/MSCompressed/ControlData");
        qsizetype length = chm.indexOf(control) + control.size();
        for (int field = 0; field < 2; ++field) {
            while (quint8(chm[length++]) & 0x80) {
            }
        }
        const auto withControlLength = [&](char value) {
            return QByteArray(chm).replace(length, 1, &value, 1);
        };
        QTest::newRow("whole") << chm << true;
        const QString ini = TestSupport::sourceDir() + QStringLiteral("/demo/install/ini/hlpidx.ini");
        QTest::newRow("not a help file") << TestSupport::readFile(ini) << false;
        QTest::newRow("cut inside the ITSF header") << chm.left(0x57) << false;
        QTest::newRow("control data just long enough") << withControlLength(0x18) << true;
        QTest::newRow("control data a byte short") << withControlLength(0x17) << false;
        // Version 2 has no content offset at 0x58: what stands there must not be taken for one.
        QByteArray version2 = chm;
        version2[4] = 2;
        version2.replace(0x58, 8, QByteArray(8, '\x7f'));
        QTest::newRow("version 2 header") << version2 << true;
    }
    void readable()
    {
        QFETCH(QByteArray, bytes);
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QTEST(chmFileReadable(buffer), "readable");
    }

    // Parameters after "Local" (an image number, a second name) leave the entry as it was.
    void sitemap()
    {
        const QList<SitemapEntry> entries = parseSitemap(
            "<ul><li><object type=\"text/sitemap\"><param name=\"Name\" value=\"Fonts\">"
            "<param name=\"Local\" value=\"fonts.html\"><param name=\"ImageNumber\" value=\"11\">"
            "<param name=\"Name\" value=\"x\"></object></ul>");
        QCOMPARE(entries.size(), 1);
        QCOMPARE(entries[0].name + u'|' + entries[0].local, QStringLiteral("Fonts|fonts.html"));
    }

    void notAHelpFile()
    {
#ifndef Q_OS_WIN
        ChmFile chm(TestSupport::sourceDir() + QStringLiteral("/demo/install/ini/hlpidx.ini"));
        QVERIFY(!chm.isOpen());
        QVERIFY(chm.topicOf(1010).isEmpty() && chm.contents().isEmpty() && chm.search("composer").isEmpty());
#else
        QSKIP("Windows shows compiled help with its own viewer");
#endif
    }
};

QTEST_GUILESS_MAIN(TestChmFile)
#include "tst_chmfile.moc"
