#pragma once

#include <QString>

// The second lock on Windows: the program file's own Authenticode signature, checked by
// the system before the file is installed. Elsewhere there is nothing to check.
struct AuthenticodeResult
{
    enum Status
    {
        NotAvailable, // not on Windows
        Unsigned,     // no signature at all
        Valid,        // intact and trusted by the system
        Broken,       // signed, but the file changed afterwards or the signature is damaged
        Untrusted,    // intact, but the certificate is not trusted (chain, time, revoked)
    };
    Status status = NotAvailable;
    QString signer; // the signing certificate's name, when the file names one
    long code = 0;  // the system's answer, for support
};

AuthenticodeResult checkAuthenticode(const QString &path);

// Whether the file may be installed: a build that names its publisher takes only a valid
// signature of that signer; one that names none takes any file, the signature only shown.
bool authenticodeAccepted(const AuthenticodeResult &result, const QString &publisher);

// For the status line: who signed, or why the file is refused ("" where nothing is checked).
QString authenticodeText(const AuthenticodeResult &result, const QString &publisher);
