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
#include <cstring>
#include <vector>

namespace {
struct IniEntry
{
    QString value;
    bool hasValue = false; // a line without "=" names a key that has no value
};

// A value as its place in the file's bytes: parsing decodes nothing but what is asked for.
struct IniSlot
{
    qsizetype pos = 0, length = 0;
    bool hasValue = false;
};

// A key by its place in the bytes and the hash of its lower-case form. A whole application's
// language file holds thousands of keys, and it is read before the window shows: a list of
// these sorted by hash is built several times faster than a hash of decoded lower-case keys.
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

// Both encodings of the installation's files keep ASCII as it is, so the lines, "[", "]",
// "=" and blanks are found in the bytes themselves.
struct ParsedIni
{
    QByteArray bytes;
    bool utf8 = true;
    QHash<QString, IniSection> sections; // lower-case name -> first section of that name

    QString decode(qsizetype pos, qsizetype length) const
    {
        return decodeInstallationPiece(QByteArrayView(bytes).sliced(pos, length), utf8);
    }
};

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

QByteArrayView trimBlanks(QByteArrayView s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && isBlank(s[b]))
        ++b;
    while (e > b && isBlank(s[e - 1]))
        --e;
    return s.sliced(b, e - b);
}

QStringView trimBlanks(QStringView s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && (s[b] == u' ' || s[b] == u'\t'))
        ++b;
    while (e > b && (s[e - 1] == u' ' || s[e - 1] == u'\t'))
        --e;
    return s.sliced(b, e - b);
}

// Keys are nearly always ASCII, lowered on the fly; anything else by QString's rules.
bool isAscii(QStringView key)
{
    return std::all_of(key.begin(), key.end(), [](QChar c) { return c.unicode() < 0x80; });
}

bool isAscii(QByteArrayView key)
{
    return std::all_of(key.begin(), key.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char16_t lowerAscii(char16_t c)
{
    return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c;
}

size_t asciiHash(QStringView key)
{
    size_t h = 14695981039346656037ULL;
    for (const QChar c : key)
        h = (h ^ lowerAscii(c.unicode())) * 1099511628211ULL;
    return h;
}

size_t keyHash(QStringView key)
{
    return isAscii(key) ? asciiHash(key) : qHash(key.toString().toLower());
}

size_t keyHash(const ParsedIni &ini, qsizetype pos, qsizetype length)
{
    const QByteArrayView key = QByteArrayView(ini.bytes).sliced(pos, length);
    if (!isAscii(key))
        return keyHash(ini.decode(pos, length));
    size_t h = 14695981039346656037ULL;
    for (const char c : key)
        h = (h ^ lowerAscii(char16_t(c))) * 1099511628211ULL;
    return h;
}

bool sameKey(const ParsedIni &ini, const IniKey &key, QStringView wanted)
{
    const QByteArrayView bytes = QByteArrayView(ini.bytes).sliced(key.pos, key.length);
    if (!isAscii(bytes) || !isAscii(wanted))
        return ini.decode(key.pos, key.length).toLower() == wanted.toString().toLower();
    return bytes.size() == wanted.size() &&
           std::equal(bytes.begin(), bytes.end(), wanted.begin(),
                      [](char x, QChar y) { return lowerAscii(char16_t(x)) == lowerAscii(y.unicode()); });
}

ParsedIni parseIni(QByteArray bytes)
{
    ParsedIni ini;
    ini.bytes = std::move(bytes);
    ini.utf8 = isInstallationUtf8(ini.bytes);
    const QByteArrayView text(ini.bytes);
    // Keys above the first header belong to a section without a name.
    QSet<QString> seenSections{QString()};
    IniSection *current = &ini.sections[QString()];
    qsizetype pos = text.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const qsizetype n = text.size();
    while (pos < n) {
        // The line ends at the first CR or LF (memchr finds either far faster than a loop).
        const char *at = text.data() + pos;
        const auto *lf = static_cast<const char *>(std::memchr(at, '\n', size_t(n - pos)));
        qsizetype end = lf ? lf - text.data() : n;
        if (const auto *cr = static_cast<const char *>(std::memchr(at, '\r', size_t(end - pos))))
            end = cr - text.data();
        const QByteArrayView line = trimBlanks(text.sliced(pos, end - pos));
        // CR LF is one line end; a lone CR or LF is one too.
        pos = end;
        if (pos < n && text[pos] == '\r')
            ++pos;
        if (pos < n && text[pos] == '\n')
            ++pos;
        if (line.isEmpty())
            continue;
        // The name runs to the last "]" and may hold others; a line without one is no
        // header but an ordinary line of the section above.
        const qsizetype close = line.startsWith('[') ? line.lastIndexOf(']') : -1;
        if (close > 0) {
            const QByteArrayView raw = trimBlanks(line.sliced(1, close - 1));
            const QString name = ini.decode(raw.data() - text.data(), raw.size()).toLower();
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
        const qsizetype eq = line.indexOf('=');
        IniSlot slot;
        QByteArrayView key = line;
        if (eq >= 0) {
            key = trimBlanks(line.first(eq));
            const QByteArrayView value = trimBlanks(line.sliced(eq + 1));
            slot.pos = value.isEmpty() ? 0 : value.data() - text.data();
            slot.length = value.size();
            slot.hasValue = true;
        }
        const qsizetype keyPos = key.data() - text.data();
        current->keys.push_back({keyHash(ini, keyPos, key.size()), keyPos, key.size(), slot});
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
            entry.parsed = parseIni(bytes);
            entry.bytes = std::move(bytes);
            it = cache.insert(path, std::move(entry));
        }
        if (QDateTime::currentMSecsSinceEpoch() - modified > kClockSlackMs)
            it->bytes = QByteArray();
    }
    const auto sec = it->parsed.sections.constFind(trimBlanks(QStringView(section)).toString().toLower());
    if (sec == it->parsed.sections.constEnd())
        return false;
    const QStringView wanted = trimBlanks(QStringView(key));
    IniKey probe;
    probe.hash = keyHash(wanted);
    auto [from, to] = std::equal_range(sec->keys.begin(), sec->keys.end(), probe,
                                       [](const IniKey &a, const IniKey &b) { return a.hash < b.hash; });
    const auto entry =
        std::find_if(from, to, [&](const IniKey &k) { return sameKey(it->parsed, k, wanted); });
    if (entry == to)
        return false;
    out.hasValue = entry->slot.hasValue;
    out.value = it->parsed.decode(entry->slot.pos, entry->slot.length);
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
