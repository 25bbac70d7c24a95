#include "core/Config.h"

#include "core/BuildConfig.h"

namespace {
QString fromEnv(const char *name, const char *fallback)
{
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? QString::fromUtf8(fallback) : value;
}
} // namespace

namespace Config {
QString versionUrl()
{
    return fromEnv("SUPPORTKIT_VERSION_URL", SUPPORTKIT_DEFAULT_VERSION_URL);
}
QString downloadUrl()
{
    return fromEnv("SUPPORTKIT_DOWNLOAD_URL", SUPPORTKIT_DEFAULT_DOWNLOAD_URL);
}
QString websiteUrl()
{
    return fromEnv("SUPPORTKIT_WEBSITE_URL", SUPPORTKIT_DEFAULT_WEBSITE_URL);
}
QString supportMail()
{
    return fromEnv("SUPPORTKIT_SUPPORT_MAIL", SUPPORTKIT_DEFAULT_SUPPORT_MAIL);
}
QString releaseKeys()
{
    return fromEnv("SUPPORTKIT_RELEASE_KEYS", SUPPORTKIT_DEFAULT_RELEASE_KEYS);
}
QString publisher()
{
    return fromEnv("SUPPORTKIT_PUBLISHER", SUPPORTKIT_DEFAULT_PUBLISHER);
}

int versionMajor()
{
    return SUPPORTKIT_VERSION_MAJOR;
}
int versionMinor()
{
    return SUPPORTKIT_VERSION_MINOR;
}
int versionRevision()
{
    return SUPPORTKIT_VERSION_REVISION;
}

QString windowCaption()
{
    return QStringLiteral("Pawnsketch \u00b7 Support Kit %1.%2 Build %3")
        .arg(versionMajor())
        .arg(versionMinor())
        .arg(versionRevision());
}
} // namespace Config
