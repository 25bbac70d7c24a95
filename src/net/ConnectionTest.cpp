#include "net/ConnectionTest.h"

#include "app/Config.h"
#include "app/ProgramState.h"

namespace {
bool recordConnection(const QString &answer)
{
    programState().connected = !answer.isEmpty();
    return programState().connected;
}
} // namespace

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
    connect(&m_download, &clsDownload::queryFinished, this, &ConnectionTest::onQueryFinished);
}

bool ConnectionTest::start()
{
    return m_download.startQueryFile(connectionTestUrl(), 1024, QStringLiteral("Download"), true, 1);
}

void ConnectionTest::onQueryFinished(const QString &text)
{
    emit finished(recordConnection(text));
}
