#include "help/ChmData.h"

#include "core/TextFile.h"

#include <QIODevice>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <QtEndian>

namespace {
quint32 dword(const QByteArray &data, qsizetype at)
{
    return qFromLittleEndian<quint32>(data.constData() + at);
}

QString cString(const QByteArray &data, qsizetype at)
{
    if (at < 0 || at >= data.size())
        return {};
    qsizetype end = data.indexOf('\0', at);
    if (end < 0)
        end = data.size();
    return decodeInstallationText(data.mid(at, end - at));
}

QString decodeEntities(QString text)
{
    static const std::pair<const char *, const char16_t *> entities[] = {
        {"&nbsp;", u" "},      {"&lt;", u"<"},        {"&gt;", u">"},         {"&quot;", u"\""},
        {"&auml;", u"\u00e4"}, {"&ouml;", u"\u00f6"}, {"&uuml;", u"\u00fc"},  {"&Auml;", u"\u00c4"},
        {"&Ouml;", u"\u00d6"}, {"&Uuml;", u"\u00dc"}, {"&szlig;", u"\u00df"}, {"&amp;", u"&"},
    };
    for (const auto &[entity, character] : entities)
        text.replace(QLatin1String(entity), QString::fromUtf16(character));
    return text;
}
} // namespace

QHash<quint32, QString> parseContextMap(const QByteArray &ivb, const QByteArray &strings)
{
    QHash<quint32, QString> map;
    if (ivb.size() < 4)
        return map;
    const qsizetype end = qMin<qsizetype>(ivb.size(), 4 + qsizetype(dword(ivb, 0)));
    for (qsizetype at = 4; at + 8 <= end; at += 8) {
        const QString name = cString(strings, qsizetype(dword(ivb, at + 4)));
        if (!name.isEmpty())
            map.insert(dword(ivb, at), name);
    }
    return map;
}

ChmSystem parseChmSystem(const QByteArray &system)
{
    ChmSystem result;
    for (qsizetype at = 4; at + 4 <= system.size();) {
        const quint16 code = qFromLittleEndian<quint16>(system.constData() + at);
        const quint16 length = qFromLittleEndian<quint16>(system.constData() + at + 2);
        at += 4;
        if (at + length > system.size())
            break;
        const QString value = cString(system.left(at + length), at);
        switch (code) {
        case 0:
            result.contents = value;
            break;
        case 1:
            result.index = value;
            break;
        case 2:
            result.defaultTopic = value;
            break;
        case 3:
            result.title = value;
            break;
        default:
            break;
        }
        at += length;
    }
    return result;
}

QList<SitemapEntry> parseSitemap(const QString &html)
{
    static const QRegularExpression tag(QStringLiteral("<\\s*(/?)\\s*(ul|object|param)\\b([^>]*)>"),
                                        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression attribute(
        QStringLiteral("(\\w+)\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s>]+))"));
    QList<SitemapEntry> entries;
    int depth = -1;
    SitemapEntry current;
    bool inObject = false;
    for (auto it = tag.globalMatch(html); it.hasNext();) {
        const auto m = it.next();
        const bool closing = !m.captured(1).isEmpty();
        const QString name = m.captured(2).toLower();
        if (name == u"ul") {
            depth += closing ? -1 : 1;
        } else if (name == u"object") {
            if (!closing) {
                current = SitemapEntry{{}, {}, qMax(0, depth)};
                inObject = true;
            } else if (inObject) {
                if (!current.name.isEmpty())
                    entries.append(current);
                inObject = false;
            }
        } else if (inObject) {
            QString paramName, value;
            for (auto a = attribute.globalMatch(m.captured(3)); a.hasNext();) {
                const auto am = a.next();
                const QString v = am.captured(2) + am.captured(3) + am.captured(4);
                if (am.captured(1).compare(QLatin1String("name"), Qt::CaseInsensitive) == 0)
                    paramName = v.toLower();
                else if (am.captured(1).compare(QLatin1String("value"), Qt::CaseInsensitive) == 0)
                    value = decodeEntities(v);
            }
            if (paramName == u"name" && current.name.isEmpty())
                current.name = value;
            else if (paramName == u"local")
                current.local = value;
        }
    }
    return entries;
}

QString htmlText(const QString &html)
{
    static const QRegularExpression hidden(QStringLiteral("<(script|style|head)\\b.*?</\\1\\s*>"),
                                           QRegularExpression::CaseInsensitiveOption |
                                               QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression tags(QStringLiteral("<[^>]*>"));
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QString text = html;
    text.remove(hidden);
    text.replace(tags, QStringLiteral(" "));
    return decodeEntities(text).replace(blanks, QStringLiteral(" ")).trimmed();
}

QString htmlTitle(const QString &html)
{
    static const QRegularExpression title(QStringLiteral("<title[^>]*>(.*?)</title\\s*>"),
                                          QRegularExpression::CaseInsensitiveOption |
                                              QRegularExpression::DotMatchesEverythingOption);
    return decodeEntities(title.match(html).captured(1)).simplified();
}

QString objectPathFor(const QString &name, const std::function<bool(const QString &)> &exists)
{
    QString path = name;
    path.replace(u'\\', u'/');
    const QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString candidate = u'/' + parts.mid(i).join(u'/');
        if (exists(candidate))
            return candidate;
    }
    return {};
}

namespace {
// Reads the directory's pages as chmlib finds them: after the ITSF header's directory
// offset and the ITSP header's own length, page n at n times the page size.
class ChmDirectory
{
public:
    explicit ChmDirectory(QIODevice &file) : m_file(file) {}

    // False when the headers are not there (not a file chmlib opens).
    bool readHeaders()
    {
        const QByteArray itsf = readAt(0, 0x58);
        if (itsf.size() < 0x58 || !itsf.startsWith("ITSF"))
            return false;
        const qint64 dirOffset = qint64(qFromLittleEndian<quint64>(itsf.constData() + 0x48));
        const QByteArray itsp = readAt(dirOffset, 0x54);
        if (itsp.size() < 0x54 || !itsp.startsWith("ITSP"))
            return false;
        const QByteArray data = readAt(0x58, 8);
        m_data = dword(itsf, 4) >= 3 && data.size() == 8
                     ? qint64(qFromLittleEndian<quint64>(data.constData()))
                     : dirOffset + qint64(qFromLittleEndian<quint64>(itsf.constData() + 0x50));
        m_pages = dirOffset + dword(itsp, 8);
        m_pageSize = dword(itsp, 0x10);
        m_root = qint32(dword(itsp, 0x1c));
        m_head = qint32(dword(itsp, 0x20));
        return true;
    }
    bool pageSizeUsable() const { return m_pageSize >= 0x14 && m_pageSize <= 1024 * 1024; }
    qint32 head() const { return m_head; }
    qint32 root() const { return m_root == -1 ? m_head : m_root; }

    // "" for a page outside the file, where chmlib stops.
    QByteArray page(qint32 n) const
    {
        return n < 0 ? QByteArray() : readAt(m_pages + qint64(n) * m_pageSize, m_pageSize);
    }
    // Whether the file holds all of an object's bytes.
    bool holds(quint64 offset, quint64 length) const
    {
        const quint64 size = quint64(qMax<qint64>(0, m_file.size() - m_data));
        return offset <= size && length <= size - offset;
    }
    // The start of an uncompressed object.
    QByteArray object(quint64 offset, qint64 length) const
    {
        return offset > quint64(m_file.size()) ? QByteArray() : readAt(m_data + qint64(offset), length);
    }

private:
    QByteArray readAt(qint64 offset, qint64 length) const
    {
        if (offset < 0 || length > m_file.size() || offset > m_file.size() - length || !m_file.seek(offset))
            return {};
        const QByteArray data = m_file.read(length);
        return data.size() == length ? data : QByteArray();
    }

    QIODevice &m_file;
    qint64 m_data = 0;
    qint64 m_pages = 0;
    qint64 m_pageSize = 0;
    qint32 m_root = -1, m_head = -1;
};

// chmlib's variable-length number: seven bits a byte, high bit set on all but the last.
bool encInt(const QByteArray &page, qsizetype &at, qsizetype end, quint64 &value)
{
    value = 0;
    for (int bytes = 0; at < end && bytes < 10; ++bytes) {
        const auto b = quint8(page[at++]);
        value = (value << 7) | (b & 0x7f);
        if (b < 0x80)
            return true;
    }
    return false;
}

struct ChmEntry
{
    QByteArray name;
    quint64 section = 0, offset = 0, length = 0;
};

// A listing page's entries (name, section, offset, length), or an index page's names with
// the page each leads to in `offset`; entries start after the page's header.
QList<ChmEntry> pageEntries(const QByteArray &page, qsizetype header, bool listing)
{
    QList<ChmEntry> entries;
    const qsizetype end = page.size() - qsizetype(dword(page, 4));
    qsizetype at = header;
    quint64 nameLength = 0;
    while (at < end && encInt(page, at, end, nameLength) && nameLength <= quint64(end - at)) {
        ChmEntry entry{page.mid(at, qsizetype(nameLength))};
        at += qsizetype(nameLength);
        if ((listing && !encInt(page, at, end, entry.section)) || !encInt(page, at, end, entry.offset) ||
            (listing && !encInt(page, at, end, entry.length)))
            break;
        entries.append(entry);
    }
    return entries;
}

bool descentEnds(const ChmDirectory &dir, qint32 n, QSet<qint32> &path, QSet<qint32> &done)
{
    if (done.contains(n))
        return true;
    if (path.contains(n) || path.size() > 64)
        return false;
    const QByteArray page = dir.page(n);
    if (page.startsWith("PMGI")) {
        path.insert(n);
        for (const ChmEntry &child : pageEntries(page, 8, false)) {
            if (!descentEnds(dir, qint32(child.offset), path, done))
                return false;
        }
        path.remove(n);
    }
    done.insert(n);
    return true;
}

// The compressed section's parameters as chmlib uses them without checking: the reset
// table's block size (a value beyond 32 bits makes it copy from far outside its buffers),
// the window size (one its decompressor refuses leaves it without one) and the number of
// blocks between resets (it divides by it).
bool compressionUsable(const QByteArray &control, const QByteArray &reset)
{
    if (control.size() < 0x18 || reset.size() < 0x28 || control.mid(4, 4) != "LZXC")
        return false;
    // In chmlib's own 32-bit arithmetic, overflows included.
    const quint32 scale = dword(control, 8) == 2 ? 0x8000 : 1;
    const quint32 interval = dword(control, 12) * scale, window = dword(control, 16) * scale;
    const quint64 block = qFromLittleEndian<quint64>(reset.constData() + 0x20);
    const bool windowUsable = window >= (1u << 15) && window <= (1u << 21) && (window & (window - 1)) == 0;
    return windowUsable && quint32(interval / (window / 2) * dword(control, 20)) > 0 && block > 0 &&
           block <= 1024 * 1024;
}
} // namespace

bool chmStructureUsable(QIODevice &file)
{
    ChmDirectory dir(file);
    if (!dir.readHeaders())
        return true;
    if (!dir.pageSizeUsable())
        return false;
    QSet<qint32> listing;
    for (qint32 n = dir.head(); n != -1;) {
        if (listing.contains(n))
            return false;
        const QByteArray page = dir.page(n);
        if (!page.startsWith("PMGL"))
            break;
        listing.insert(n);
        n = qint32(dword(page, 0x10));
    }
    QSet<qint32> path, reached;
    if (!descentEnds(dir, dir.root(), path, reached))
        return false;

    // Every listing page chmlib may search, whether by the list or through the index.
    QByteArray control, reset;
    for (const qint32 n : listing | reached) {
        const QByteArray page = dir.page(n);
        if (!page.startsWith("PMGL"))
            continue;
        for (const ChmEntry &entry : pageEntries(page, 0x14, true)) {
            // chmlib takes any section but the first for the compressed one.
            if (entry.section > 1)
                return false;
            const QByteArray name = entry.name.toLower();
            const bool isControl = name == "::dataspace/storage/mscompressed/controldata";
            const bool isReset = name.startsWith("::dataspace/storage/mscompressed/transform/") &&
                                 name.endsWith("/instancedata/resettable");
            if ((isControl || isReset || name == "::dataspace/storage/mscompressed/content") &&
                entry.section != 0)
                return false;
            if (isControl || isReset) {
                QByteArray &found = isControl ? control : reset;
                if (!found.isEmpty())
                    return false; // two of them, and no telling which chmlib takes
                found =
                    dir.object(entry.offset, qMin<qint64>(qint64(qMin<quint64>(entry.length, 0x28)), 0x28));
                if (found.isEmpty())
                    found = "?";
            }
        }
    }
    return (control.isEmpty() && reset.isEmpty()) || compressionUsable(control, reset);
}

bool chmFileReadable(QIODevice &file)
{
    ChmDirectory dir(file);
    if (!dir.readHeaders() || !chmStructureUsable(file))
        return false;
    // The listing ends (no loop, checked above) and each object lies whole in the file: a
    // file cut off while copied loses its last pages or the end of its data.
    for (qint32 n = dir.head(); n != -1;) {
        const QByteArray page = dir.page(n);
        if (!page.startsWith("PMGL"))
            return false;
        for (const ChmEntry &entry : pageEntries(page, 0x14, true)) {
            if (entry.section == 0 && !dir.holds(entry.offset, entry.length))
                return false;
        }
        n = qint32(dword(page, 0x10));
    }
    return true;
}
