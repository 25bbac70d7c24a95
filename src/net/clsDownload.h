#pragma once

#include "net/FileDownload.h"
#include "net/NetCause.h"
#include "net/NetResult.h"
#include "net/ResumePolicy.h"
#include "net/TextQuery.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

// Fetches files over HTTP and HTTPS on the thread's event loop, one operation at a time:
// a text query (startQueryFile, ends with queryFinished) or a file download (startDownload,
// raises update after each block and after an error, ends with downloadFinished). A start
// while one runs is refused. Either may finish before its start returns (e.g. on a bad
// address). The object may be deleted at any time, also from a slot connected to one of
// its signals.
//
// Nothing waits forever: no answer within the connect timeout, or less than a kilobyte for
// the stall timeout during a transfer, ends the operation. A download ends in result():
//   ServerNotFound  no connection, no answer within the connect timeout, TLS failure
//   BadUrl          URL not splittable, or neither http nor https
//   ZeroSize        Content-Length 0 or missing
//   ConnectionLost  the transfer ended before Size bytes and no resume was left (see
//                   ResumePolicy); what arrived is in the file
//   WriteFile       the target file cannot be opened or written
//   HttpStatus      any answer but 200 (404 among them, and a refused redirect's 3xx)
class clsDownload : public QObject
{
    Q_OBJECT

public:
    using ResumePolicy = ::ResumePolicy;
    static constexpr qint64 kBlockSize = FileDownload::kBlockSize;
    static constexpr qint64 kQueryLimit = TextQuery::kQueryLimit;

    explicit clsDownload(QObject *parent = nullptr);

    // An address without scheme is taken as http.
    bool startQueryFile(const QString &url, const QString &agent);
    // The last query's answer as the server sent it, for checking its signature.
    QByteArray queryBytes() const { return m_query.bytes(); }
    // A query of something known to be small gives up early on a bigger answer.
    void setQueryLimit(qint64 bytes) { m_query.setLimit(bytes); }

    // Copies url into fileName (opened without truncation, written from its start).
    bool startDownload(const QString &url, const QString &fileName);
    bool isBusy() const { return m_query.isBusy() || m_file.isBusy(); }

    quint8 status() const { return m_file.isBusy() ? 1 : 0; }
    qint64 Size() const { return m_file.size(); }
    qint64 ReceivedBytes() const { return m_file.received(); }
    double Speed() const { return m_file.speed(); }
    qint64 Downloadtime() const { return m_file.elapsedMs(); }
    // True ends a running download after the block in hand (at once when it waits).
    void StopDownload(bool stop);
    NetResult result() const { return m_file.result(); }
    qint32 ErrorNumber() const { return m_file.result().number(); }
    // For the next downloads: what they write is hashed while they run.
    void setSha256(bool on) { m_file.setHashing(on); }
    // SHA-256 of what the last download wrote ("" unless setSha256 asked for it).
    QByteArray sha256() { return m_file.sha256(); }
    // Why the last operation failed (None when it did not, or when the cause lies on this
    // side, such as a bad address or a file that cannot be written).
    NetDiagnosis diagnosis() const { return m_lastWasQuery ? m_query.diagnosis() : m_file.diagnosis(); }
    // Where the last request ended up after the redirects it followed.
    QUrl lastUrl() const { return m_lastWasQuery ? m_query.url() : m_file.url(); }

    // Timeouts in milliseconds: connect = from sending a request until its answer's
    // headers; stall = longest pause in the data after that. New objects take the
    // defaults (10 s and 30 s unless changed).
    static void setDefaultTimeouts(int connectMs, int stallMs);
    void setTimeouts(int connectMs, int stallMs);
    // For the next downloads of this object.
    void setResumePolicy(const ResumePolicy &policy) { m_file.setResumePolicy(policy); }

signals:
    // Query: the announced size, before the body is asked for; 0 when the server could not
    // be asked, did not answer 200 or announced no size (the query then gives "").
    void Startdownloading(qint64 size);
    void update();
    // The transfer broke off and is resumed after pauseMs; attempt counts from 1.
    void resuming(int attempt, int maxAttempts, int pauseMs);
    void queryFinished(const QString &text);
    void downloadFinished();

private:
    TextQuery m_query;
    FileDownload m_file;
    bool m_lastWasQuery = false;
};
