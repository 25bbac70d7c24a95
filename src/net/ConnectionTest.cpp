#include "net/ConnectionTest.h"

#include "core/Config.h"
#include "core/ProgramState.h"
#include "localisation/LanguageState.h"
#include "localisation/PendingMessage.h"

namespace {
bool recordConnection(const QString &answer)
{
    programState().connected = !answer.isEmpty();
    return programState().connected;
}
} // namespace

void reportUnknownSize(clsDownload &download)
{
    QObject::connect(&download, &clsDownload::Startdownloading, &download, [](qint64 size) {
        if (size != 0 || !programState().automaticUpdateCheck)
            return;
        pendingMessage().text =
            lngMainText(QStringLiteral("T136"),
                        QStringLiteral("Sie haben die automatische Update-Prüfung aktiviert.")) +
            QStringLiteral("@@Die Suche nach Updates ist fehlgeschlagen.@Ursache:@Keine Verbindung zum "
                           "Server oder keine@Größenangabe im Response-Header.@@Bitte überprüfen Sie "
                           "Ihre Internet-Verbindung!#Update-Prüfung: Verbindungsfehler");
        pendingMessage().style = 48;
    });
}

QString connectionTestUrl()
{
    return Config::versionUrl() + QStringLiteral("/downloads.ini");
}

bool CheckINetConnection(bool skipTest)
{
    if (skipTest)
        return false;
    QString text;
    {
        clsDownload download;
        reportUnknownSize(download);
        // The answer only has to exist; without an announced size it comes back empty.
        text = download.QueryFile(connectionTestUrl(), 1024, QStringLiteral("Download"), true, 1);
    }
    return recordConnection(text);
}

ConnectionTestMessage connectionTestMessage(bool connected)
{
    ConnectionTestMessage m;
    m.var1 = Config::websiteUrl();
    if (connected) {
        m.key = QStringLiteral("M188");
        m.germanDefault = QStringLiteral("Eine Internetverbindung zu:@<var1>@konnte erfolgreich hergestellt "
                                         "werden!#Verbindungstest erfolgreich");
        m.style = 64;
    } else {
        m.key = QStringLiteral("M189");
        m.germanDefault = QStringLiteral("Eine Internetverbindung zu:@<var1>@konnte nicht hergestellt "
                                         "werden!#Verbindungstest fehlgeschlagen");
        m.style = 48;
    }
    return m;
}

ConnectionTest::ConnectionTest(QObject *parent) : QObject(parent)
{
    reportUnknownSize(m_download);
    connect(&m_download, &clsDownload::queryFinished, this, &ConnectionTest::onQueryFinished);
}

bool ConnectionTest::start()
{
    return m_download.startQueryFile(connectionTestUrl(), 1024, QStringLiteral("Download"), true, 1);
}

void ConnectionTest::onQueryFinished(const QString &text)
{
    m_answer = text;
    emit finished(recordConnection(text));
}
