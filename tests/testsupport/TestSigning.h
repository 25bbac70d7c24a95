#pragma once

#include <QByteArray>
#include <QString>

// Release keys and minisign signatures made at run time, so that no secret is kept in the
// repository and the tests need no minisign program (they run under Wine too).
namespace TestSigning {
struct KeyPair
{
    QByteArray keyId;     // 8 bytes
    QByteArray publicKey; // 32 bytes
    QByteArray secretKey; // libsodium's 64 bytes
    // The key line of a minisign public key file.
    QString publicKeyLine() const;
};
KeyPair makeKeyPair();

// The key this test program's servers sign with; the first call makes it and puts it in
// SUPPORTKIT_RELEASE_KEYS.
const KeyPair &releaseKey();

// A ".minisig" file of data; prehashed as minisign signs by default, else plain.
QByteArray sign(const KeyPair &key, const QByteArray &data, const QByteArray &trustedComment,
                bool prehashed = true);
// "file:<name>\tversion:<version>"
QByteArray trustedComment(const QString &fileName, const QString &version);
// data signed with releaseKey() for fileName announcing version.
QByteArray signRelease(const QByteArray &data, const QString &fileName, const QString &version);
// A download list for version that names program's size and SHA-256.
QByteArray downloadList(const QString &version, const QByteArray &program);
} // namespace TestSigning
