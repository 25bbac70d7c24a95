#pragma once

#include <QtGlobal>

class QNetworkReply;

// Why a transfer or the connection test failed, as far as the network layer can tell.
// The words for each cause and what the user can do about it belong to the pages.
enum class NetCause
{
    None,
    NoNetwork,       // no interface is up besides loopback
    NameNotResolved, // the server's name is unknown (no DNS, a typo, a blocked name)
    Refused,         // nothing listens there, or a firewall says no
    Timeout,         // no answer, or the answer stopped, within the timeout
    Proxy,           // a proxy refused or wants a password (httpStatus 407 then)
    Tls,             // the encrypted connection could not be set up or verified
    HttpStatus,      // the server answered with an error status (httpStatus)
    WrongAnswer,     // something else than what was asked for: a login page, a redirect elsewhere
    EmptyAnswer,     // no content, or no size announced
    Other,           // the connection broke in some other way
};

struct NetDiagnosis
{
    NetCause cause = NetCause::None;
    int httpStatus = 0; // for HttpStatus and a proxy's 407, else 0

    bool operator==(const NetDiagnosis &) const = default;
};

// What a finished (or given up) reply says about its failure; None for a 200/206 answer
// without error. timedOut: we gave up waiting for it.
NetDiagnosis diagnoseReply(const QNetworkReply &reply, bool timedOut);

// Causes that a missing network would explain as well.
bool isTransportCause(NetCause cause);
