#pragma once

#include "core/Sha256.h"
#include "net/NetResult.h"
#include "net/ResumePolicy.h"
#include "net/Transport.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>
#include <QUrl>

// Copies one answer into a file in blocks of kBlockSize, resuming a broken transfer under
// its ResumePolicy, and hashes what it writes off the calling thread while the transfer
// runs when asked to, so that checking the file afterwards needs no second reading.
//
// The file is opened without truncation and written from its start. Each block raises
// block(); the end, whatever it was, raises finished() once, after a last block() when it
// ended with an error. The object may be deleted from a handler of either signal.
class FileDownload : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 kBlockSize = 8192;
    static constexpr qint64 kStageSize = NetTransport::kReadBufferSize + kBlockSize;

    explicit FileDownload(QObject *parent = nullptr);
    ~FileDownload() override;

    void setTimeouts(int connectMs, int stallMs) { m_net.setTimeouts(connectMs, stallMs); }
    void setResumePolicy(const ResumePolicy &policy) { m_policy = policy; }
    // For the next downloads: whether what is written is hashed (off unless asked for, as it
    // takes a core's time while the transfer runs).
    void setHashing(bool on) { m_hashing = on; }

    // False when one runs already; an invalid url ends at once with BadUrl.
    bool start(const QUrl &url, const QString &fileName);
    // Ends a running download after the block in hand (at once when none is coming).
    void stop();
    bool isBusy() const { return m_phase != Phase::Idle; }

    qint64 size() const { return m_size; }
    qint64 received() const { return m_received; }
    double speed() const { return m_speed; }
    qint64 elapsedMs() const { return m_elapsedMs; }
    NetResult result() const { return m_result; }
    NetDiagnosis diagnosis() const { return m_diagnosis; }
    QUrl url() const { return m_net.url(); }
    // SHA-256 of the bytes written, in the order they lie in the file, when hashing was on
    // ("" otherwise). Waits for the hash to catch up, which it has by the time the last
    // block was written but for milliseconds.
    QByteArray sha256() { return m_hashing ? m_digest.result() : QByteArray(); }

signals:
    void block();
    void resuming(int attempt, int maxAttempts, int pauseMs);
    void finished();

private:
    enum class Phase
    {
        Idle,
        Request,    // waiting for an answer's headers
        Body,       // its data flow
        ResumeWait, // a broken transfer waits for its next attempt
    };

    void onHeaders();
    void onEnded();
    void onData();
    bool firstHeaders(int code);
    void startBody();
    void breakOff();
    void resumeNow();
    bool countBlock(qint64 length);
    bool flushStage();
    QByteArray freeStage();
    void fail(NetError error, int httpStatus = 0);
    void end();
    void noteFailure(NetDiagnosis diagnosis);

    NetReply m_net;
    Phase m_phase = Phase::Idle;
    QFile m_file;
    ResumePolicy m_policy;
    ResumeState m_resume;
    QTimer m_resumeTimer;
    bool m_stop = false;
    bool m_inDataHandler = false;
    NetResult m_result;
    NetDiagnosis m_diagnosis;
    qint64 m_size = 0;
    qint64 m_received = 0;
    double m_speed = 0;
    qint64 m_elapsedMs = 0;
    QByteArray m_stage;              // staging buffer of kStageSize while a download runs
    QList<QByteArray> m_spareStages; // taken in turn while the hash still reads the others
    qint64 m_stageOffset = 0;        // counted off as blocks up to here
    qint64 m_writtenOffset = 0;      // written to the file up to here
    qint64 m_stageEnd = 0;           // filled up to here
    QElapsedTimer m_clock;
    double m_readTimeMs = 1;
    qint64 m_blockWaitStartNs = 0;
    bool m_hashing = false;
    Sha256Stream m_digest;
};
