// Every text key that the forms and the code use must be in both language sets of the demo
// installation (German and English), so that the language files cannot drift from the
// forms: a control added to a .ui file with a new tag fails here until its texts exist.
#include "core/ProgramFolder.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

#include <algorithm>

namespace {
const QString kMissing = QStringLiteral("<<missing>>");

// One text key found in a form: a control's tag, or one tab of a tagged tab control.
struct FormKey
{
    QString where, tag, designed; // designed: the caption in the form, may be empty
    int tab = -1;
};

bool readForm(const QString &path, QList<FormKey> &keys)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString form = QFileInfo(path).completeBaseName();
    struct Node
    {
        QString cls, name, tag, caption, tabTitle;
        QStringList tabTitles;
    };
    QList<Node> stack;
    QString property, attribute; // names of the open <property> and <attribute>
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        const auto name = xml.name();
        const auto attr = [&](const char *a) { return xml.attributes().value(QLatin1String(a)).toString(); };
        if (xml.isStartElement() && name == u"widget") {
            stack.append({attr("class"), attr("name"), {}, {}, {}, {}});
        } else if (xml.isStartElement() && name == u"property") {
            property = attr("name");
        } else if (xml.isStartElement() && name == u"attribute") {
            attribute = attr("name");
        } else if (xml.isStartElement() && name == u"string" && !stack.isEmpty()) {
            const QString text = xml.readElementText();
            if (property == u"tag")
                stack.last().tag = text;
            else if (property == u"text" || property == u"title" || property == u"plainText")
                stack.last().caption = text;
            else if (attribute == u"title")
                stack.last().tabTitle = text;
        } else if (xml.isEndElement() && name == u"property") {
            property.clear();
        } else if (xml.isEndElement() && name == u"attribute") {
            attribute.clear();
        } else if (xml.isEndElement() && name == u"widget") {
            const Node w = stack.takeLast();
            if (!stack.isEmpty() && stack.last().cls == u"QTabWidget")
                stack.last().tabTitles.append(w.tabTitle);
            const QString where = form + u'/' + w.name;
            if (w.tag.isEmpty())
                continue;
            if (w.cls != u"QTabWidget")
                keys.append({where, w.tag, w.caption});
            // A tab control's own tag names no text; each tab reads "S<tag>T<n>".
            for (int i = 0; w.cls == u"QTabWidget" && i < w.tabTitles.size(); ++i)
                keys.append({where + QStringLiteral(" tab %1").arg(i), w.tag, w.tabTitles[i], i});
        }
    }
    return !xml.hasError();
}

QStringList sourceFiles(const QStringList &patterns)
{
    QStringList files;
    QDirIterator it(TestSupport::sourceDir() + QStringLiteral("/src"), patterns, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    return files;
}

QString lookUp(const QString &file, const QString &code, const QString &key)
{
    return ReadIniString(code, key, kMissing, languageFilePath(file));
}
} // namespace

class TestLanguageCoverage : public QObject
{
    Q_OBJECT

    QList<FormKey> m_keys;

private slots:
    void initTestCase()
    {
        setProgramFolderForTesting(TestSupport::sourceDir() + QStringLiteral("/demo/install"));
        const QStringList forms = sourceFiles({QStringLiteral("*.ui")});
        QVERIFY2(!forms.isEmpty(), "no .ui files found below src");
        for (const QString &path : forms)
            QVERIFY2(readForm(path, m_keys), qPrintable(path));
        // Guards the reader itself: without the tab keys the walk found nothing real.
        QVERIFY(std::any_of(m_keys.cbegin(), m_keys.cend(), [](const FormKey &k) { return k.tab >= 0; }));
    }

    void forms_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("German") << "de";
        QTest::newRow("English") << "us";
    }
    // Each key exists; the German files repeat the designed captions (a caption edited in a
    // form without its file would switch texts when the user picks German); and the page list
    // adds a description line only when the part after "|" is not empty, so a tab value
    // ending in "|" (or "| ", whose blank the ini reader drops) shifts every later page.
    void forms()
    {
        QFETCH(QString, code);
        RefreshLngFiles(code);
        QStringList wrong;
        for (const FormKey &k : std::as_const(m_keys)) {
            // The file is picked by the tag's suffix as the forms' localisation picks it.
            QString key = k.tag;
            const QString file = GetLngFile(key);
            if (k.tab >= 0)
                key = QStringLiteral("S%1T%2").arg(key).arg(k.tab);
            const QString value = lookUp(file, code, key);
            const QString where = QStringLiteral("%1: %2 (%3): ").arg(file, key, k.where);
            const bool bar = value.contains(u'|');
            const QString caption = bar ? GetField(value, 1, QStringLiteral("|")) : value;
            const bool described = bar && !GetField(value, 2, QStringLiteral("|")).isEmpty();
            if (value == kMissing)
                wrong << where + QStringLiteral("missing");
            else if (code == u"de" && !k.designed.isEmpty() && caption != k.designed)
                wrong << where + QStringLiteral("\"%1\", the form has \"%2\"").arg(caption, k.designed);
            else if (k.tab >= 0 && (bar || !k.designed.isEmpty()) && !described)
                wrong << where + QStringLiteral("tab without description: \"%1\"").arg(value);
        }
        wrong.removeDuplicates();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    // Message keys ("M<n>") and code texts ("T<n>") written as literals in the sources, looked
    // up where the code reads them: lngMainText reads the main file, other "T" keys come from
    // lng_txt and "M" keys from lng_msg.
    void codeKeysAreInBothLanguages_data() { forms_data(); }
    void codeKeysAreInBothLanguages()
    {
        QFETCH(QString, code);
        RefreshLngFiles(code);
        static const QRegularExpression literal(
            QStringLiteral("(?:\\b(lngMainText)\\(\\s*QStringLiteral\\()?\"([MT]\\d+)\""));
        QStringList missing;
        int found = 0;
        for (const QString &path : sourceFiles({QStringLiteral("*.cpp"), QStringLiteral("*.h")})) {
            QFile file(path);
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
            for (auto m = literal.globalMatch(QString::fromUtf8(file.readAll())); m.hasNext(); ++found) {
                const auto match = m.next();
                const QString key = match.captured(2);
                const LngFile read = match.hasCaptured(1)   ? LngFile::Main
                                     : key.startsWith(u'M') ? LngFile::Msg
                                                            : LngFile::Txt;
                const QString lngFile = languageState().fileNames[int(read)];
                if (lookUp(lngFile, code, key) == kMissing)
                    missing << QStringLiteral("%1: %2 (%3)").arg(lngFile, key, QFileInfo(path).fileName());
            }
        }
        QVERIFY(found > 0);
        missing.removeDuplicates();
        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("missing keys:\n") + missing.join(u'\n')));
    }
};

QTEST_GUILESS_MAIN(TestLanguageCoverage)
#include "tst_languagecoverage.moc"
