#include "maintenance/UpdateCheck.h"

#include "core/Config.h"
#include "core/TextFile.h"
#include "net/ConnectionTest.h"

UpdateCheckResult checkVersionFile(const QByteArray &versionFile, const QByteArray &signatureFile)
{
    UpdateCheckResult result;
    QString version;
    if (versionFile.isEmpty() || !serverVersionFromText(decodeInstallationText(versionFile), version))
        return result;
    // The signature names the version without the line end a Windows editor leaves.
    QString signedVersion = version;
    if (signedVersion.endsWith(u'\r'))
        signedVersion.chop(1);
    result.trust = checkSignedFile(versionFile, signatureFile, QStringLiteral("version.txt"), signedVersion);
    result.found = result.trust == TrustCheck::Ok;
    if (result.found)
        result.serverVersion = version;
    return result;
}

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

UpdateCheck::UpdateCheck(QObject *parent) : QObject(parent)
{
    reportUnknownSize(m_download);
    connect(&m_download, &clsDownload::queryFinished, this, &UpdateCheck::onVersionFile);
    connect(&m_signature, &clsDownload::queryFinished, this,
            [this] { emit finished(checkVersionFile(m_versionFile, m_signature.queryBytes())); });
}

bool UpdateCheck::start()
{
    if (isRunning())
        return false;
    return m_download.startQueryFile(versionFileUrl(), QStringLiteral("Download"));
}

void UpdateCheck::onVersionFile(const QString &text)
{
    m_versionFile = m_download.queryBytes();
    // Nothing came: there is no signature to ask for.
    if (text.isEmpty() || !startSignatureQuery(m_signature, versionFileUrl()))
        emit finished(checkVersionFile(m_versionFile, {}));
}
