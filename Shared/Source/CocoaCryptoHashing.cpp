// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/CocoaCryptoHashing.h"

#include "Platform/LineText.h"

// SHA1_Init() and MD5() are marked deprecated since libcrypto 3.0 as algorithms, not as interfaces;
// identifiers need no cryptographic strength.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <QLibrary>
#include <memory>
#include <openssl/md5.h>
#include <openssl/sha.h>

namespace CocoaCryptoHashing {

/// The functions of libcrypto.
struct Functions
{
    decltype(&::SHA1_Init) sha1Init;
    decltype(&::SHA1_Update) sha1Update;
    decltype(&::SHA1_Final) sha1Final;
    decltype(&::MD5) md5;
};

/// The library is loaded for the first digest, and not with the program: thousands of its symbols are bound
/// then, for which every window waited, while the first digest is wanted long after it is shown.
static const Functions &libcrypto()
{
    static const Functions functions = [] {
        QLibrary library(QStringLiteral("crypto"), QStringLiteral(QUENBY_LIBCRYPTO_VERSION));
        library.setLoadHints(QLibrary::PreventUnloadHint);
        const Functions found{
            reinterpret_cast<decltype(Functions::sha1Init)>(library.resolve("SHA1_Init")),
            reinterpret_cast<decltype(Functions::sha1Update)>(library.resolve("SHA1_Update")),
            reinterpret_cast<decltype(Functions::sha1Final)>(library.resolve("SHA1_Final")),
            reinterpret_cast<decltype(Functions::md5)>(library.resolve("MD5"))};
        if (!found.sha1Init || !found.sha1Update || !found.sha1Final || !found.md5)
            qFatal("libcrypto cannot be used: %s", qPrintable(lineText(library.errorString())));
        return found;
    }();
    return functions;
}

static QString hexadecimal(const QByteArray &digest)
{
    return QString::fromLatin1(digest.toHex());
}

static void update(SHA_CTX &state, QByteArrayView bytes)
{
    libcrypto().sha1Update(&state, bytes.data(), static_cast<std::size_t>(bytes.size()));
}

/// Of what \a state has seen, and \a rest after it.
static SHA1Digest finish(SHA_CTX state, QByteArrayView rest)
{
    SHA1Digest digest;
    static_assert(digest.size() == SHA_DIGEST_LENGTH);
    update(state, rest);
    libcrypto().sha1Final(digest.data(), &state);
    return digest;
}

/// SHA1() would set up the whole library for the first digest, its settings file included, and look the
/// algorithm up anew for each.
SHA1Digest sha1Digest(QByteArrayView bytes)
{
    SHA_CTX state;
    libcrypto().sha1Init(&state);
    return finish(state, bytes);
}

SHA1Beginning::SHA1Beginning(QByteArrayView beginning)
{
    const auto state = std::make_shared<SHA_CTX>();
    libcrypto().sha1Init(state.get());
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
    libcrypto().md5(reinterpret_cast<const unsigned char *>(bytes.data()),
                    static_cast<std::size_t>(bytes.size()), reinterpret_cast<unsigned char *>(digest.data()));
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
