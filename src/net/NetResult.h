#pragma once

#include <QString>
#include <QtGlobal>

// How a transfer ended. The words belong to the pages, which look messageKey up in the
// current language.
enum class NetError
{
    None,
    ServerNotFound, // no connection, no answer within the connect timeout, TLS failure
    BadUrl,         // the address does not split into parts, or is neither http nor https
    ZeroSize,       // Content-Length 0 or missing
    ConnectionLost, // the transfer ended before Size bytes: lost, closed early or stalled
    WriteFile,      // the target file cannot be opened or written
    HttpStatus,     // any other answer than 200 (also a refused redirect's 3xx); 404 too
};

struct NetResult
{
    NetError error = NetError::None;
    int httpStatus = 0; // for HttpStatus

    bool ok() const { return error == NetError::None; }
    // The number callers have always been given: 1 to 5, else the HTTP status.
    qint32 number() const;
    // The key of its text in the language files ("" without error).
    QString messageKey() const;
    bool operator==(const NetResult &) const = default;
};
