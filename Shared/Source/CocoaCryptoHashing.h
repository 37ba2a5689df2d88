// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>

/// SHA-1 and MD5 digests of bytes, or of a string's UTF-8 form: raw, or as lowercase hexadecimal characters
/// in digest order. The digests are libcrypto's.
namespace CocoaCryptoHashing {

using SHA1Digest = std::array<std::uint8_t, 20>;

/// sha1Hash() without an allocation, for many short inputs.
SHA1Digest sha1Digest(QByteArrayView bytes);

QByteArray sha1Hash(QByteArrayView bytes);
QString sha1HexHash(QByteArrayView bytes);
QByteArray md5Hash(QByteArrayView bytes);
QString md5HexHash(QByteArrayView bytes);

QByteArray sha1Hash(const QString &string);
QString sha1HexHash(const QString &string);
QByteArray md5Hash(const QString &string);
QString md5HexHash(const QString &string);

} // namespace CocoaCryptoHashing
