#include "localisation/IniFile.h"

#include "core/ProgramFolder.h"
#include "core/TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QVector>

namespace {
struct IniEntry
{
    QString value;
    bool hasValue = false; // a line without "=" names a key that has no value
};

struct IniSection
{
    QHash<QString, IniEntry> entries; // lower-case key -> first occurrence
};

struct ParsedIni
{
    QByteArray bytes;                    // what was parsed; reused while the file still holds exactly this
    QHash<QString, IniSection> sections; // lower-case name -> first section of that name
};

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

QString trimBlanks(QStringView s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && isBlank(s[b]))
        ++b;
    while (e > b && isBlank(s[e - 1]))
        --e;
    return s.mid(b, e - b).toString();
}

ParsedIni parseIni(const QString &text)
{
    ParsedIni ini;
    // Keys above the first header belong to a section without a name.
    QSet<QString> seenSections{QString()};
    IniSection *current = &ini.sections[QString()];
    qsizetype pos = 0;
    const qsizetype n = text.size();
    while (pos < n) {
        qsizetype end = pos;
        while (end < n && text[end] != u'\r' && text[end] != u'\n')
            ++end;
        const QString line = trimBlanks(QStringView(text).mid(pos, end - pos));
        // CR LF is one line end; a lone CR or LF is one too.
        pos = end;
        if (pos < n && text[pos] == u'\r')
            ++pos;
        if (pos < n && text[pos] == u'\n')
            ++pos;
        if (line.isEmpty())
            continue;
        // The name runs to the last "]" and may hold others; a line without one is no
        // header but an ordinary line of the section above.
        const qsizetype close = line.startsWith(u'[') ? line.lastIndexOf(u']') : -1;
        if (close > 0) {
            const QString name = trimBlanks(QStringView(line).mid(1, close - 1)).toLower();
            if (seenSections.contains(name)) {
                current = nullptr; // later sections of the same name are never read
            } else {
                seenSections.insert(name);
                current = &ini.sections[name];
            }
            continue;
        }
        if (!current)
            continue;
        const qsizetype eq = line.indexOf(u'=');
        IniEntry entry;
        QString key;
        if (eq < 0) {
            key = line;
        } else {
            key = trimBlanks(QStringView(line).left(eq));
            entry.value = trimBlanks(QStringView(line).mid(eq + 1));
            entry.hasValue = true;
        }
        key = key.toLower();
        if (!current->entries.contains(key))
            current->entries.insert(key, entry);
    }
    return ini;
}

// Language files are read once per control while a form is localised. Reading is cheap,
// parsing is not, so a file is parsed again only when its bytes changed (time stamps
// are too coarse for files rewritten within the same moment).
QMutex cacheMutex;
QHash<QString, ParsedIni> cache;

bool lookup(const QString &fileName, const QString &section, const QString &key, IniEntry &out)
{
    const QString path = findPathCaseInsensitive(fileName);
    QFile file(path);
    // Forms read the language files once per control: a file far beyond any ini written
    // by hand or by Pawnsketch would be read and compared that often, so it counts as absent.
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > kSettingsFileLimit || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    file.close();
    QMutexLocker lock(&cacheMutex);
    auto it = cache.find(path);
    if (it == cache.end() || it->bytes != bytes) {
        ParsedIni parsed = parseIni(decodeInstallationText(bytes));
        parsed.bytes = bytes;
        if (cache.size() > 64)
            cache.clear();
        it = cache.insert(path, parsed);
    }
    const auto sec = it->sections.constFind(trimBlanks(section).toLower());
    if (sec == it->sections.constEnd())
        return false;
    const auto entry = sec->entries.constFind(trimBlanks(key).toLower());
    if (entry == sec->entries.constEnd())
        return false;
    out = *entry;
    return true;
}

QString stripQuotes(const QString &value)
{
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
        value.back() == value.front())
        return value.mid(1, value.size() - 2);
    return value;
}
} // namespace

QString ReadIniString(const QString &section, const QString &key, const QString &defaultValue,
                      const QString &fileName, int size)
{
    if (size <= 0)
        return {};
    IniEntry entry;
    QString result;
    if (lookup(fileName, section, key, entry) && entry.hasValue) {
        result = stripQuotes(entry.value);
    } else {
        result = defaultValue;
        // The cut stops before the first character: a default of blanks keeps one.
        while (result.size() > 1 && result.endsWith(u' '))
            result.chop(1);
    }
    if (result.size() > size - 1)
        result.truncate(size - 1);
    return result;
}
