#include "net/Transport.h"

#include "net/ProxyLogin.h"
#include "net/cURL.h"

#include <QAuthenticator>
#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <limits>
#include <utility>

namespace {

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

bool isPendingRedirect(const QNetworkReply &reply)
{
    const int code = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return code >= 300 && code < 400 && reply.hasRawHeader("Location") && !reply.isFinished();
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

// One manager for all transfers of the thread. It outlives the replies' owners, so that
// one deleted in the middle of a transfer can leave its reply to be deleted later without
// pulling the manager away from under it.
QNetworkAccessManager *NetTransport::manager()
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

bool NetTransport::redirectAllowed(const QUrl &from, const QUrl &to)
{
    const QString target = to.scheme().toLower();
    if (target != QLatin1String("http") && target != QLatin1String("https"))
        return false;
    return !(from.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0 &&
             target == QLatin1String("http"));
}

// The cracked parts put back together. The path comes back decoded from the cracker and is
// encoded again by QUrl; query and fragment are taken as typed. Invalid when the parts do
// not make an address (e.g. a bad host name).
QUrl NetTransport::requestUrl(const QString &address, const QString &schemeDefault)
{
    const QString full = schemeDefault.isEmpty() || address.contains(QLatin1String("://"))
                             ? address
                             : schemeDefault + QLatin1String("://") + address;
    cURL parts;
    if (!parts.GetURL(full) || (parts.lScheme() != cURL::SchemeHttp && parts.lScheme() != cURL::SchemeHttps))
        return {};
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

NetReply::NetReply(QObject *parent) : QObject(parent)
{
    connect(&m_watchdog, &Watchdog::expired, this, &NetReply::onExpired);
    setBehind({});
}

NetReply::~NetReply()
{
    release();
}

void NetReply::setBehind(std::function<bool()> behind)
{
    m_behind = std::move(behind);
    // The proxy's password prompt or a full buffer means that we are behind, not the server.
    m_watchdog.setBehind([this] {
        return (m_behind && m_behind()) || proxyPromptOpen() ||
               (m_reply && m_reply->bytesAvailable() >= NetTransport::kReadBufferSize);
    });
}

bool NetReply::send(const QByteArray &verb, const QUrl &url, const QString &agent, const QByteArray &range,
                    const QByteArray &ifRange)
{
    release();
    QNetworkAccessManager *manager = NetTransport::manager();
    if (!manager || !url.isValid())
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
    request.setMaximumRedirectsAllowed(NetTransport::kMaxRedirects);

    m_url = url;
    m_headersEmitted = false;
    m_abort = Abort::None;
    m_reply = verb == "HEAD" ? manager->head(request) : manager->get(request);
    m_reply->setReadBufferSize(NetTransport::kReadBufferSize);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &NetReply::onMetaData);
    connect(m_reply, &QNetworkReply::readyRead, this, &NetReply::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &NetReply::onFinished);
    connect(m_reply, &QNetworkReply::redirected, this, &NetReply::onRedirected);
    connect(m_reply, &QNetworkReply::downloadProgress, &m_watchdog, &Watchdog::progress);
    m_watchdog.awaitAnswer();
    return true;
}

void NetReply::release()
{
    m_watchdog.stop();
    if (!m_reply)
        return;
    QNetworkReply *reply = std::exchange(m_reply, nullptr);
    reply->disconnect(this);
    reply->disconnect(&m_watchdog);
    if (!reply->isFinished())
        reply->abort();
    // We may be inside one of the reply's own signals.
    reply->deleteLater();
}

int NetReply::status() const
{
    return m_reply ? m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() : 0;
}

QByteArray NetReply::header(const QByteArray &name) const
{
    return m_reply ? m_reply->rawHeader(name).trimmed() : QByteArray();
}

qint64 NetReply::headerNumber(const QByteArray &name) const
{
    qint64 number = 0;
    for (const char c : header(name)) {
        if (c < '0' || c > '9')
            break;
        if (number > (std::numeric_limits<qint64>::max() - 9) / 10)
            return 0;
        number = number * 10 + (c - '0');
    }
    return number;
}

bool NetReply::isOver() const
{
    return !m_reply || m_reply->isFinished() || m_abort != Abort::None;
}

bool NetReply::hasError() const
{
    return m_abort != Abort::None || !m_reply || m_reply->error() != QNetworkReply::NoError;
}

NetDiagnosis NetReply::diagnosis() const
{
    if (m_reply)
        return diagnoseReply(*m_reply, m_abort == Abort::Timeout);
    return m_abort == Abort::Timeout ? NetDiagnosis{NetCause::Timeout, 0} : NetDiagnosis{};
}

bool NetReply::emitHeadersOnce()
{
    if (m_headersEmitted)
        return true;
    m_headersEmitted = true;
    const QPointer<NetReply> self(this);
    emit headers();
    return self && m_reply;
}

void NetReply::onMetaData()
{
    if (!m_reply || isPendingRedirect(*m_reply))
        return;
    m_watchdog.awaitData();
    emitHeadersOnce();
}

void NetReply::onReadyRead()
{
    if (!m_reply)
        return;
    if (!m_headersEmitted) {
        onMetaData();
        if (!m_reply || !m_headersEmitted)
            return;
    }
    emit data();
}

void NetReply::onRedirected(const QUrl &to)
{
    if (!m_reply)
        return;
    const QUrl target = m_url.resolved(to);
    if (NetTransport::redirectAllowed(m_url, target)) {
        m_url = target;
        m_watchdog.awaitAnswer();
        emit m_reply->redirectAllowed();
        return;
    }
    // Refused: the answer stays the redirect itself, which ends as a non-200 status.
    m_abort = Abort::Redirect;
    onFinished();
}

void NetReply::onExpired()
{
    if (!m_reply)
        return;
    m_abort = Abort::Timeout;
    onFinished();
}

void NetReply::onFinished()
{
    if (!m_reply)
        return;
    m_watchdog.stop();
    // An answer that ends before its headers were seen still has them, unless we gave up
    // waiting for them.
    if (m_abort != Abort::Timeout && status() != 0 && !emitHeadersOnce())
        return;
    emit ended();
}
