#include "testsupport/TestSigning.h"

#include <QCryptographicHash>

#include <sodium.h>

namespace TestSigning {
namespace {
const unsigned char *bytes(const QByteArray &data)
{
    return reinterpret_cast<const unsigned char *>(data.constData());
}

QByteArray detached(const KeyPair &key, const QByteArray &message)
{
    QByteArray signature(crypto_sign_BYTES, '\0');
    crypto_sign_detached(reinterpret_cast<unsigned char *>(signature.data()), nullptr, bytes(message),
                         size_t(message.size()), bytes(key.secretKey));
    return signature;
}
} // namespace

QString KeyPair::publicKeyLine() const
{
    return QString::fromLatin1((QByteArray("Ed") + keyId + publicKey).toBase64());
}

KeyPair makeKeyPair()
{
    if (sodium_init() < 0)
        qFatal("libsodium cannot start");
    KeyPair key;
    key.publicKey.resize(crypto_sign_PUBLICKEYBYTES);
    key.secretKey.resize(crypto_sign_SECRETKEYBYTES);
    crypto_sign_keypair(reinterpret_cast<unsigned char *>(key.publicKey.data()),
                        reinterpret_cast<unsigned char *>(key.secretKey.data()));
    key.keyId.resize(8);
    randombytes_buf(key.keyId.data(), size_t(key.keyId.size()));
    return key;
}

const KeyPair &releaseKey()
{
    static const KeyPair key = [] {
        KeyPair made = makeKeyPair();
        qputenv("SUPPORTKIT_RELEASE_KEYS", made.publicKeyLine().toLatin1());
        return made;
    }();
    return key;
}

QByteArray sign(const KeyPair &key, const QByteArray &data, const QByteArray &trustedComment, bool prehashed)
{
    QByteArray message = data;
    if (prehashed) {
        message.resize(crypto_generichash_BYTES_MAX);
        crypto_generichash(reinterpret_cast<unsigned char *>(message.data()), size_t(message.size()),
                           bytes(data), size_t(data.size()), nullptr, 0);
    }
    const QByteArray signature = detached(key, message);
    const QByteArray global = detached(key, signature + trustedComment);
    return "untrusted comment: signature from a test key\n" +
           (QByteArray(prehashed ? "ED" : "Ed") + key.keyId + signature).toBase64() +
           "\ntrusted comment: " + trustedComment + '\n' + global.toBase64() + '\n';
}

QByteArray trustedComment(const QString &fileName, const QString &version)
{
    return "file:" + fileName.toUtf8() + "\tversion:" + version.toUtf8();
}

QByteArray signRelease(const QByteArray &data, const QString &fileName, const QString &version)
{
    return sign(releaseKey(), data, trustedComment(fileName, version));
}

QByteArray downloadList(const QString &version, const QByteArray &program)
{
    return "[Downloads]\r\npawnsketch.exe=" + version.toUtf8() + "\r\npawnsketch.exe.sha256=" +
           QCryptographicHash::hash(program, QCryptographicHash::Sha256).toHex() +
           "\r\npawnsketch.exe.size=" + QByteArray::number(program.size()) + "\r\n";
}
} // namespace TestSigning
