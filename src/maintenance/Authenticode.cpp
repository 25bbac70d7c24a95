#include "maintenance/Authenticode.h"

#include "localisation/LanguageState.h"

bool authenticodeAccepted(const AuthenticodeResult &result, const QString &publisher)
{
    if (publisher.isEmpty() || result.status == AuthenticodeResult::NotAvailable)
        return true;
    return result.status == AuthenticodeResult::Valid &&
           result.signer.compare(publisher, Qt::CaseInsensitive) == 0;
}

QString authenticodeText(const AuthenticodeResult &result, const QString &publisher)
{
    QString reason;
    switch (result.status) {
    case AuthenticodeResult::NotAvailable:
        return {};
    case AuthenticodeResult::Valid:
        if (authenticodeAccepted(result, publisher))
            return lngText(QStringLiteral("T19320"), QStringLiteral("Signiert von: <var1>"))
                .replace(QLatin1String("<var1>"), result.signer);
        reason = lngText(QStringLiteral("T19325"), QStringLiteral("signiert von <var1>"))
                     .replace(QLatin1String("<var1>"), result.signer);
        break;
    case AuthenticodeResult::Unsigned:
        reason = lngText(QStringLiteral("T19322"), QStringLiteral("keine Signatur"));
        break;
    case AuthenticodeResult::Broken:
        reason = lngText(QStringLiteral("T19323"), QStringLiteral("nach dem Signieren verändert"));
        break;
    case AuthenticodeResult::Untrusted:
        reason = lngText(QStringLiteral("T19324"), QStringLiteral("Zertifikat nicht vertrauenswürdig"));
        break;
    }
    if (publisher.isEmpty())
        return QStringLiteral("Authenticode: ") + reason;
    return lngText(QStringLiteral("T19321"),
                   QStringLiteral("Status: Die Programmdatei trägt keine gültige Signatur von <var1> "
                                  "(Authenticode: <var2>); sie wird nicht installiert."))
        .replace(QLatin1String("<var1>"), publisher)
        .replace(QLatin1String("<var2>"), reason);
}
