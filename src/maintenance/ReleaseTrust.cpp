#include "maintenance/ReleaseTrust.h"

#include "core/Config.h"
#include "core/TextFile.h"
#include "localisation/LanguageState.h"
#include "net/clsDownload.h"

#include <QRegularExpression>
#include <QStringList>

namespace {
QString withFile(QString text, const QString &fileName)
{
    return text.replace(QLatin1String("<var1>"), fileName);
}
} // namespace

QString signatureUrl(const QString &fileUrl)
{
    return fileUrl + QStringLiteral(".minisig");
}

bool startSignatureQuery(clsDownload &download, const QString &fileUrl)
{
    download.setQueryLimit(kSignatureQueryLimit);
    return download.startQueryFile(signatureUrl(fileUrl), QStringLiteral("Download"));
}

TrustCheck checkSignedFile(const QByteArray &data, const QByteArray &signatureFile, const QString &fileName,
                           const QString &version)
{
    const QList<Minisign::PublicKey> keys = Minisign::parsePublicKeys(Config::releaseKeys());
    if (keys.isEmpty())
        return TrustCheck::NoReleaseKey;
    if (signatureFile.isEmpty())
        return TrustCheck::NoSignature;
    Minisign::Signature signature;
    if (!Minisign::parseSignature(signatureFile, signature))
        return TrustCheck::BrokenSignature;
    switch (Minisign::verify(data, signature, keys)) {
    case Minisign::Result::Ok:
        break;
    case Minisign::Result::UnknownKey:
        return TrustCheck::UnknownKey;
    case Minisign::Result::SignatureMismatch:
        return TrustCheck::SignatureMismatch;
    }
    // Only now is the comment the publisher's own words.
    bool found = false;
    if (Minisign::trustedField(signature.trustedComment, QStringLiteral("file"), &found) != fileName ||
        !found)
        return TrustCheck::WrongFile;
    if (Minisign::trustedField(signature.trustedComment, QStringLiteral("version"), &found) != version ||
        !found)
        return TrustCheck::WrongVersion;
    return TrustCheck::Ok;
}

QString downloadListValue(const QString &downloadList, const QString &key)
{
    bool inSection = false;
    const QStringList lines = downloadList.split(u'\n');
    for (QString line : lines) {
        line = line.trimmed();
        if (line.startsWith(u'[')) {
            const qsizetype end = line.indexOf(u']');
            inSection =
                end > 0 &&
                line.mid(1, end - 1).trimmed().compare(QLatin1String("Downloads"), Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inSection || equals < 0 || line.left(equals).trimmed().compare(key, Qt::CaseInsensitive) != 0)
            continue;
        QString value = line.mid(equals + 1).trimmed();
        if (value.size() >= 2 && value.startsWith(u'"') && value.endsWith(u'"'))
            value = value.mid(1, value.size() - 2);
        return value;
    }
    return {};
}

SignedDownloadList checkDownloadList(const QByteArray &downloadList, const QByteArray &signatureFile)
{
    SignedDownloadList list;
    const QString text = decodeInstallationText(downloadList);
    list.version = downloadListValue(text, QStringLiteral("pawnsketch.exe"));
    list.check = checkSignedFile(downloadList, signatureFile, QStringLiteral("downloads.ini"), list.version);
    if (list.check != TrustCheck::Ok)
        return list;
    static const QRegularExpression hex(QStringLiteral("^[0-9A-Fa-f]{64}$"));
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,15}$"));
    list.sha256 = downloadListValue(text, QStringLiteral("pawnsketch.exe.sha256"));
    const QString size = downloadListValue(text, QStringLiteral("pawnsketch.exe.size"));
    if (!hex.match(list.sha256).hasMatch() || !digits.match(size).hasMatch() || list.version.isEmpty()) {
        list.check = TrustCheck::MissingChecksum;
        return list;
    }
    list.size = size.toLongLong();
    return list;
}

int compareVersions(const QString &a, const QString &b)
{
    static const QRegularExpression number(QStringLiteral("[0-9]+"));
    auto numbers = [](const QString &text) {
        QList<qulonglong> list;
        for (auto it = number.globalMatch(text); it.hasNext();)
            list.append(it.next().captured().left(18).toULongLong());
        return list;
    };
    const QList<qulonglong> left = numbers(a), right = numbers(b);
    for (qsizetype i = 0; i < qMax(left.size(), right.size()); ++i) {
        const qulonglong l = left.value(i), r = right.value(i);
        if (l != r)
            return l < r ? -1 : 1;
    }
    return 0;
}

QString trustCheckText(TrustCheck check, const QString &fileName)
{
    switch (check) {
    case TrustCheck::Ok:
        return {};
    case TrustCheck::NoReleaseKey:
        return lngText(QStringLiteral("T19300"),
                       QStringLiteral("Diese Ausgabe des Support-Kits enthält keinen Schlüssel des "
                                      "Herausgebers, darum wird nichts vom Server angenommen."));
    case TrustCheck::NoSignature:
        return withFile(lngText(QStringLiteral("T19301"),
                                QStringLiteral("Keine brauchbare Signaturdatei zu <var1> erhalten.")),
                        fileName);
    case TrustCheck::BrokenSignature:
        return withFile(
            lngText(QStringLiteral("T19302"), QStringLiteral("Die Signaturdatei zu <var1> ist beschädigt.")),
            fileName);
    case TrustCheck::UnknownKey:
        return withFile(lngText(QStringLiteral("T19303"),
                                QStringLiteral("<var1> ist mit einem unbekannten Schlüssel signiert.")),
                        fileName);
    case TrustCheck::SignatureMismatch:
        return withFile(lngText(QStringLiteral("T19304"),
                                QStringLiteral("Die Signatur passt nicht zu <var1>: die Datei wurde nach "
                                               "dem Signieren verändert.")),
                        fileName);
    case TrustCheck::WrongFile:
        return withFile(lngText(QStringLiteral("T19305"),
                                QStringLiteral("Die Signatur zu <var1> gilt für eine andere Datei.")),
                        fileName);
    case TrustCheck::WrongVersion:
        return withFile(lngText(QStringLiteral("T19306"),
                                QStringLiteral("Die Signatur zu <var1> nennt eine andere Version.")),
                        fileName);
    case TrustCheck::MissingChecksum:
        return withFile(lngText(QStringLiteral("T19307"),
                                QStringLiteral("<var1> nennt keine Größe oder keine Prüfsumme der "
                                               "Programmdatei.")),
                        fileName);
    }
    return {};
}

QString refusedDownloadText(const QString &reason)
{
    return withFile(lngText(QStringLiteral("T19310"),
                            QStringLiteral("Status: Download abgelehnt: <var1> Die Programmdatei bleibt, "
                                           "wie sie ist.")),
                    reason);
}

QString refusedVersionText(const QString &reason)
{
    return withFile(lngText(QStringLiteral("T19311"),
                            QStringLiteral("Update-Prüfung: Die Version des Servers wird nicht angenommen: "
                                           "<var1>")),
                    reason);
}
