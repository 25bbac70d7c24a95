#include "net/NetCause.h"

#include <QNetworkReply>

NetDiagnosis diagnoseReply(const QNetworkReply &reply, bool timedOut)
{
    if (timedOut)
        return {NetCause::Timeout, 0};
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    switch (reply.error()) {
    case QNetworkReply::HostNotFoundError:
        return {NetCause::NameNotResolved, 0};
    case QNetworkReply::ConnectionRefusedError:
        return {NetCause::Refused, 0};
    case QNetworkReply::TimeoutError:
        return {NetCause::Timeout, 0};
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return {NetCause::Proxy, 407};
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::UnknownProxyError:
        return {NetCause::Proxy, status == 407 ? 407 : 0};
    case QNetworkReply::SslHandshakeFailedError:
        return {NetCause::Tls, 0};
    default:
        break;
    }
    if (status == 407)
        return {NetCause::Proxy, 407};
    if (status >= 300 && status < 400)
        return {NetCause::WrongAnswer, 0}; // a redirect we would not follow
    if (status != 0 && status != 200 && status != 206)
        return {NetCause::HttpStatus, status};
    if (reply.error() != QNetworkReply::NoError)
        return {NetCause::Other, 0};
    return {};
}

bool isTransportCause(NetCause cause)
{
    return cause == NetCause::NameNotResolved || cause == NetCause::Refused || cause == NetCause::Timeout ||
           cause == NetCause::Other;
}
