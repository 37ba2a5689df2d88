// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>

struct SHAstate_st;

/// SHA-1 and MD5 digests of bytes, or of a string's UTF-8 form: raw, or as lowercase hexadecimal characters
/// in digest order. The digests are libcrypto's.
namespace CocoaCryptoHashing {

using SHA1Digest = std::array<std::uint8_t, 20>;

/// sha1Hash() without an allocation, for many short inputs.
SHA1Digest sha1Digest(QByteArrayView bytes);

/// The SHA-1 digest of texts that begin alike: what they begin with is digested once.
class SHA1Beginning
{
public:
    explicit SHA1Beginning(QByteArrayView beginning);
    SHA1Digest digestWith(QByteArrayView rest) const;

private:
    std::shared_ptr<const SHAstate_st> state_;
};

QByteArray sha1Hash(QByteArrayView bytes);
QString sha1HexHash(QByteArrayView bytes);
QByteArray md5Hash(QByteArrayView bytes);
QString md5HexHash(QByteArrayView bytes);

QByteArray sha1Hash(const QString &string);
QString sha1HexHash(const QString &string);
QByteArray md5Hash(const QString &string);
QString md5HexHash(const QString &string);

} // namespace CocoaCryptoHashing
