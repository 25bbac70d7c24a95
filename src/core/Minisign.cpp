#include "core/Minisign.h"

#include <QStringList>

#include <sodium.h>

namespace Minisign {
namespace {
constexpr char kAlgorithmPlain[] = "Ed";
constexpr char kAlgorithmHashed[] = "ED";

bool sodiumReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

// Strict base64 of an exact decoded length: anything else (other characters, padding in
// the middle, another length) is refused rather than guessed at.
bool decodeExact(QByteArrayView text, qsizetype size, QByteArray &out)
{
    const qsizetype expectedChars = (size + 2) / 3 * 4;
    if (text.size() != expectedChars)
        return false;
    const auto decoded =
        QByteArray::fromBase64Encoding(text.toByteArray(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() != size)
        return false;
    out = decoded.decoded;
    return true;
}

QByteArrayView trimLineEnd(QByteArrayView line)
{
    while (!line.isEmpty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
        line.chop(1);
    return line;
}
} // namespace

bool parsePublicKey(QByteArrayView line, PublicKey &key)
{
    QByteArray raw;
    if (!decodeExact(line.trimmed(), 2 + kKeyIdSize + kPublicKeySize, raw) ||
        !raw.startsWith(kAlgorithmPlain))
        return false;
    key.keyId = raw.mid(2, kKeyIdSize);
    key.key = raw.mid(2 + kKeyIdSize);
    return true;
}

QList<PublicKey> parsePublicKeys(const QString &text)
{
    QList<PublicKey> keys;
    const QStringList lines = text.split(u'\n');
    for (const QString &line : lines) {
        if (line.trimmed().startsWith(QLatin1String("untrusted comment:"), Qt::CaseInsensitive))
            continue;
        const QStringList words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString &word : words) {
            PublicKey key;
            if (parsePublicKey(word.toLatin1(), key))
                keys.append(key);
        }
    }
    return keys;
}

bool parseSignature(QByteArrayView file, Signature &signature)
{
    if (file.size() > kMaxSignatureFile)
        return false;
    QList<QByteArrayView> lines;
    qsizetype start = 0;
    while (start < file.size() && lines.size() < 5) {
        qsizetype end = file.indexOf('\n', start);
        if (end < 0)
            end = file.size();
        lines.append(trimLineEnd(file.sliced(start, end - start)));
        start = end + 1;
    }
    // Four lines, then at most an empty one.
    if (lines.size() < 4 || (lines.size() == 5 && !lines[4].isEmpty()))
        return false;
    if (!lines[0].startsWith("untrusted comment:"))
        return false;
    QByteArray raw;
    if (!decodeExact(lines[1], 2 + kKeyIdSize + kSignatureSize, raw))
        return false;
    if (raw.startsWith(kAlgorithmHashed))
        signature.prehashed = true;
    else if (raw.startsWith(kAlgorithmPlain))
        signature.prehashed = false;
    else
        return false;
    signature.keyId = raw.mid(2, kKeyIdSize);
    signature.signature = raw.mid(2 + kKeyIdSize);
    constexpr QByteArrayView trustedPrefix("trusted comment: ");
    if (!lines[2].startsWith(trustedPrefix) || lines[2].size() - trustedPrefix.size() > kMaxTrustedComment)
        return false;
    signature.trustedComment = lines[2].sliced(trustedPrefix.size()).toByteArray();
    return decodeExact(lines[3], kSignatureSize, signature.globalSignature);
}

Result verify(QByteArrayView data, const Signature &signature, const QList<PublicKey> &keys)
{
    const PublicKey *key = nullptr;
    for (const PublicKey &candidate : keys) {
        if (candidate.keyId == signature.keyId) {
            key = &candidate;
            break;
        }
    }
    if (!key)
        return Result::UnknownKey;
    if (!sodiumReady() || signature.signature.size() != kSignatureSize ||
        signature.globalSignature.size() != kSignatureSize || key->key.size() != kPublicKeySize)
        return Result::SignatureMismatch;
    const auto *publicKey = reinterpret_cast<const unsigned char *>(key->key.constData());

    QByteArray message;
    if (signature.prehashed) {
        message.resize(crypto_generichash_BYTES_MAX);
        crypto_generichash(reinterpret_cast<unsigned char *>(message.data()), size_t(message.size()),
                           reinterpret_cast<const unsigned char *>(data.data()), size_t(data.size()), nullptr,
                           0);
        data = message;
    }
    if (crypto_sign_verify_detached(reinterpret_cast<const unsigned char *>(signature.signature.constData()),
                                    reinterpret_cast<const unsigned char *>(data.data()), size_t(data.size()),
                                    publicKey) != 0)
        return Result::SignatureMismatch;
    // The trusted comment is covered by the global signature, together with the signature.
    const QByteArray global = signature.signature + signature.trustedComment;
    if (crypto_sign_verify_detached(
            reinterpret_cast<const unsigned char *>(signature.globalSignature.constData()),
            reinterpret_cast<const unsigned char *>(global.constData()), size_t(global.size()),
            publicKey) != 0)
        return Result::SignatureMismatch;
    return Result::Ok;
}

QString trustedField(const QByteArray &trustedComment, const QString &name, bool *found)
{
    const QStringList fields = QString::fromUtf8(trustedComment).split(u'\t');
    const QString prefix = name + u':';
    for (const QString &field : fields) {
        if (field.startsWith(prefix)) {
            *found = true;
            return field.mid(prefix.size());
        }
    }
    *found = false;
    return {};
}

} // namespace Minisign
