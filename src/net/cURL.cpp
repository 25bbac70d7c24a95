#include "net/cURL.h"

#include <QStringDecoder>
#include <QStringList>

namespace {

struct Parts
{
    qint32 lScheme = cURL::SchemeUnknown;
    QString scheme, hostName, userName, password, path, extraInfo;
    qint32 port = 0;
};

bool isSchemeChar(QChar c, bool first)
{
    const char16_t u = c.unicode();
    const bool alpha = (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z');
    if (first)
        return alpha;
    return alpha || (u >= '0' && u <= '9') || u == '+' || u == '-' || u == '.';
}

// Index of the ':' that ends the scheme, or -1 when the text does not start with one.
int schemeEnd(const QString &s)
{
    for (int i = 0; i < s.size(); ++i) {
        if (s.at(i) == QLatin1Char(':'))
            return i > 0 ? i : -1;
        if (!isSchemeChar(s.at(i), i == 0))
            return -1;
    }
    return -1;
}

int indexOfExtra(const QString &s, int from = 0)
{
    for (int i = from; i < s.size(); ++i) {
        if (s.at(i) == QLatin1Char('?') || s.at(i) == QLatin1Char('#'))
            return i;
    }
    return -1;
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Percent-encodes what a browser would not send as it stands; escapes that are already
// there are kept, a '%' that starts none becomes "%25".
QString encodeUnsafe(const QString &text)
{
    static const char hexDigits[] = "0123456789ABCDEF";
    const QByteArray bytes = text.toUtf8();
    QByteArray out;
    out.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto c = static_cast<unsigned char>(bytes.at(i));
        if (c == '%' && i + 2 < bytes.size() && isHex(bytes.at(i + 1)) && isHex(bytes.at(i + 2))) {
            out.append('%');
            continue;
        }
        const bool unsafe = c <= 0x20 || c >= 0x7f || c == '%' || c == '"' || c == '<' || c == '>' ||
                            c == '`' || c == '{' || c == '}' || c == '|' || c == '^';
        if (unsafe) {
            out.append('%');
            out.append(hexDigits[c >> 4]);
            out.append(hexDigits[c & 0xf]);
        } else {
            out.append(static_cast<char>(c));
        }
    }
    return QString::fromLatin1(out);
}

QString removeDotSegments(const QString &path)
{
    const QStringList in = path.split(QLatin1Char('/'));
    QStringList out;
    for (int i = 1; i < in.size(); ++i) {
        const QString &segment = in.at(i);
        const bool last = i == in.size() - 1;
        if (segment == QLatin1String(".") || segment == QLatin1String("..")) {
            if (segment.size() == 2 && !out.isEmpty())
                out.removeLast();
            if (last)
                out.append(QString()); // "/a/.." names the folder: keep its slash
            continue;
        }
        out.append(segment);
    }
    return QLatin1Char('/') + out.join(QLatin1Char('/'));
}

// Escapes decoded to their characters; bytes that are no UTF-8 are read as Latin-1.
QString decodeEscapes(const QString &text)
{
    if (!text.contains(QLatin1Char('%')))
        return text;
    const QByteArray bytes = QByteArray::fromPercentEncoding(text.toUtf8());
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : decoded;
}

bool needsHost(qint32 code)
{
    return code == cURL::SchemeFtp || code == cURL::SchemeGopher || code == cURL::SchemeHttp ||
           code == cURL::SchemeHttps;
}

bool parsePort(const QString &text, qint32 &port)
{
    if (text.isEmpty() || text.size() > 5)
        return false;
    qint32 value = 0;
    for (QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
        value = value * 10 + (c.unicode() - '0');
    }
    if (value > 65535)
        return false;
    port = value;
    return true;
}

// Fills p part by part in the cracker's order and stops at the first part that does
// not fit, so that p then holds what the cracker had written until its failure.
bool crack(const QString &url, Parts &p)
{
    const int colon = schemeEnd(url);
    if (colon < 0)
        return false;
    const QString scheme = url.left(colon);
    if (scheme.size() >= cURL::kSchemeBuffer)
        return false;
    p.scheme = scheme;
    p.lScheme = cURL::schemeCode(scheme);

    const QString rest = url.mid(colon + 1);
    const int extraAt = indexOfExtra(rest);
    const QString main = extraAt < 0 ? rest : rest.left(extraAt);
    const QString extra = extraAt < 0 ? QString() : rest.mid(extraAt);

    QString path;
    qint32 port = cURL::defaultPort(p.lScheme);
    if (main.startsWith(QLatin1String("//"))) {
        const int pathAt = main.indexOf(QLatin1Char('/'), 2);
        const QString authority = main.mid(2, pathAt < 0 ? -1 : pathAt - 2);
        path = pathAt < 0 ? QString() : main.mid(pathAt);

        QString hostPort = authority;
        const int at = authority.lastIndexOf(QLatin1Char('@'));
        if (at >= 0) {
            const QString userInfo = authority.left(at);
            hostPort = authority.mid(at + 1);
            const int split = userInfo.indexOf(QLatin1Char(':'));
            const QString user = decodeEscapes(split < 0 ? userInfo : userInfo.left(split));
            if (user.size() >= cURL::kUserBuffer)
                return false;
            p.userName = user;
            const QString password = split < 0 ? QString() : decodeEscapes(userInfo.mid(split + 1));
            if (password.size() >= cURL::kPasswordBuffer)
                return false;
            p.password = password;
        }

        QString host = hostPort;
        QString portText;
        bool portGiven = false;
        if (hostPort.startsWith(QLatin1Char('['))) {
            const int close = hostPort.indexOf(QLatin1Char(']'));
            if (close < 0)
                return false;
            host = hostPort.left(close + 1);
            const QString after = hostPort.mid(close + 1);
            if (!after.isEmpty()) {
                if (!after.startsWith(QLatin1Char(':')))
                    return false;
                portGiven = true;
                portText = after.mid(1);
            }
        } else {
            const int portAt = hostPort.lastIndexOf(QLatin1Char(':'));
            if (portAt >= 0) {
                host = hostPort.left(portAt);
                portGiven = true;
                portText = hostPort.mid(portAt + 1);
            }
        }
        // "http://" alone splits, with an empty host: whether a host is usable is the
        // connection's business.
        if (host.size() >= cURL::kHostBuffer)
            return false;
        p.hostName = host;
        // "host:" with nothing after the colon means the default port, as in a browser.
        if (portGiven && !portText.isEmpty() && !parsePort(portText, port))
            return false;
    } else {
        if (needsHost(p.lScheme))
            return false;
        path = main;
    }
    p.port = port;

    const QString decodedPath = decodeEscapes(path);
    if (decodedPath.size() >= cURL::kPathBuffer)
        return false;
    p.path = decodedPath;
    if (extra.size() >= cURL::kExtraBuffer)
        return false;
    p.extraInfo = extra;
    return true;
}

} // namespace

qint32 cURL::schemeCode(const QString &scheme)
{
    static const struct
    {
        const char *name;
        qint32 code;
    } table[] = {
        {"ftp", SchemeFtp},           {"gopher", SchemeGopher}, {"http", SchemeHttp},
        {"https", SchemeHttps},       {"file", SchemeFile},     {"news", SchemeNews},
        {"mailto", SchemeMailto},     {"socks", SchemeSocks},   {"javascript", SchemeJavascript},
        {"vbscript", SchemeVbscript}, {"res", SchemeRes},
    };
    for (const auto &entry : table) {
        if (scheme.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0)
            return entry.code;
    }
    return SchemeUnknown;
}

qint32 cURL::defaultPort(qint32 schemeCode)
{
    switch (schemeCode) {
    case SchemeFtp:
        return 21;
    case SchemeGopher:
        return 70;
    case SchemeHttp:
        return 80;
    case SchemeHttps:
        return 443;
    case SchemeSocks:
        return 1080;
    default:
        return 0;
    }
}

bool cURL::canonicalize(const QString &url, QString &canonical)
{
    int begin = 0;
    while (begin < url.size() && url.at(begin).unicode() <= 0x20)
        ++begin;
    QString text = url.mid(begin);

    const int colon = schemeEnd(text);
    if (colon < 0)
        return false;

    // Browser mode: whatever follows "?" or "#" belongs to the server and stays as typed.
    const int extraAt = indexOfExtra(text, colon + 1);
    QString main = extraAt < 0 ? text : text.left(extraAt);
    const QString extra = extraAt < 0 ? QString() : text.mid(extraAt);
    if (extraAt < 0) {
        while (!main.isEmpty() && main.back().unicode() <= 0x20)
            main.chop(1);
    }

    const QString scheme = main.left(colon);
    QString rest = main.mid(colon + 1);
    const qint32 code = schemeCode(scheme);
    if (code == SchemeHttp || code == SchemeHttps)
        rest.replace(QLatin1Char('\\'), QLatin1Char('/'));

    QString result = scheme + QLatin1Char(':');
    if (rest.startsWith(QLatin1String("//"))) {
        const int pathAt = rest.indexOf(QLatin1Char('/'), 2);
        const QString authority = rest.mid(2, pathAt < 0 ? -1 : pathAt - 2);
        QString path = pathAt < 0 ? QString() : rest.mid(pathAt);
        // A bare host gets its root folder; before a query or fragment, or without a host,
        // the path stays empty.
        if (!path.isEmpty())
            path = removeDotSegments(path);
        else if (!authority.isEmpty() && extra.isEmpty())
            path = QStringLiteral("/");
        result += QLatin1String("//") + encodeUnsafe(authority) + encodeUnsafe(path);
    } else {
        result += encodeUnsafe(rest);
    }
    result += extra;

    if (result.size() >= kCanonicalBuffer)
        return false;
    canonical = result;
    return true;
}

bool cURL::GetURL(const QString &url)
{
    QString canonical;
    if (!canonicalize(url, canonical))
        return false;

    Parts parts;
    const bool ok = crack(canonical, parts);
    m_scheme = parts.scheme;
    m_lScheme = parts.lScheme;
    m_hostName = parts.hostName;
    m_userName = parts.userName;
    m_password = parts.password;
    m_path = parts.path;
    m_extraInfo = parts.extraInfo;
    m_port = parts.port;
    return ok;
}
