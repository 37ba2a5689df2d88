// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/CocoaCryptoHashing.h"

// SHA1_Init() and MD5() are marked deprecated since libcrypto 3.0 as algorithms, not as interfaces;
// identifiers need no cryptographic strength.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <memory>
#include <openssl/md5.h>
#include <openssl/sha.h>

namespace CocoaCryptoHashing {

static QString hexadecimal(const QByteArray &digest)
{
    return QString::fromLatin1(digest.toHex());
}

static void update(SHA_CTX &state, QByteArrayView bytes)
{
    SHA1_Update(&state, bytes.data(), static_cast<std::size_t>(bytes.size()));
}

/// Of what \a state has seen, and \a rest after it.
static SHA1Digest finish(SHA_CTX state, QByteArrayView rest)
{
    SHA1Digest digest;
    static_assert(digest.size() == SHA_DIGEST_LENGTH);
    update(state, rest);
    SHA1_Final(digest.data(), &state);
    return digest;
}

/// SHA1() would set up the whole library for the first digest, its settings file included, and look the
/// algorithm up anew for each.
SHA1Digest sha1Digest(QByteArrayView bytes)
{
    SHA_CTX state;
    SHA1_Init(&state);
    return finish(state, bytes);
}

SHA1Beginning::SHA1Beginning(QByteArrayView beginning)
{
    const auto state = std::make_shared<SHA_CTX>();
    SHA1_Init(state.get());
    update(*state, beginning);
    state_ = state;
}

SHA1Digest SHA1Beginning::digestWith(QByteArrayView rest) const
{
    return finish(*state_, rest);
}

QByteArray sha1Hash(QByteArrayView bytes)
{
    const SHA1Digest digest = sha1Digest(bytes);
    return {reinterpret_cast<const char *>(digest.data()), static_cast<qsizetype>(digest.size())};
}

QByteArray md5Hash(QByteArrayView bytes)
{
    QByteArray digest(MD5_DIGEST_LENGTH, Qt::Uninitialized);
    MD5(reinterpret_cast<const unsigned char *>(bytes.data()), static_cast<std::size_t>(bytes.size()),
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
