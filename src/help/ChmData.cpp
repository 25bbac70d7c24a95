#include "help/ChmData.h"

#include "core/TextFile.h"

#include <QRegularExpression>
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
