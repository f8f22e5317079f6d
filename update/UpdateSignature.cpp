#include "update/UpdateSignature.h"

#include <QFile>
#include <QScopeGuard>

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <memory>

namespace tallowmere {

namespace {

constexpr qsizetype kPublicKeySize = 32;
constexpr qsizetype kSignatureSize = 64;

struct KeyFree {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct ContextFree {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

const unsigned char* bytes(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char*>(view.data());
}

} // namespace

bool verifyEd25519(QByteArrayView message, QByteArrayView signature, QByteArrayView publicKey)
{
    if (signature.size() != kSignatureSize || publicKey.size() != kPublicKeySize)
        return false;
    const std::unique_ptr<EVP_PKEY, KeyFree> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes(publicKey), kPublicKeySize));
    const std::unique_ptr<EVP_MD_CTX, ContextFree> context(EVP_MD_CTX_new());
    if (!key || !context)
        return false;
    // Ed25519 hashes internally, so there is no digest to name and the message goes in whole.
    if (EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) != 1)
        return false;
    return EVP_DigestVerify(context.get(), bytes(signature), kSignatureSize, bytes(message),
                            static_cast<size_t>(message.size()))
        == 1;
}

bool verifyFileSignature(const QString& path, QByteArrayView signature, QByteArrayView publicKey)
{
    // This runs on a pool thread, which OpenSSL gives an error state of its own that it would
    // otherwise keep until the thread ends; hand it back once done.
    const auto releaseThreadState = qScopeGuard([] { OPENSSL_thread_stop(); });
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const qint64 size = file.size();
    if (size == 0)
        return verifyEd25519({}, signature, publicKey);
    // The archive lies in a folder only we can write to, so nobody changes it between this
    // check and the unpacking.
    const uchar* data = file.map(0, size, QFileDevice::MapPrivateOption);
    if (!data)
        return false;
    const bool valid = verifyEd25519(QByteArrayView(data, size), signature, publicKey);
    file.unmap(const_cast<uchar*>(data));
    return valid;
}

QByteArray decodePublicKey(QByteArrayView base64)
{
    const auto decoded = QByteArray::fromBase64Encoding(base64.toByteArray(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || decoded.decoded.size() != kPublicKeySize)
        return {};
    return decoded.decoded;
}

} // namespace tallowmere
