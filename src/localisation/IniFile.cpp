#include "localisation/IniFile.h"

#include "core/ProgramFolder.h"
#include "core/TextFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QVector>

#include <algorithm>
#include <vector>

namespace {
struct IniEntry
{
    QString value;
    bool hasValue = false; // a line without "=" names a key that has no value
};

// A value as its place in the file's text, so that parsing copies nothing.
struct IniSlot
{
    qsizetype pos = 0, length = 0;
    bool hasValue = false;
};

// A key by its place in the text and the hash of its lower-case form. A whole application's
// language file holds thousands of keys: a sorted list of these is built several times
// faster than a hash of lower-cased copies, and it is built before the window shows.
struct IniKey
{
    size_t hash = 0;
    qsizetype pos = 0, length = 0;
    IniSlot slot;
};

struct IniSection
{
    std::vector<IniKey> keys; // by hash; of equal hashes the first occurrence first
};

struct ParsedIni
{
    QString text;
    QHash<QString, IniSection> sections; // lower-case name -> first section of that name
};

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

QStringView trimBlanks(QStringView s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && isBlank(s[b]))
        ++b;
    while (e > b && isBlank(s[e - 1]))
        --e;
    return s.sliced(b, e - b);
}

// Keys are nearly always ASCII, lowered on the fly; anything else by QString's rules.
bool isAscii(QStringView key)
{
    return std::all_of(key.begin(), key.end(), [](QChar c) { return c.unicode() < 0x80; });
}

char16_t lowerAscii(QChar c)
{
    const char16_t u = c.unicode();
    return u >= u'A' && u <= u'Z' ? char16_t(u + 32) : u;
}

size_t keyHash(QStringView key)
{
    if (!isAscii(key))
        return qHash(key.toString().toLower());
    size_t h = 14695981039346656037ULL;
    for (const QChar c : key)
        h = (h ^ lowerAscii(c)) * 1099511628211ULL;
    return h;
}

bool sameKey(QStringView a, QStringView b)
{
    if (!isAscii(a) || !isAscii(b))
        return a.toString().toLower() == b.toString().toLower();
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](QChar x, QChar y) {
               return lowerAscii(x) == lowerAscii(y);
           });
}

ParsedIni parseIni(QString decoded)
{
    ParsedIni ini;
    ini.text = std::move(decoded);
    const QStringView text(ini.text);
    // Keys above the first header belong to a section without a name.
    QSet<QString> seenSections{QString()};
    IniSection *current = &ini.sections[QString()];
    qsizetype pos = 0;
    const qsizetype n = text.size();
    while (pos < n) {
        qsizetype end = pos;
        while (end < n && text[end] != u'\r' && text[end] != u'\n')
            ++end;
        const QStringView line = trimBlanks(text.sliced(pos, end - pos));
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
            const QString name = trimBlanks(line.sliced(1, close - 1)).toString().toLower();
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
        IniSlot slot;
        QStringView key = line;
        if (eq >= 0) {
            key = trimBlanks(line.first(eq));
            const QStringView value = trimBlanks(line.sliced(eq + 1));
            slot.pos = value.isEmpty() ? 0 : value.data() - text.data();
            slot.length = value.size();
            slot.hasValue = true;
        }
        current->keys.push_back({keyHash(key), key.data() - text.data(), key.size(), slot});
    }
    for (IniSection &section : ini.sections)
        std::stable_sort(section.keys.begin(), section.keys.end(),
                         [](const IniKey &a, const IniKey &b) { return a.hash < b.hash; });
    return ini;
}

// Language files are asked once per control while a form is localised, and a whole
// application's files hold thousands of entries: each file is read and parsed once and read
// again only when its size or time changes. A file written within the last moments may be
// rewritten within the same tick of the file system's clock, so until its time is safely in
// the past its bytes are compared as well.
constexpr qint64 kClockSlackMs = 2000;

struct CachedIni
{
    qint64 size = -1;
    qint64 modified = 0; // ms since the epoch
    QByteArray bytes;    // kept only while the time stamp cannot be trusted
    ParsedIni parsed;
};

QMutex cacheMutex;
QHash<QString, CachedIni> cache;

bool lookup(const QString &fileName, const QString &section, const QString &key, IniEntry &out)
{
    const QString path = findPathCaseInsensitive(fileName);
    // A file far beyond any ini written by hand or by Pawnsketch counts as absent.
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > kSettingsFileLimit)
        return false;
    const qint64 size = info.size();
    const qint64 modified = info.lastModified().toMSecsSinceEpoch();
    QMutexLocker lock(&cacheMutex);
    auto it = cache.find(path);
    const bool stamped = it != cache.end() && it->size == size && it->modified == modified;
    if (!stamped || !it->bytes.isNull()) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return false;
        QByteArray bytes = file.readAll();
        file.close();
        if (!stamped || it->bytes != bytes) {
            if (cache.size() > 64)
                cache.clear();
            CachedIni entry;
            entry.size = size;
            entry.modified = modified;
            entry.parsed = parseIni(decodeInstallationText(bytes));
            entry.bytes = std::move(bytes);
            it = cache.insert(path, std::move(entry));
        }
        if (QDateTime::currentMSecsSinceEpoch() - modified > kClockSlackMs)
            it->bytes = QByteArray();
    }
    const auto sec = it->parsed.sections.constFind(trimBlanks(section).toString().toLower());
    if (sec == it->parsed.sections.constEnd())
        return false;
    const QStringView wanted = trimBlanks(key);
    const QStringView text(it->parsed.text);
    IniKey probe;
    probe.hash = keyHash(wanted);
    auto [from, to] = std::equal_range(sec->keys.begin(), sec->keys.end(), probe,
                                       [](const IniKey &a, const IniKey &b) { return a.hash < b.hash; });
    const auto entry = std::find_if(
        from, to, [&](const IniKey &k) { return sameKey(text.sliced(k.pos, k.length), wanted); });
    if (entry == to)
        return false;
    out.hasValue = entry->slot.hasValue;
    out.value = it->parsed.text.mid(entry->slot.pos, entry->slot.length);
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

void preloadIniFile(const QString &fileName)
{
    IniEntry unused;
    lookup(fileName, QString(), QString(), unused);
}

void forgetIniFiles()
{
    QMutexLocker lock(&cacheMutex);
    cache.clear();
}
