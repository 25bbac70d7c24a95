// Every text key that the forms and the code use must be in both language sets of the demo
// installation (German and English), so that the language files cannot drift from the
// forms: a control added to a .ui file with a new tag fails here until its texts exist.
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "testsupport/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

namespace {
const QString kMissing = QStringLiteral("<<missing>>");

// One text key found in a form: a control's tag, or one tab of a tagged tab control.
struct FormKey
{
    QString where;    // "Form/objectName" for the failure message
    QString file;     // stem: language, lng_2 or lng_3
    QString key;      // as looked up in that file
    QString designed; // the designed caption (text, title or tab title); may be empty
    bool tab = false;
};

// The file a control tag reads from: "@2" and "@3" pick lng_2 and lng_3, anything else
// (no suffix, an unknown one) the main file; the key is the part before the "@".
void splitTag(const QString &tag, QString &file, QString &key)
{
    key = tag.section(u'@', 0, 0);
    file = QStringLiteral("language");
    if (tag.contains(u'@')) {
        const int n = tag.section(u'@', 1, 1).toInt();
        if (n == 2)
            file = QStringLiteral("lng_2");
        else if (n == 3)
            file = QStringLiteral("lng_3");
    }
}

struct Node
{
    QString cls;
    QString name;
    QString tag;
    QString caption;  // property text/title/plainText
    QString tabTitle; // attribute title: the caption of a tab page
    QStringList tabTitles;
};

bool readForm(const QString &path, QList<FormKey> &keys, QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read ") + path;
        return false;
    }
    const QString form = QFileInfo(path).completeBaseName();
    QXmlStreamReader xml(&file);
    QList<Node> stack;
    QString property;  // name of the open <property>
    QString attribute; // name of the open <attribute>
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const auto name = xml.name();
            if (name == u"widget") {
                stack.append({xml.attributes().value(QLatin1String("class")).toString(),
                              xml.attributes().value(QLatin1String("name")).toString(),
                              {},
                              {},
                              {},
                              {}});
            } else if (name == u"property") {
                property = xml.attributes().value(QLatin1String("name")).toString();
            } else if (name == u"attribute") {
                attribute = xml.attributes().value(QLatin1String("name")).toString();
            } else if (name == u"string" && !stack.isEmpty()) {
                const QString text = xml.readElementText();
                Node &w = stack.last();
                if (property == u"tag")
                    w.tag = text;
                else if (property == u"text" || property == u"title" || property == u"plainText")
                    w.caption = text;
                else if (attribute == u"title")
                    w.tabTitle = text;
            }
        } else if (xml.isEndElement()) {
            const auto name = xml.name();
            if (name == u"property") {
                property.clear();
            } else if (name == u"attribute") {
                attribute.clear();
            } else if (name == u"widget") {
                const Node w = stack.takeLast();
                if (!stack.isEmpty() && stack.last().cls == u"QTabWidget")
                    stack.last().tabTitles.append(w.tabTitle);
                if (w.tag.isEmpty())
                    continue;
                FormKey k;
                k.where = form + u'/' + w.name;
                splitTag(w.tag, k.file, k.key);
                if (w.cls != u"QTabWidget") {
                    k.designed = w.caption;
                    keys.append(k);
                    continue;
                }
                // A tab control's own tag names no text; each tab reads "S<tag>T<n>".
                for (int i = 0; i < w.tabTitles.size(); ++i) {
                    FormKey t = k;
                    t.where = k.where + QStringLiteral(" tab %1").arg(i);
                    t.key = QStringLiteral("S%1T%2").arg(k.key).arg(i);
                    t.designed = w.tabTitles[i];
                    t.tab = true;
                    keys.append(t);
                }
            }
        }
    }
    if (xml.hasError()) {
        error = path + QStringLiteral(": ") + xml.errorString();
        return false;
    }
    return true;
}

QStringList sourceFiles(const QStringList &patterns)
{
    QStringList files;
    QDirIterator it(TestSupport::sourceDir() + QStringLiteral("/src"), patterns, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    files.sort();
    return files;
}

QString languageFile(const QString &stem, const QString &code)
{
    return TestSupport::sourceDir() + QStringLiteral("/demo/install/language/") + stem + u'.' + code;
}

QString lookUp(const QString &stem, const QString &code, const QString &key)
{
    return ReadIniString(code, key, kMissing, languageFile(stem, code));
}
} // namespace

class TestLanguageCoverage : public QObject
{
    Q_OBJECT

    QList<FormKey> m_keys;

    static void addLanguages()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("German") << "de";
        QTest::newRow("English") << "us";
    }

private slots:
    void initTestCase()
    {
        const QStringList forms = sourceFiles({QStringLiteral("*.ui")});
        QVERIFY2(!forms.isEmpty(), "no .ui files found below src");
        for (const QString &path : forms) {
            QString error;
            QVERIFY2(readForm(path, m_keys, error), qPrintable(error));
        }
        // Guards the reader itself: without the tab keys the walk found nothing real.
        const bool haveTabs =
            std::any_of(m_keys.cbegin(), m_keys.cend(), [](const FormKey &k) { return k.tab; });
        QVERIFY2(haveTabs, "no tagged tab control found in the forms");
    }

    void formKeysAreInBothLanguages_data() { addLanguages(); }
    void formKeysAreInBothLanguages()
    {
        QFETCH(QString, code);
        QStringList missing;
        for (const FormKey &k : std::as_const(m_keys)) {
            if (lookUp(k.file, code, k.key) == kMissing)
                missing << QStringLiteral("%1.%2: %3 (%4)").arg(k.file, code, k.key, k.where);
        }
        missing.removeDuplicates();
        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("missing keys:\n") + missing.join(u'\n')));
    }

    // The German files repeat the designed captions; a caption edited in a form without its
    // file (or the reverse) would switch texts when the user picks German.
    void germanTextsMatchTheForms()
    {
        QStringList differing;
        for (const FormKey &k : std::as_const(m_keys)) {
            if (k.designed.isEmpty())
                continue;
            const QString value = lookUp(k.file, QStringLiteral("de"), k.key);
            if (value == kMissing)
                continue; // reported by formKeysAreInBothLanguages
            const QString caption = value.contains(u'|') ? GetField(value, 1, QStringLiteral("|")) : value;
            if (caption != k.designed)
                differing << QStringLiteral("%1.de: %2 (%3) is \"%4\", the form has \"%5\"")
                                 .arg(k.file, k.key, k.where, caption, k.designed);
        }
        QVERIFY2(differing.isEmpty(), qPrintable(differing.join(u'\n')));
    }

    // The page list takes each tab's description from the part after "|" and adds a line only
    // when that part is not empty; a value ending in "|" (or in "| ", whose blank the ini
    // reader drops) would shift every later description by one page.
    void everyTabKeepsItsDescriptionLine_data() { addLanguages(); }
    void everyTabKeepsItsDescriptionLine()
    {
        QFETCH(QString, code);
        QStringList wrong;
        for (const FormKey &k : std::as_const(m_keys)) {
            if (!k.tab)
                continue;
            const QString value = lookUp(k.file, code, k.key);
            if (value == kMissing)
                continue;
            const bool hasDescription =
                value.contains(u'|') && !GetField(value, 2, QStringLiteral("|")).isEmpty();
            if (!k.designed.isEmpty() && !hasDescription)
                wrong << QStringLiteral("%1: visible tab without description: \"%2\"").arg(k.key, value);
            else if (value.contains(u'|') && !hasDescription)
                wrong << QStringLiteral("%1: empty description shifts the later pages: \"%2\"")
                             .arg(k.key, value);
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    // Message keys ("M<n>") and code texts ("T<n>") written as literals in the sources, looked
    // up where the code reads them: lngMainText reads the main file, other "T" keys come from
    // lng_txt and "M" keys from lng_msg.
    void codeKeysAreInBothLanguages_data() { addLanguages(); }
    void codeKeysAreInBothLanguages()
    {
        QFETCH(QString, code);
        if (!QFile::exists(languageFile(QStringLiteral("lng_msg"), QStringLiteral("de"))))
            QSKIP("the demo installation has no message file yet");
        static const QRegularExpression literal(
            QStringLiteral("(?:\\b(lngMainText)\\(\\s*QStringLiteral\\()?\"([MT]\\d+)\""));
        QStringList missing;
        int found = 0;
        for (const QString &path : sourceFiles({QStringLiteral("*.cpp"), QStringLiteral("*.h")})) {
            QFile file(path);
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
            const QString text = QString::fromUtf8(file.readAll());
            for (auto m = literal.globalMatch(text); m.hasNext();) {
                const auto match = m.next();
                const QString key = match.captured(2);
                const QString stem = match.hasCaptured(1)   ? QStringLiteral("language")
                                     : key.startsWith(u'M') ? QStringLiteral("lng_msg")
                                                            : QStringLiteral("lng_txt");
                ++found;
                if (lookUp(stem, code, key) == kMissing)
                    missing << QStringLiteral("%1.%2: %3 (%4)")
                                   .arg(stem, code, key,
                                        QDir(TestSupport::sourceDir()).relativeFilePath(path));
            }
        }
        if (found == 0)
            QSKIP("no message or code text keys in the sources yet");
        missing.removeDuplicates();
        QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("missing keys:\n") + missing.join(u'\n')));
    }
};

QTEST_GUILESS_MAIN(TestLanguageCoverage)
#include "tst_languagecoverage.moc"
