#pragma once

#include <QString>

// Splits one URL into the parts a connection needs. The results follow the Windows
// URL cracker: numeric scheme codes, the scheme's default port when the URL names none,
// the path with its escapes decoded, and query plus fragment kept together as "extra
// info".
//
// GetURL first canonicalises the URL the way a browser does (unsafe characters before
// "?" or "#" percent-encoded, "." and ".." segments removed, an empty path becomes "/";
// nothing after "?" or "#" is touched). A URL that cannot be canonicalised, or whose
// canonical form does not fit 1,024 characters with its terminator, returns false and
// leaves the stored parts as they were. A canonical URL that cannot be split (a part
// longer than its buffer, a bad port, no host for a scheme that needs one) returns false
// too, but then overwrites the parts: those split before the fault keep their text, the
// others come back empty (lScheme -1, Port 0 when not reached).
class cURL
{
public:
    // Scheme codes as the Windows URL cracker numbers them.
    enum SchemeCode : qint32
    {
        SchemeUnknown = -1,
        SchemeDefault = 0,
        SchemeFtp = 1,
        SchemeGopher = 2,
        SchemeHttp = 3,
        SchemeHttps = 4,
        SchemeFile = 5,
        SchemeNews = 6,
        SchemeMailto = 7,
        SchemeSocks = 8,
        SchemeJavascript = 9,
        SchemeVbscript = 10,
        SchemeRes = 11,
    };

    // Buffer sizes of the cracker, terminator included: a part must be shorter.
    static constexpr int kCanonicalBuffer = 1024;
    static constexpr int kSchemeBuffer = 32;
    static constexpr int kHostBuffer = 256;
    static constexpr int kUserBuffer = 128;
    static constexpr int kPasswordBuffer = 128;
    static constexpr int kPathBuffer = 2048;
    static constexpr int kExtraBuffer = 1024;

    bool GetURL(const QString &url);

    QString URLExtraInfo() const { return m_extraInfo; }
    QString URLPath() const { return m_path; }
    QString Password() const { return m_password; }
    QString UserName() const { return m_userName; }
    qint32 Port() const { return m_port; }
    QString HostName() const { return m_hostName; }
    QString Scheme() const { return m_scheme; }
    qint32 lScheme() const { return m_lScheme; }

    // Browser-mode canonical form of url; false when it has no scheme or is too long.
    static bool canonicalize(const QString &url, QString &canonical);
    // Scheme code of a scheme name (case-insensitive), SchemeUnknown for others.
    static qint32 schemeCode(const QString &scheme);
    // Port used when a URL of that scheme names none (0 when the scheme has none).
    static qint32 defaultPort(qint32 schemeCode);

private:
    qint32 m_lScheme = 0;
    QString m_scheme;
    QString m_hostName;
    qint32 m_port = 0;
    QString m_userName;
    QString m_password;
    QString m_path;
    QString m_extraInfo;
};
