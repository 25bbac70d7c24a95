#pragma once

#include "net/NetCause.h"
#include "net/Transport.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

// Reads a small text resource: a HEAD request must announce its size with a 200 answer,
// then a GET fetches it. Without an announced size, with a body that is not whole, or
// larger than the limit, the answer is empty. finished() comes once per query, possibly
// before start returns (e.g. on a bad address); the object may be deleted from its handler.
class TextQuery : public QObject
{
    Q_OBJECT

public:
    // A server that sends more than this gets "".
    static constexpr qint64 kQueryLimit = 16 * 1024 * 1024;

    explicit TextQuery(QObject *parent = nullptr);

    void setTimeouts(int connectMs, int stallMs) { m_net.setTimeouts(connectMs, stallMs); }
    void setLimit(qint64 bytes) { m_limit = bytes; }
    // False when one runs already. An address without scheme is taken as http.
    bool start(const QString &address, const QString &agent);
    bool isBusy() const { return m_phase != Phase::Idle; }

    // The last answer as the server sent it, and as text.
    QByteArray bytes() const { return m_bytes; }
    QString text() const { return m_text; }
    // The size the HEAD request announced (0: none, or it failed).
    qint64 announcedSize() const { return m_size; }
    NetDiagnosis diagnosis() const { return m_diagnosis; }
    QUrl url() const { return m_net.url(); }

signals:
    // The announced size is known (0 when the server could not be asked, did not answer
    // 200 or announced none; the query then gives "").
    void sizeKnown(qint64 size);
    void finished();

private:
    enum class Phase
    {
        Idle,
        Head,
        Body,
    };

    void onHeaders();
    void onEnded();
    void afterHead();
    void onData();
    void finish(bool failed);
    void noteFailure(NetDiagnosis diagnosis);

    NetReply m_net;
    Phase m_phase = Phase::Idle;
    QUrl m_url;
    QString m_agent;
    qint64 m_limit = kQueryLimit;
    qint64 m_size = 0;
    QByteArray m_data;
    QByteArray m_bytes;
    QString m_text;
    NetDiagnosis m_diagnosis;
};
