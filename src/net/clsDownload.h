#pragma once

#include "net/NetCause.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QVariant>

class QEventLoop;
class QNetworkReply;

// Fetches files over HTTP and HTTPS on the thread's event loop.
//
// Each operation exists twice: startQueryFile/startDownload return at once and report
// through signals; QueryFile/Download look blocking to their caller but run a local
// event loop until the operation is over, so the window keeps painting and a Stop
// button still works. One object runs one operation at a time: a call while one runs is
// refused (start* return false, QueryFile returns "", Download returns at once). The
// object may be deleted at any time, also from a slot connected to one of its signals
// or while a blocking call is on the stack; that call then returns without touching it.
//
// Nothing waits forever: no answer within the connect timeout, or less than kStallProgress
// bytes for the stall timeout during a transfer, ends the operation (see ErrorNumber 1 and 4).
//
// Error numbers of Download:
//   0   ""                            no error
//   1   "Server nicht gefunden"       no connection, no answer within the connect timeout,
//                                     TLS failure
//   2   "URL nicht interpretierbar"   URL not splittable, or neither http nor https
//   3   "Downloadgröße 0 Byte"        Content-Length 0 or missing
//   4   "Verbindung unterbrochen"     transfer ended before Size bytes: connection lost,
//                                     closed early, or stalled; the data received so far
//                                     is in the file and the download ends as after a
//                                     short read (done caption)
//   5   "Datei kann nicht geschrieben werden"  the target file cannot be opened or written
//
// Resuming (off unless setResumePolicy asks for it): a transfer that breaks off after its
// data began (connection lost, closed early, stalled) goes on where it stopped, after a
// pause, up to the policy's number of attempts. The rest is asked for with a range
// request made conditional on the validator of the first answer (its strong ETag, else
// its Last-Modified), so a changed file is never joined to the old one's beginning. A
// server that answers with the whole file (it ignores ranges, or the file changed), or
// a first answer without validator, starts the file afresh: it is then truncated and
// ReceivedBytes counts from 0 again. Only when the attempts are used up does the download
// end with error 4.
//   404 "Seite/Datei nicht gefunden"
//   other HTTP status (also a refused redirect's 3xx) "Unbekannter Fehler"
class clsDownload : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 kBlockSize = 8192;
    // How far Qt may read ahead of us: bounds the memory a download takes whatever the
    // file's size, and is large enough that loopback transfers are not throttled by it.
    static constexpr qint64 kReadBufferSize = 1024 * 1024;
    static constexpr qint64 kStageSize = kReadBufferSize + kBlockSize;
    // QueryFile reads small text resources; a server that sends more gets "".
    static constexpr qint64 kQueryLimit = 16 * 1024 * 1024;
    static constexpr int kMaxRedirects = 20;
    static constexpr qint64 kStallProgress = 1024;

    struct ResumePolicy
    {
        int maxAttempts = 0; // 0: a broken transfer ends with error 4 at once
        QList<int> pausesMs; // before attempt n the n-th pause; the last one repeats
    };

    enum Error : qint32
    {
        ErrNone = 0,
        ErrServerNotFound = 1,
        ErrBadUrl = 2,
        ErrZeroSize = 3,
        ErrConnectionLost = 4,
        ErrWriteFile = 5,
        ErrNotFound = 404,
    };

    explicit clsDownload(QObject *parent = nullptr);
    ~clsDownload() override;

    // Returns the resource's text, or "" when its size was not announced by a HEAD
    // answer 200 with Content-Length, the GET was not answered 200, or the transfer
    // failed. A URL without scheme is taken as http. flag and mode have no effect.
    QString QueryFile(const QString &url, qint32 chunkSize, const QString &agent, bool flag, qint16 mode);
    // Copies url into fileName (opened without truncation, written from its start) in
    // blocks of kBlockSize; results in the getters afterwards. third is not used.
    void Download(const QString &url, const QString &fileName, const QVariant &third = {},
                  const QString &stoppedCaption = {}, const QString &doneCaption = {});

    // Asynchronous forms: false when an operation already runs. They may finish (and
    // emit their finished signal) before they return, e.g. on a bad URL.
    // The last query's answer as the server sent it, for checking its signature.
    QByteArray queryBytes() const { return m_queryBytes; }
    // A query of something known to be small gives up early on a bigger answer.
    void setQueryLimit(qint64 bytes) { m_queryLimit = bytes; }
    bool startQueryFile(const QString &url, qint32 chunkSize, const QString &agent, bool flag = false,
                        qint16 mode = 0);
    bool startDownload(const QString &url, const QString &fileName, const QVariant &third = {},
                       const QString &stoppedCaption = {}, const QString &doneCaption = {});
    bool isBusy() const { return m_phase != Phase::Idle; }

    quint8 status() const { return m_status; }
    qint64 Size() const { return m_size; }
    qint64 ReceivedBytes() const { return m_receivedBytes; }
    double Speed() const { return m_speed; }
    // True ends a running Download after the block in hand (at once when it waits).
    void StopDownload(bool stop);
    qint64 Downloadtime() const { return m_downloadTime; }
    qint32 ErrorNumber() const { return m_errorNumber; }
    QString ErrorDescription() const { return m_errorDescription; }
    // Why the last operation failed (None when it did not, or when the cause lies on this
    // side, such as a bad address or a file that cannot be written).
    NetDiagnosis diagnosis() const { return m_diagnosis; }
    // Where the last request ended up after the redirects it followed.
    QUrl lastUrl() const { return m_currentUrl; }

    // Timeouts in milliseconds: connect = from sending a request until its answer's
    // headers; stall = longest pause in the data after that. New objects take the
    // defaults (10 s and 30 s unless changed).
    static void setDefaultTimeouts(int connectMs, int stallMs);
    static int defaultConnectTimeout();
    static int defaultStallTimeout();
    void setTimeouts(int connectMs, int stallMs);
    // For the next downloads of this object.
    void setResumePolicy(const ResumePolicy &policy) { m_resume = policy; }

    // Redirects are followed as a browser follows them, but never from https down to
    // plain http, and only to http or https.
    static bool redirectAllowed(const QUrl &from, const QUrl &to);
    // The German description that belongs to an error number.
    static QString errorText(qint32 errorNumber);

signals:
    // QueryFile: for each chunk after the first; a handler may set cancel. Only direct
    // connections can pass cancel back.
    void Progresschanged(double percent, bool &cancel);
    // QueryFile: 2 before the request, before the transfer and at the end.
    void Statechanged(qint32 state);
    // QueryFile: the announced size, just before the first read; 0 when the server could
    // not be asked, did not answer 200 or announced no size (the query then gives "").
    void Startdownloading(qint64 size);
    // Download: after each block and after an error.
    void update();
    // Download: the transfer broke off and is resumed after pauseMs; attempt counts from 1.
    void resuming(int attempt, int maxAttempts, int pauseMs);
    // Download ended by the stop exit or the end path: a caller's Download button is to
    // be disabled and its status label to show caption (the stopped or done caption).
    void disableButton();
    void finishedCaption(const QString &caption);

    void queryFinished(const QString &text);
    void downloadFinished();

private:
    enum class Phase
    {
        Idle,
        QueryHead,
        QueryBody,
        DownloadRequest,
        DownloadBody,
        ResumeWait, // a broken transfer waits for its next attempt
    };
    enum class Abort
    {
        None,
        Timeout,
        Redirect,
        Stop,
    };

    bool sendRequest(const QByteArray &verb, const QUrl &url, const QString &agent,
                     const QByteArray &range = {}, const QByteArray &ifRange = {});
    void releaseReply();
    void armWatchdog(int ms);
    bool waitWhileBusy();

    void onMetaData();
    void onReadyRead();
    void onFinished();
    void onRedirected(const QUrl &to);
    void onWatchdog();

    void queryAfterHead();
    void onQueryData();
    void finishQuery(bool failed);

    void downloadHeaders();
    bool resumedHeaders(int code);
    void startBody();
    void breakOff();
    bool scheduleResume();
    void resumeNow();
    void onDownloadData();
    bool processBlock(qint64 length);
    bool flushStage();
    void failDownload(qint32 errorNumber, bool withCaptions);
    void endDownload(bool stopped);
    void onStopRequested();
    void setError(qint32 errorNumber);
    // The first cause found in an operation is the one kept.
    void noteFailure(NetDiagnosis diagnosis);
    void noteReplyFailure();

    Phase m_phase = Phase::Idle;
    Abort m_abort = Abort::None;
    QPointer<QNetworkReply> m_reply; // gone with the manager when the program ends first
    QUrl m_currentUrl;
    QTimer m_watchdog;
    qint64 m_stallMark = 0; // bytes of the answer when the stall timer was last put off
    int m_connectTimeout;
    int m_stallTimeout;
    bool m_headersHandled = false;
    bool m_inDataHandler = false;
    QEventLoop *m_waitLoop = nullptr;
    NetDiagnosis m_diagnosis;

    // QueryFile
    QUrl m_queryUrl;
    QString m_agent;
    qint32 m_chunkSize = 1024;
    qint64 m_querySize = 0;
    QByteArray m_queryData;
    bool m_firstChunkRead = false;
    bool m_cancel = false;
    QString m_queryText;
    QByteArray m_queryBytes;
    qint64 m_queryLimit = kQueryLimit;

    // Download
    quint8 m_status = 0;
    qint64 m_size = 0;
    qint64 m_receivedBytes = 0;
    double m_speed = 0;
    bool m_stopDownload = false;
    qint64 m_downloadTime = 0;
    qint32 m_errorNumber = 0;
    QString m_errorDescription;
    QFile m_file;
    QString m_stoppedCaption;
    QString m_doneCaption;
    QByteArray m_stage;         // staging buffer of kStageSize while a download runs
    qint64 m_stageOffset = 0;   // counted off as blocks up to here
    qint64 m_writtenOffset = 0; // written to the file up to here
    qint64 m_stageEnd = 0;      // filled up to here
    QElapsedTimer m_transferClock;
    double m_readTimeMs = 1;
    qint64 m_blockWaitStartNs = 0;

    // Resuming
    ResumePolicy m_resume;
    int m_resumeAttempt = 0; // attempts made in this download
    QByteArray m_validator;  // of the answer the file's data began with
    bool m_rangesAccepted = true;
    bool m_rangeAsked = false; // the running request asks for the rest only
    QTimer m_resumeTimer;
};
