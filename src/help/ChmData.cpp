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

private:
    QByteArray readAt(qint64 offset, qint64 length) const
    {
        if (offset < 0 || offset + length > m_file.size() || !m_file.seek(offset))
            return {};
        const QByteArray data = m_file.read(length);
        return data.size() == length ? data : QByteArray();
    }

    QIODevice &m_file;
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

// The pages an index page leads to; chmlib may take any of them.
QList<qint32> indexChildren(const QByteArray &page)
{
    QList<qint32> children;
    const qsizetype end = page.size() - qsizetype(dword(page, 4));
    qsizetype at = 8;
    quint64 nameLength = 0, child = 0;
    while (at < end && encInt(page, at, end, nameLength) && nameLength <= quint64(end - at)) {
        at += qsizetype(nameLength);
        if (!encInt(page, at, end, child))
            break;
        children.append(qint32(child));
    }
    return children;
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
        for (const qint32 child : indexChildren(page)) {
            if (!descentEnds(dir, child, path, done))
                return false;
        }
        path.remove(n);
    }
    done.insert(n);
    return true;
}
} // namespace

bool chmDirectoryEnds(QIODevice &file)
{
    ChmDirectory dir(file);
    if (!dir.readHeaders())
        return true;
    if (!dir.pageSizeUsable())
        return false;
    QSet<qint32> listed;
    for (qint32 n = dir.head(); n != -1;) {
        if (listed.contains(n))
            return false;
        listed.insert(n);
        const QByteArray page = dir.page(n);
        if (!page.startsWith("PMGL"))
            break;
        n = qint32(dword(page, 0x10));
    }
    QSet<qint32> path, done;
    return descentEnds(dir, dir.root(), path, done);
}
