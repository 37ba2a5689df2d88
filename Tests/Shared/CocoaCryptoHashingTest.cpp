// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/CocoaCryptoHashing.h"

#include <gtest/gtest.h>

using namespace CocoaCryptoHashing;

TEST(CocoaCryptoHashing, EmptyStringHashesToTheStandardEmptyMessageDigests)
{
    EXPECT_EQ(sha1HexHash(QString()), QStringLiteral("da39a3ee5e6b4b0d3255bfef95601890afd80709"));
    EXPECT_EQ(md5HexHash(QString()), QStringLiteral("d41d8cd98f00b204e9800998ecf8427e"));
}

TEST(CocoaCryptoHashing, DigestsOfKnownMessages)
{
    EXPECT_EQ(sha1HexHash(QStringLiteral("abc")), QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d"));
    EXPECT_EQ(md5HexHash(QStringLiteral("abc")), QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
    EXPECT_EQ(sha1HexHash(QByteArrayView("abc")), sha1HexHash(QStringLiteral("abc")));
    EXPECT_EQ(md5HexHash(QByteArrayView("abc")), md5HexHash(QStringLiteral("abc")));
}

TEST(CocoaCryptoHashing, StringsAreHashedAsUtf8)
{
    const QString text = QStringLiteral("Bücher 📁");
    EXPECT_EQ(sha1HexHash(text), sha1HexHash(QByteArrayView(text.toUtf8())));
    EXPECT_EQ(md5Hash(text), md5Hash(QByteArrayView(text.toUtf8())));
}

TEST(CocoaCryptoHashing, RawDigestsHaveTheirFixedSizesAndKeepNulBytes)
{
    const QByteArray withNul("a\0b", 3);
    EXPECT_EQ(sha1Hash(QByteArrayView(withNul)).size(), 20);
    EXPECT_EQ(md5Hash(QByteArrayView(withNul)).size(), 16);
    EXPECT_NE(sha1Hash(QByteArrayView(withNul)), sha1Hash(QByteArrayView("a", 1)));
    EXPECT_EQ(sha1HexHash(QByteArrayView(withNul)),
              QString::fromLatin1(sha1Hash(QByteArrayView(withNul)).toHex()));
}

TEST(CocoaCryptoHashing, DigestWithoutAnAllocationIsTheSame)
{
    for (const QByteArray &bytes : {QByteArray(), QByteArray("abc"), QByteArray(1000, 'x')}) {
        const SHA1Digest digest = sha1Digest(bytes);
        EXPECT_EQ(QByteArray(reinterpret_cast<const char *>(digest.data()), qsizetype(digest.size())),
                  sha1Hash(QByteArrayView(bytes)));
    }
}
