#include "net/clsDownload.h"

#include "net/Transport.h"

namespace {
int g_connectTimeout = 10000;
int g_stallTimeout = 30000;
} // namespace

clsDownload::clsDownload(QObject *parent) : QObject(parent)
{
    setTimeouts(g_connectTimeout, g_stallTimeout);
    connect(&m_query, &TextQuery::sizeKnown, this, &clsDownload::Startdownloading);
    connect(&m_query, &TextQuery::finished, this, [this] { emit queryFinished(m_query.text()); });
    connect(&m_file, &FileDownload::block, this, &clsDownload::update);
    connect(&m_file, &FileDownload::resuming, this, &clsDownload::resuming);
    connect(&m_file, &FileDownload::finished, this, &clsDownload::downloadFinished);
}

void clsDownload::setDefaultTimeouts(int connectMs, int stallMs)
{
    g_connectTimeout = connectMs;
    g_stallTimeout = stallMs;
}

void clsDownload::setTimeouts(int connectMs, int stallMs)
{
    m_query.setTimeouts(connectMs, stallMs);
    m_file.setTimeouts(connectMs, stallMs);
}

bool clsDownload::startQueryFile(const QString &url, const QString &agent)
{
    if (isBusy())
        return false;
    m_lastWasQuery = true;
    return m_query.start(url, agent);
}

bool clsDownload::startDownload(const QString &url, const QString &fileName)
{
    if (isBusy())
        return false;
    m_lastWasQuery = false;
    return m_file.start(NetTransport::requestUrl(url), fileName);
}

void clsDownload::StopDownload(bool stop)
{
    if (stop)
        m_file.stop();
}
