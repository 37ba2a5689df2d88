// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/CocoaCryptoHashing.h"

// MD5() is marked deprecated since libcrypto 3.0 as an algorithm, not as an interface; identifiers need no
// cryptographic strength.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <memory>
#include <openssl/evp.h>
#include <openssl/md5.h>
#include <openssl/objects.h>
#include <openssl/sha.h>

namespace CocoaCryptoHashing {

static const unsigned char *unsignedBytes(QByteArrayView bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.data());
}

static QString hexadecimal(const QByteArray &digest)
{
    return QString::fromLatin1(digest.toHex());
}

/// SHA1() looks the algorithm up anew at each call, which takes longer than the digest of a short input: 30
/// ms instead of 12 ms for 100,000 names.
SHA1Digest sha1Digest(QByteArrayView bytes)
{
    static const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> algorithm(
        EVP_MD_fetch(nullptr, SN_sha1, nullptr), EVP_MD_free);
    SHA1Digest digest;
    static_assert(digest.size() == SHA_DIGEST_LENGTH);
    const auto size = static_cast<std::size_t>(bytes.size());
    if (!algorithm || !EVP_Digest(bytes.data(), size, digest.data(), nullptr, algorithm.get(), nullptr))
        SHA1(unsignedBytes(bytes), size, digest.data());
    return digest;
}

SHA1Beginning::SHA1Beginning(QByteArrayView beginning)
{
    const auto state = std::make_shared<SHA_CTX>();
    SHA1_Init(state.get());
    SHA1_Update(state.get(), beginning.data(), static_cast<std::size_t>(beginning.size()));
    state_ = state;
}

SHA1Digest SHA1Beginning::digestWith(QByteArrayView rest) const
{
    SHA_CTX state = *state_;
    SHA1Digest digest;
    SHA1_Update(&state, rest.data(), static_cast<std::size_t>(rest.size()));
    SHA1_Final(digest.data(), &state);
    return digest;
}

QByteArray sha1Hash(QByteArrayView bytes)
{
    QByteArray digest(SHA_DIGEST_LENGTH, Qt::Uninitialized);
    SHA1(unsignedBytes(bytes), static_cast<std::size_t>(bytes.size()),
         reinterpret_cast<unsigned char *>(digest.data()));
    return digest;
}

QByteArray md5Hash(QByteArrayView bytes)
{
    QByteArray digest(MD5_DIGEST_LENGTH, Qt::Uninitialized);
    MD5(unsignedBytes(bytes), static_cast<std::size_t>(bytes.size()),
        reinterpret_cast<unsigned char *>(digest.data()));
    return digest;
}

QString sha1HexHash(QByteArrayView bytes)
{
    return hexadecimal(sha1Hash(bytes));
}
QString md5HexHash(QByteArrayView bytes)
{
    return hexadecimal(md5Hash(bytes));
}

QByteArray sha1Hash(const QString &string)
{
    return sha1Hash(QByteArrayView(string.toUtf8()));
}
QString sha1HexHash(const QString &string)
{
    return sha1HexHash(QByteArrayView(string.toUtf8()));
}
QByteArray md5Hash(const QString &string)
{
    return md5Hash(QByteArrayView(string.toUtf8()));
}
QString md5HexHash(const QString &string)
{
    return md5HexHash(QByteArrayView(string.toUtf8()));
}

} // namespace CocoaCryptoHashing
