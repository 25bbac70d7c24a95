#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

// Ed25519 signatures in minisign's formats: the public key line and the ".minisig" file.
// Both come from outside (a build setting, the server), so every length is checked before
// anything is decoded.
namespace Minisign {

constexpr int kKeyIdSize = 8;
constexpr int kPublicKeySize = 32;
constexpr int kSignatureSize = 64;
// A signature file is four short lines; anything much longer is not one.
constexpr qsizetype kMaxSignatureFile = 4096;
constexpr qsizetype kMaxTrustedComment = 1024;

struct PublicKey
{
    QByteArray keyId; // kKeyIdSize bytes, as stored
    QByteArray key;   // kPublicKeySize bytes
};

struct Signature
{
    bool prehashed = false; // "ED": the signature is over the file's BLAKE2b-512
    QByteArray keyId;
    QByteArray signature;
    QByteArray trustedComment; // after "trusted comment: ", without the line end
    QByteArray globalSignature;
};

// One key line: base64 of "Ed", key id and key.
bool parsePublicKey(QByteArrayView line, PublicKey &key);
// Keys separated by line breaks or blanks; "untrusted comment:" lines and unusable words are
// skipped.
QList<PublicKey> parsePublicKeys(const QString &text);

bool parseSignature(QByteArrayView file, Signature &signature);

enum class Result
{
    Ok,
    UnknownKey,        // made with a key that is not in the list
    SignatureMismatch, // the file or the trusted comment was changed after signing
};
Result verify(QByteArrayView data, const Signature &signature, const QList<PublicKey> &keys);

// The value of field name in a trusted comment of tab-separated "name:value" fields;
// found false when the comment has no such field.
QString trustedField(const QByteArray &trustedComment, const QString &name, bool *found);

} // namespace Minisign
