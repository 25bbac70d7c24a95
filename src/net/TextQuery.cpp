#include "net/TextQuery.h"

#include "core/TextFile.h"

#include <QNetworkReply>

#include <utility>

TextQuery::TextQuery(QObject *parent) : QObject(parent)
{
    connect(&m_net, &NetReply::headers, this, &TextQuery::onHeaders);
    connect(&m_net, &NetReply::data, this, &TextQuery::onData);
    connect(&m_net, &NetReply::ended, this, &TextQuery::onEnded);
}

bool TextQuery::start(const QString &address, const QString &agent)
{
    if (isBusy())
        return false;
    m_phase = Phase::Head;
    m_agent = agent;
    m_size = 0;
    m_data.clear();
    m_bytes.clear();
    m_text.clear();
    m_diagnosis = {};
    m_url = NetTransport::requestUrl(address, QStringLiteral("http"));
    if (!m_net.send("HEAD", m_url, agent))
        afterHead();
    return true;
}

void TextQuery::noteFailure(NetDiagnosis diagnosis)
{
    if (m_diagnosis.cause == NetCause::None)
        m_diagnosis = diagnosis;
}

void TextQuery::onHeaders()
{
    if (m_phase == Phase::Body && m_net.status() != 200)
        finish(true);
}

void TextQuery::onEnded()
{
    if (m_phase == Phase::Body) {
        onData();
        return;
    }
    const bool ok =
        !m_net.hasError() && m_net.status() == 200 && m_net.reply()->hasRawHeader("Content-Length");
    if (!ok)
        noteFailure(m_net.diagnosis());
    m_size = ok ? m_net.headerNumber("Content-Length") : 0;
    m_net.release();
    afterHead();
}

void TextQuery::afterHead()
{
    // Without a size the result is "" whatever the body holds, so it is not fetched; nor
    // is a body announced beyond what a query keeps.
    const bool fetch = m_size > 0 && m_size <= m_limit;
    if (!fetch)
        noteFailure({m_size == 0 ? NetCause::EmptyAnswer : NetCause::WrongAnswer, 0});
    const QPointer<TextQuery> self(this);
    emit sizeKnown(m_size);
    if (!self || m_phase != Phase::Head)
        return;
    m_phase = Phase::Body;
    if (!fetch || !m_net.send("GET", m_url, m_agent))
        finish(true);
}

void TextQuery::onData()
{
    QNetworkReply *reply = m_net.reply();
    if (m_phase != Phase::Body || !reply)
        return;
    m_data += reply->readAll();
    if (m_data.size() > m_limit) {
        finish(true);
        return;
    }
    // A body shorter than announced failed too: Qt may end a reply whose connection closed
    // early as if it were complete.
    if (m_net.isOver())
        finish(m_net.hasError() || m_data.size() < m_size);
}

void TextQuery::finish(bool failed)
{
    if (failed) {
        noteFailure(m_net.diagnosis());
        noteFailure({NetCause::Other, 0}); // e.g. a body shorter than announced
    }
    m_net.release();
    m_text = failed ? QString() : decodeInstallationText(m_data);
    m_bytes = failed ? QByteArray() : std::exchange(m_data, {});
    m_data.clear();
    m_phase = Phase::Idle;
    emit finished();
}
