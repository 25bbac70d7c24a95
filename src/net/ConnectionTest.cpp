#include "net/ConnectionTest.h"

#include "core/Config.h"
#include "core/Platform.h"
#include "core/ProgramState.h"
#include "localisation/LanguageState.h"
#include "localisation/PendingMessage.h"

namespace {
NetDiagnosis &lastDiagnosis()
{
    static NetDiagnosis diagnosis;
    return diagnosis;
}

bool recordConnection(const NetDiagnosis &diagnosis)
{
    lastDiagnosis() = diagnosis;
    programState().connected = diagnosis.cause == NetCause::None;
    return programState().connected;
}

bool isDownloadList(const QString &answer)
{
    // The list may begin with a byte order mark, blank lines or comments before its section.
    return answer.contains(QLatin1String("[Downloads]"), Qt::CaseInsensitive);
}
} // namespace

NetDiagnosis lastConnectionDiagnosis()
{
    return lastDiagnosis();
}

NetDiagnosis diagnoseConnection(const clsDownload &download, const QString &answer)
{
    if (!answer.isEmpty()) {
        const QUrl asked(connectionTestUrl());
        const bool sameHost = download.lastUrl().host().compare(asked.host(), Qt::CaseInsensitive) == 0;
        if (!sameHost || !isDownloadList(answer))
            return {NetCause::WrongAnswer, 0};
        return {};
    }
    NetDiagnosis diagnosis = download.diagnosis();
    if (diagnosis.cause == NetCause::None)
        diagnosis.cause = NetCause::EmptyAnswer;
    if (isTransportCause(diagnosis.cause) && !platform().hasNetwork())
        diagnosis = {NetCause::NoNetwork, 0};
    return diagnosis;
}

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
    return m_download.startQueryFile(connectionTestUrl(), QStringLiteral("Download"));
}

void ConnectionTest::onQueryFinished(const QString &text)
{
    m_diagnosis = diagnoseConnection(m_download, text);
    m_answer = m_diagnosis.cause == NetCause::None ? text : QString();
    emit finished(recordConnection(m_diagnosis));
}
