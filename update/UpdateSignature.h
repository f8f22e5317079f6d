#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace tallowmere {

// Whether `signature` (64 raw bytes) is an Ed25519 signature of `message` made with the
// private half of `publicKey` (32 raw bytes). Anything of the wrong size is simply not valid.
bool verifyEd25519(QByteArrayView message, QByteArrayView signature, QByteArrayView publicKey);

// The same over a whole file, read through a private mapping. False when it cannot be read.
bool verifyFileSignature(const QString& path, QByteArrayView signature, QByteArrayView publicKey);

// The raw key behind a base64 text as CMake passes it; empty when it is not 32 bytes of base64.
QByteArray decodePublicKey(QByteArrayView base64);

} // namespace tallowmere
