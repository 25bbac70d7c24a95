#include "net/clsDownload.h"

#include "core/TextFile.h"
#include "net/ProxyLogin.h"
#include "net/cURL.h"

#include <QAuthenticator>
#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <cstring>
#include <limits>
#include <utility>

namespace {

int g_connectTimeout = 10000;
int g_stallTimeout = 30000;

QPointer<QNetworkAccessManager> g_manager;

ProxyPrompt g_proxyPrompt;
bool g_proxyAsked = false;
bool g_proxyPromptOpen = false;

void askForProxyLogin(const QNetworkProxy &proxy, QAuthenticator *authenticator)
{
    // Once per run: a second request is a refused password, and asking again and again
    // would keep the user in a loop of boxes. Left empty, the request ends with the 407.
    if (g_proxyAsked || !g_proxyPrompt)
        return;
    g_proxyAsked = true;
    g_proxyPromptOpen = true;
    const ProxyCredentials credentials =
        g_proxyPrompt(QStringLiteral("%1:%2").arg(proxy.hostName()).arg(proxy.port()));
    g_proxyPromptOpen = false;
    if (!credentials.given)
        return;
    authenticator->setUser(credentials.user);
    authenticator->setPassword(credentials.password);
}

// Replies wait for deletion until the event loop turns again, and a program may end first
// (a test's last case, a window closed after a check). Left to the manager's own end, they
// go while Qt already stops its HTTP thread, and what their deletion asks of that thread
// (abort, free its side of the transfer) is lost with it. So they go first, while the
// thread still runs, and the manager follows.
void shutdownNetwork()
{
    if (!g_manager)
        return;
    qDeleteAll(g_manager->findChildren<QNetworkReply *>());
    delete g_manager;
}

// One manager for all transfers of the thread. It outlives the clsDownload objects, so
// that an object deleted in the middle of a transfer can leave its reply to be deleted
// later without pulling the manager away from under it.
QNetworkAccessManager *sharedManager()
{
    if (!g_manager) {
        QNetworkProxyFactory::setUseSystemConfiguration(true);
        g_manager = new QNetworkAccessManager(QCoreApplication::instance());
        g_manager->setAutoDeleteReplies(false);
        QObject::connect(g_manager, &QNetworkAccessManager::proxyAuthenticationRequired, g_manager,
                         askForProxyLogin);
        qAddPostRoutine(shutdownNetwork);
    }
    return g_manager;
}

// Leading digits of a header value ("123 bytes" is 123); a value without digits, or one
// too large for 64 bits, counts as 0.
qint64 leadingNumber(const QByteArray &value)
{
    const QByteArray text = value.trimmed();
    qint64 number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            break;
        if (number > (std::numeric_limits<qint64>::max() - 9) / 10)
            return 0;
        number = number * 10 + (c - '0');
    }
    return number;
}

int httpStatus(QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isPendingRedirect(QNetworkReply *reply)
{
    const int code = httpStatus(reply);
    return code >= 300 && code < 400 && reply->hasRawHeader("Location") && !reply->isFinished();
}

// The cracked parts put back together as the request's address. The path comes back
// decoded from the cracker and is encoded again by QUrl; query and fragment are taken as
// typed. Invalid when the parts do not make an address (e.g. a bad host name).
QUrl requestUrl(const cURL &parts)
{
    QUrl url;
    url.setScheme(parts.Scheme().toLower());
    url.setUserName(parts.UserName(), QUrl::DecodedMode);
    url.setPassword(parts.Password(), QUrl::DecodedMode);
    QString host = parts.HostName();
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    url.setHost(host);
    url.setPort(parts.Port());
    url.setPath(parts.URLPath(), QUrl::DecodedMode);
    const QString extra = parts.URLExtraInfo();
    const qsizetype hash = extra.indexOf(QLatin1Char('#'));
    if (extra.startsWith(QLatin1Char('?')))
        url.setQuery(extra.mid(1, hash < 0 ? -1 : hash - 1), QUrl::TolerantMode);
    if (hash >= 0)
        url.setFragment(extra.mid(hash + 1), QUrl::TolerantMode);
    return url;
}

bool isWebScheme(const cURL &parts)
{
    return parts.lScheme() == cURL::SchemeHttp || parts.lScheme() == cURL::SchemeHttps;
}

} // namespace

void setProxyPrompt(ProxyPrompt prompt)
{
    g_proxyPrompt = std::move(prompt);
}

bool proxyPromptOpen()
{
    return g_proxyPromptOpen;
}

void resetProxyPromptForTesting()
{
    g_proxyAsked = false;
}

clsDownload::clsDownload(QObject *parent)
    : QObject(parent), m_connectTimeout(g_connectTimeout), m_stallTimeout(g_stallTimeout)
{
    m_watchdog.setSingleShot(true);
    connect(&m_watchdog, &QTimer::timeout, this, &clsDownload::onWatchdog);
    m_resumeTimer.setSingleShot(true);
    connect(&m_resumeTimer, &QTimer::timeout, this, &clsDownload::resumeNow);
}

clsDownload::~clsDownload()
{
    releaseReply();
    m_file.close();
    // A blocking call of ours further up the stack returns when its loop ends; it sees
    // that the object is gone and leaves it alone.
    if (m_waitLoop)
        m_waitLoop->quit();
}

void clsDownload::setDefaultTimeouts(int connectMs, int stallMs)
{
    g_connectTimeout = connectMs;
    g_stallTimeout = stallMs;
}

int clsDownload::defaultConnectTimeout()
{
    return g_connectTimeout;
}
int clsDownload::defaultStallTimeout()
{
    return g_stallTimeout;
}

void clsDownload::setTimeouts(int connectMs, int stallMs)
{
    m_connectTimeout = connectMs;
    m_stallTimeout = stallMs;
}

bool clsDownload::redirectAllowed(const QUrl &from, const QUrl &to)
{
    const QString target = to.scheme().toLower();
    if (target != QLatin1String("http") && target != QLatin1String("https"))
        return false;
    return !(from.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0 &&
             target == QLatin1String("http"));
}

QString clsDownload::errorText(qint32 errorNumber)
{
    switch (errorNumber) {
    case ErrNone:
        return QString();
    case ErrServerNotFound:
        return QStringLiteral("Server nicht gefunden");
    case ErrBadUrl:
        return QStringLiteral("URL nicht interpretierbar");
    case ErrZeroSize:
        return QStringLiteral("Downloadgröße 0 Byte");
    case ErrConnectionLost:
        return QStringLiteral("Verbindung unterbrochen");
    case ErrWriteFile:
        return QStringLiteral("Datei kann nicht geschrieben werden");
    case ErrNotFound:
        return QStringLiteral("Seite/Datei nicht gefunden");
    default:
        return QStringLiteral("Unbekannter Fehler");
    }
}

// ---- plumbing shared by both operations ----

bool clsDownload::sendRequest(const QByteArray &verb, const QUrl &url, const QString &agent,
                              const QByteArray &range, const QByteArray &ifRange)
{
    QNetworkAccessManager *manager = sharedManager();
    if (!manager)
        return false;
    QNetworkRequest request(url);
    // Always from the server, never from a cache on the way.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setRawHeader("Cache-Control", "no-cache");
    request.setRawHeader("Pragma", "no-cache");
    // Content-Length must count the bytes we receive, so no compressed transfer.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setHeader(QNetworkRequest::UserAgentHeader, agent);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    if (!range.isEmpty())
        request.setRawHeader("Range", range);
    if (!ifRange.isEmpty())
        request.setRawHeader("If-Range", ifRange);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(kMaxRedirects);

    m_currentUrl = url;
    m_headersHandled = false;
    m_abort = Abort::None;
    m_reply = verb == "HEAD" ? manager->head(request) : manager->get(request);
    m_reply->setReadBufferSize(kReadBufferSize);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &clsDownload::onMetaData);
    connect(m_reply, &QNetworkReply::readyRead, this, &clsDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &clsDownload::onFinished);
    connect(m_reply, &QNetworkReply::redirected, this, &clsDownload::onRedirected);
    // A server that trickles a few bytes now and then would keep a plain "no data" timer
    // waiting for ever: only real progress puts the stall off.
    m_stallMark = 0;
    connect(m_reply, &QNetworkReply::downloadProgress, this, [this](qint64 received) {
        if (received - m_stallMark >= kStallProgress) {
            m_stallMark = received;
            armWatchdog(m_stallTimeout);
        }
    });
    armWatchdog(m_connectTimeout);
    return true;
}

void clsDownload::releaseReply()
{
    m_watchdog.stop();
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->disconnect(this);
    if (!reply->isFinished())
        reply->abort();
    // We may be inside one of the reply's own signals.
    reply->deleteLater();
}

void clsDownload::armWatchdog(int ms)
{
    m_watchdog.start(qMax(1, ms));
}

bool clsDownload::waitWhileBusy()
{
    const QPointer<clsDownload> self(this);
    while (isBusy()) {
        QEventLoop loop;
        m_waitLoop = &loop;
        const int rc = loop.exec();
        if (!self)
            return false;
        m_waitLoop = nullptr;
        // -1: the application is quitting and refuses to run event loops; give up the
        // operation rather than spin.
        if (rc == -1 && isBusy()) {
            m_abort = Abort::Stop;
            if (m_phase == Phase::QueryHead || m_phase == Phase::QueryBody) {
                finishQuery(true);
            } else {
                m_stopDownload = true;
                endDownload(true);
            }
            if (!self)
                return false;
        }
    }
    return true;
}

void clsDownload::onRedirected(const QUrl &to)
{
    const QUrl target = m_currentUrl.resolved(to);
    if (!m_reply)
        return;
    if (redirectAllowed(m_currentUrl, target)) {
        m_currentUrl = target;
        armWatchdog(m_connectTimeout);
        emit m_reply->redirectAllowed();
        return;
    }
    // Refused: the answer stays the redirect itself, which ends as a non-200 status.
    m_abort = Abort::Redirect;
    onFinished();
}

void clsDownload::onMetaData()
{
    if (!m_reply || isPendingRedirect(m_reply))
        return;
    armWatchdog(m_stallTimeout);
    if (m_headersHandled)
        return;
    if (m_phase == Phase::QueryBody) {
        m_headersHandled = true;
        if (httpStatus(m_reply) != 200)
            finishQuery(true);
    } else if (m_phase == Phase::DownloadRequest) {
        m_headersHandled = true;
        downloadHeaders();
    }
}

void clsDownload::onReadyRead()
{
    if (!m_reply)
        return;
    if (!m_headersHandled) {
        const QPointer<clsDownload> self(this);
        onMetaData();
        if (!self)
            return;
    }
    if (m_phase == Phase::QueryBody)
        onQueryData();
    else if (m_phase == Phase::DownloadBody)
        onDownloadData();
}

void clsDownload::onWatchdog()
{
    if (!m_reply)
        return;
    // A pass still under way (a handler of ours showing a dialog, say), the proxy's password
    // prompt or a full buffer
    // means that we are behind, not the server.
    if (m_inDataHandler || proxyPromptOpen() || m_reply->bytesAvailable() >= kReadBufferSize) {
        armWatchdog(m_stallTimeout);
        return;
    }
    m_abort = Abort::Timeout;
    onFinished();
}

// Called when the reply is done: finished, refused redirect or timeout (m_abort says).
void clsDownload::onFinished()
{
    if (!m_reply)
        return;
    m_watchdog.stop();
    switch (m_phase) {
    case Phase::QueryHead: {
        const bool ok = m_abort == Abort::None && m_reply->error() == QNetworkReply::NoError &&
                        httpStatus(m_reply) == 200 && m_reply->hasRawHeader("Content-Length");
        if (!ok)
            noteReplyFailure();
        m_querySize = ok ? leadingNumber(m_reply->rawHeader("Content-Length")) : 0;
        releaseReply();
        queryAfterHead();
        break;
    }
    case Phase::QueryBody: {
        const QPointer<clsDownload> self(this);
        if (!m_headersHandled && m_abort == Abort::None)
            onMetaData();
        if (self && m_phase == Phase::QueryBody)
            onQueryData();
        break;
    }
    case Phase::DownloadRequest:
        if (m_abort != Abort::Timeout && httpStatus(m_reply) != 0 && !m_headersHandled) {
            m_headersHandled = true;
            downloadHeaders();
        } else if (m_resumeAttempt > 0) {
            // A resume that found no server counts as one more break.
            releaseReply();
            breakOff();
        } else {
            failDownload(ErrServerNotFound, true);
        }
        break;
    case Phase::DownloadBody:
        onDownloadData();
        break;
    case Phase::ResumeWait:
    case Phase::Idle:
        releaseReply();
        break;
    }
}

// ---- QueryFile ----

QString clsDownload::QueryFile(const QString &url, qint32 chunkSize, const QString &agent, bool flag,
                               qint16 mode)
{
    if (isBusy())
        return QString();
    if (!startQueryFile(url, chunkSize, agent, flag, mode))
        return QString();
    if (!waitWhileBusy())
        return QString();
    return m_queryText;
}

bool clsDownload::startQueryFile(const QString &url, qint32 chunkSize, const QString &agent, bool flag,
                                 qint16 mode)
{
    Q_UNUSED(flag)
    Q_UNUSED(mode)
    if (isBusy())
        return false;
    const QPointer<clsDownload> self(this);
    m_phase = Phase::QueryHead;
    m_chunkSize = qMax(1, chunkSize);
    m_agent = agent;
    m_querySize = 0;
    m_queryUrl.clear();
    m_queryData.clear();
    m_queryBytes.clear();
    m_firstChunkRead = false;
    m_cancel = false;
    m_queryText.clear();
    m_diagnosis = {};

    emit Statechanged(2);
    if (!self)
        return true;

    // An address without scheme ("host/path") is taken as http.
    const QString full = url.contains(QLatin1String("://")) ? url : QStringLiteral("http://") + url;
    cURL parts;
    if (parts.GetURL(full) && isWebScheme(parts))
        m_queryUrl = requestUrl(parts);
    if (!m_queryUrl.isValid() || !sendRequest("HEAD", m_queryUrl, agent))
        queryAfterHead();
    return true;
}

void clsDownload::queryAfterHead()
{
    const QPointer<clsDownload> self(this);
    // Nothing could be asked, no 200 or no size: Startdownloading(0) tells the caller.
    // A body announced beyond what a query keeps would only be fetched to be thrown away.
    if (m_querySize == 0 || m_querySize > m_queryLimit) {
        m_cancel = true;
        noteFailure({m_querySize == 0 ? NetCause::EmptyAnswer : NetCause::WrongAnswer, 0});
    }
    emit Statechanged(2);
    if (!self)
        return;
    emit Startdownloading(m_querySize);
    if (!self)
        return;
    // Without a size the result is "" whatever the body holds, so it is not fetched.
    if (m_cancel) {
        finishQuery(true);
        return;
    }
    m_phase = Phase::QueryBody;
    if (!sendRequest("GET", m_queryUrl, m_agent))
        finishQuery(true);
}

void clsDownload::onQueryData()
{
    if (m_inDataHandler || !m_reply)
        return;
    const QPointer<clsDownload> self(this);
    m_inDataHandler = true;
    for (;;) {
        const qint64 available = m_reply->bytesAvailable();
        const bool ended = m_reply->isFinished() || m_abort != Abort::None;
        if (available < m_chunkSize && !ended)
            break;
        const QByteArray chunk = m_reply->read(qMin<qint64>(available, m_chunkSize));
        if (m_firstChunkRead) {
            double percent = m_querySize > 0 ? double(m_queryData.size()) / double(m_querySize) * 100.0 : 0.0;
            emit Progresschanged(percent, m_cancel);
            if (!self)
                return;
        }
        m_firstChunkRead = true;
        m_queryData += chunk;
        if (m_queryData.size() > m_queryLimit)
            m_cancel = true;
        if (m_cancel || chunk.size() < m_chunkSize) {
            m_inDataHandler = false;
            // A body shorter than announced failed too: Qt may end a reply whose connection
            // closed early as if it were complete.
            const bool failed = m_cancel || m_abort != Abort::None ||
                                m_reply->error() != QNetworkReply::NoError ||
                                m_queryData.size() < m_querySize;
            finishQuery(failed);
            return;
        }
    }
    m_inDataHandler = false;
}

void clsDownload::finishQuery(bool failed)
{
    if (failed) {
        noteReplyFailure();
        noteFailure({NetCause::Other, 0}); // e.g. a body shorter than announced
    }
    releaseReply();
    m_queryText = failed ? QString() : decodeInstallationText(m_queryData);
    m_queryBytes = failed ? QByteArray() : std::exchange(m_queryData, {});
    m_queryData.clear();
    m_phase = Phase::Idle;
    m_inDataHandler = false;
    if (m_waitLoop)
        m_waitLoop->quit();
    const QPointer<clsDownload> self(this);
    emit Statechanged(2);
    if (!self)
        return;
    emit queryFinished(m_queryText);
}

// ---- Download ----

void clsDownload::Download(const QString &url, const QString &fileName, const QVariant &third,
                           const QString &stoppedCaption, const QString &doneCaption)
{
    if (!startDownload(url, fileName, third, stoppedCaption, doneCaption))
        return;
    waitWhileBusy();
}

bool clsDownload::startDownload(const QString &url, const QString &fileName, const QVariant &third,
                                const QString &stoppedCaption, const QString &doneCaption)
{
    Q_UNUSED(third)
    if (isBusy())
        return false;
    m_stopDownload = false;
    m_size = 0;
    m_speed = 0;
    m_receivedBytes = 0;
    m_downloadTime = 0;
    m_errorNumber = 0;
    m_errorDescription.clear();
    m_diagnosis = {};
    m_status = 1;
    m_stoppedCaption = stoppedCaption;
    m_doneCaption = doneCaption;
    m_file.setFileName(fileName);
    m_stage.clear();
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    m_resumeAttempt = 0;
    m_validator.clear();
    m_rangesAccepted = true;
    m_rangeAsked = false;
    m_phase = Phase::DownloadRequest;

    cURL parts;
    const QUrl address = parts.GetURL(url) && isWebScheme(parts) ? requestUrl(parts) : QUrl();
    if (!address.isValid()) {
        failDownload(ErrBadUrl, true);
        return true;
    }
    if (!sendRequest("GET", address, QStringLiteral("http sample")))
        endDownload(false);
    return true;
}

void clsDownload::StopDownload(bool stop)
{
    m_stopDownload = stop;
    // Seen after the block in hand; when no block is coming (no answer yet, a slow or
    // stalled server), the queued check ends the download without waiting for one.
    if (stop &&
        (m_phase == Phase::DownloadRequest || m_phase == Phase::DownloadBody || m_phase == Phase::ResumeWait))
        QMetaObject::invokeMethod(this, &clsDownload::onStopRequested, Qt::QueuedConnection);
}

void clsDownload::onStopRequested()
{
    const bool running =
        m_phase == Phase::DownloadRequest || m_phase == Phase::DownloadBody || m_phase == Phase::ResumeWait;
    if (running && m_stopDownload && !m_inDataHandler)
        endDownload(true);
}

void clsDownload::setError(qint32 errorNumber)
{
    m_errorNumber = errorNumber;
    m_errorDescription = errorText(errorNumber);
    if (errorNumber == ErrZeroSize) {
        noteFailure({NetCause::EmptyAnswer, 0});
    } else if (errorNumber != ErrNone && errorNumber != ErrBadUrl && errorNumber != ErrWriteFile) {
        noteReplyFailure();
        noteFailure({NetCause::Other, 0});
    }
}

void clsDownload::noteFailure(NetDiagnosis diagnosis)
{
    if (m_diagnosis.cause == NetCause::None)
        m_diagnosis = diagnosis;
}

void clsDownload::noteReplyFailure()
{
    if (m_reply)
        noteFailure(diagnoseReply(*m_reply, m_abort == Abort::Timeout));
    else if (m_abort == Abort::Timeout)
        noteFailure({NetCause::Timeout, 0});
}

void clsDownload::downloadHeaders()
{
    const int code = httpStatus(m_reply);
    if (m_resumeAttempt > 0 && resumedHeaders(code))
        return;
    if (code != 200) {
        failDownload(code, false);
        return;
    }
    m_size = leadingNumber(m_reply->rawHeader("Content-Length"));
    if (m_size == 0) {
        failDownload(ErrZeroSize, false);
        return;
    }
    // Not truncated: an older file of the same name is overwritten from its start only
    // (a fresh open without Append stands at the start).
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        failDownload(ErrWriteFile, true);
        return;
    }
    m_readTimeMs = 1; // keeps the speed's division away from zero
    m_transferClock.start();
    m_blockWaitStartNs = 0;
    startBody();
}

// The data of a 200 answer begin: its validator is what a resume will be checked with.
void clsDownload::startBody()
{
    const QByteArray etag = m_reply->rawHeader("ETag").trimmed();
    // A weak ETag may not be used for ranges; the date then serves.
    m_validator =
        !etag.isEmpty() && !etag.startsWith("W/") ? etag : m_reply->rawHeader("Last-Modified").trimmed();
    m_rangesAccepted = m_reply->rawHeader("Accept-Ranges").trimmed().toLower() != "none";
    m_phase = Phase::DownloadBody;
    onDownloadData();
}

// The answer to a resume. True when it was dealt with here; false leaves a 200 (the whole
// file again) to the usual path after the file has been emptied.
bool clsDownload::resumedHeaders(int code)
{
    if (code == 206 && m_rangeAsked) {
        // "bytes START-END/TOTAL": only the very rest of the very same file will do.
        const QByteArray range = m_reply->rawHeader("Content-Range").trimmed();
        const qsizetype dash = range.indexOf('-');
        const qsizetype slash = range.indexOf('/');
        const bool fits = range.startsWith("bytes ") && dash > 6 && slash > dash &&
                          range.mid(6, dash - 6).trimmed() == QByteArray::number(m_receivedBytes) &&
                          range.mid(slash + 1).trimmed() == QByteArray::number(m_size);
        if (!fits) {
            // Another file behind the same address (a new ETag or size, from a server that
            // ignored If-Range): the next attempt fetches it whole instead of asking for a rest.
            const QByteArray etag = m_reply->rawHeader("ETag").trimmed();
            if ((!etag.isEmpty() && etag != m_validator) ||
                range.mid(slash + 1).trimmed() != QByteArray::number(m_size))
                m_validator.clear();
            releaseReply();
            breakOff();
            return true;
        }
        m_blockWaitStartNs = m_transferClock.nsecsElapsed();
        m_phase = Phase::DownloadBody;
        onDownloadData();
        return true;
    }
    if (code == 200) {
        // The whole file comes again: it is written afresh from its start.
        m_receivedBytes = 0;
        if (!m_file.seek(0) || !m_file.resize(0)) {
            failDownload(ErrWriteFile, true);
            return true;
        }
        m_size = leadingNumber(m_reply->rawHeader("Content-Length"));
        if (m_size == 0) {
            failDownload(ErrZeroSize, false);
            return true;
        }
        m_blockWaitStartNs = m_transferClock.nsecsElapsed();
        startBody();
        return true;
    }
    // Refused (416, 412), gone (404) or a server error: one more break.
    releaseReply();
    breakOff();
    return true;
}

// The transfer broke off after its data began: resumed while attempts are left, else the
// download ends with error 4 and what arrived stays in the file.
void clsDownload::breakOff()
{
    if (scheduleResume())
        return;
    setError(ErrConnectionLost);
    const QPointer<clsDownload> self(this);
    emit update();
    if (!self)
        return;
    endDownload(false);
}

bool clsDownload::scheduleResume()
{
    if (m_resumeAttempt >= m_resume.maxAttempts || m_stopDownload)
        return false;
    ++m_resumeAttempt;
    releaseReply();
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    const QList<int> &pauses = m_resume.pausesMs;
    const int pause = pauses.isEmpty() ? 0 : pauses.at(qMin<qsizetype>(m_resumeAttempt, pauses.size()) - 1);
    m_phase = Phase::ResumeWait;
    const QPointer<clsDownload> self(this);
    emit resuming(m_resumeAttempt, m_resume.maxAttempts, pause);
    if (self && m_phase == Phase::ResumeWait)
        m_resumeTimer.start(qMax(0, pause));
    return true;
}

void clsDownload::resumeNow()
{
    if (m_phase != Phase::ResumeWait)
        return;
    m_phase = Phase::DownloadRequest;
    // Without a validator the rest could belong to another file: the whole file again.
    m_rangeAsked = m_receivedBytes > 0 && !m_validator.isEmpty() && m_rangesAccepted;
    const QByteArray range =
        m_rangeAsked ? "bytes=" + QByteArray::number(m_receivedBytes) + '-' : QByteArray();
    if (!sendRequest("GET", m_currentUrl, QStringLiteral("http sample"), range,
                     m_rangeAsked ? m_validator : QByteArray()))
        breakOff();
}

// Blocks of kBlockSize are cut from a staging buffer that is allocated once per download.
// It is refilled with everything Qt holds whenever less than a block is left (each read
// from the reply wakes the network thread to read on, so one read per pass, not one per
// block), and the blocks counted off it go to the file in one write per pass.
void clsDownload::onDownloadData()
{
    if (m_inDataHandler || !m_reply || m_phase != Phase::DownloadBody)
        return;
    const QPointer<clsDownload> self(this);
    m_inDataHandler = true;
    for (;;) {
        qint64 staged = m_stageEnd - m_stageOffset;
        if (staged < kBlockSize && m_reply->bytesAvailable() > 0) {
            if (!flushStage())
                return;
            // The start of the next block moves to the front; the rest is filled up.
            if (m_stage.size() < kStageSize)
                m_stage.resize(kStageSize);
            char *buffer = m_stage.data();
            std::memmove(buffer, buffer + m_stageOffset, size_t(staged));
            m_stageOffset = m_writtenOffset = 0;
            const qint64 got = m_reply->read(buffer + staged, kStageSize - staged);
            m_stageEnd = staged + qMax<qint64>(got, 0);
            staged = m_stageEnd;
        }
        const bool ended = m_reply->isFinished() || m_abort != Abort::None;
        if (staged < kBlockSize && !ended && !m_stopDownload)
            break;

        const qint64 length = qMin(staged, kBlockSize);
        m_stageOffset += length; // written by the next flushStage
        if (!processBlock(length)) {
            if (self)
                m_inDataHandler = false;
            return;
        }
        if (m_stopDownload) {
            if (!flushStage())
                return;
            m_inDataHandler = false;
            endDownload(true);
            return;
        }
        if (length < kBlockSize) {
            // A short read ends the file. Anything short of Size is a broken transfer.
            if (!flushStage())
                return;
            m_inDataHandler = false;
            const bool broken = m_abort != Abort::None || m_reply->error() != QNetworkReply::NoError ||
                                m_receivedBytes < m_size;
            if (broken)
                breakOff();
            else
                endDownload(false);
            return;
        }
    }
    if (flushStage())
        m_inDataHandler = false;
}

// Writes the blocks counted off the staging buffer since the last write; on failure the
// download ends with ErrWriteFile and false is returned.
bool clsDownload::flushStage()
{
    const qint64 pending = m_stageOffset - m_writtenOffset;
    if (pending > 0 && m_file.write(m_stage.constData() + m_writtenOffset, pending) != pending) {
        m_inDataHandler = false;
        failDownload(ErrWriteFile, true);
        return false;
    }
    m_writtenOffset = m_stageOffset;
    return true;
}

// Counts one block and raises update; false when the download ended meanwhile or the
// object was deleted by a handler of update.
bool clsDownload::processBlock(qint64 length)
{
    const qint64 nowNs = m_transferClock.nsecsElapsed();
    m_readTimeMs += double(nowNs - m_blockWaitStartNs) / 1e6; // only the time spent waiting for data
    m_receivedBytes += length;
    m_speed = double(m_receivedBytes) / (m_readTimeMs / 1000.0);
    m_downloadTime = nowNs / 1000000;

    const QPointer<clsDownload> self(this);
    emit update();
    if (!self)
        return false;
    m_blockWaitStartNs = m_transferClock.nsecsElapsed();
    return m_phase == Phase::DownloadBody;
}

// Errors: the figures are set, update is raised, then either the end path (captions)
// or just the clean-up, as the error's place in the sequence asks.
void clsDownload::failDownload(qint32 errorNumber, bool withCaptions)
{
    setError(errorNumber);
    const QPointer<clsDownload> self(this);
    emit update();
    if (!self)
        return;
    if (withCaptions) {
        endDownload(false);
        return;
    }
    releaseReply();
    m_resumeTimer.stop();
    m_file.close();
    m_status = 0;
    m_phase = Phase::Idle;
    if (m_waitLoop)
        m_waitLoop->quit();
    emit downloadFinished();
}

void clsDownload::endDownload(bool stopped)
{
    releaseReply();
    m_resumeTimer.stop();
    m_file.close();
    m_stage.clear();
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    m_status = 0;
    m_phase = Phase::Idle;
    m_inDataHandler = false;
    if (m_waitLoop)
        m_waitLoop->quit();
    const QPointer<clsDownload> self(this);
    emit disableButton();
    if (!self)
        return;
    emit finishedCaption(stopped ? m_stoppedCaption : m_doneCaption);
    if (!self)
        return;
    emit downloadFinished();
}
