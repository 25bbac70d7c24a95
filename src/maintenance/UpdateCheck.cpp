#include "maintenance/UpdateCheck.h"

#include "core/Config.h"
#include "net/ConnectionTest.h"

namespace {
UpdateCheckResult resultFromText(const QString &text)
{
    UpdateCheckResult result;
    result.found = serverVersionFromText(text, result.serverVersion);
    return result;
}
} // namespace

bool serverVersionFromText(const QString &text, QString &version)
{
    const qsizetype equals = text.indexOf(QLatin1Char('='));
    const QString value = equals < 0 ? text : text.mid(equals + 1);
    const qsizetype lineFeed = value.indexOf(QLatin1Char('\n'));
    if (lineFeed < 0)
        return false;
    version = value.left(lineFeed);
    return true;
}

bool buildsDiffer(const QString &installed, const QString &server)
{
    return installed.compare(server, Qt::CaseSensitive) != 0;
}

QString versionFileUrl()
{
    return Config::versionUrl() + QStringLiteral("/version.txt");
}

UpdateCheckResult CheckForUpdate()
{
    QString text;
    {
        clsDownload download;
        reportUnknownSize(download);
        text = download.QueryFile(versionFileUrl(), 1024, QStringLiteral("Download"), false, 0);
    }
    return resultFromText(text);
}

UpdateCheck::UpdateCheck(QObject *parent) : QObject(parent)
{
    reportUnknownSize(m_download);
    connect(&m_download, &clsDownload::queryFinished, this,
            [this](const QString &text) { emit finished(resultFromText(text)); });
}

bool UpdateCheck::start()
{
    return m_download.startQueryFile(versionFileUrl(), 1024, QStringLiteral("Download"), false, 0);
}
