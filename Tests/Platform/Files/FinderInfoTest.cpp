// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FinderInfo.h"

#include "Tests/Platform/Files/FinderFixture.h"

#include <gtest/gtest.h>

TEST(FinderInfo, OfNothingIsThirtyTwoZeros)
{
    EXPECT_EQ(FinderInfo().attribute(), QByteArray(32, '\0'));
}

TEST(FinderInfo, ReadsEachFieldAtItsOffsetHighByteFirst)
{
    const FinderInfo information(numberedBytes());
    EXPECT_EQ(information.type(), 0x01020304U);
    EXPECT_EQ(information.creator(), 0x05060708U);
    EXPECT_EQ(information.flags(), 0x090A);
    EXPECT_EQ(information.vertical(), 0x0B0C);
    EXPECT_EQ(information.horizontal(), 0x0D0E);
}

TEST(FinderInfo, WritesEachFieldAtItsOffsetHighByteFirst)
{
    FinderInfo information;
    information.setType(0x54455854);    // TEXT
    information.setCreator(0x74747874); // ttxt
    information.setFlags(0x8421);
    information.setVertical(-2);
    information.setHorizontal(300);
    EXPECT_EQ(information.attribute().first(16), QByteArray("TEXTttxt\x84\x21\xFF\xFE\x01\x2C\0\0", 16));
}

TEST(FinderInfo, WritingAFieldLeavesAllOtherBytes)
{
    const auto changedBytes = [](auto change) {
        FinderInfo information(numberedBytes());
        change(information);
        QList<qsizetype> places;
        for (qsizetype place = 0; place < 32; ++place) {
            if (information.attribute()[place] != numberedBytes()[place])
                places.append(place);
        }
        return places;
    };
    using Places = QList<qsizetype>;
    EXPECT_EQ(changedBytes([](FinderInfo &i) { i.setType(0xFFFFFFFF); }), (Places{0, 1, 2, 3}));
    EXPECT_EQ(changedBytes([](FinderInfo &i) { i.setCreator(0xFFFFFFFF); }), (Places{4, 5, 6, 7}));
    EXPECT_EQ(changedBytes([](FinderInfo &i) { i.setFlags(0xFFFF); }), (Places{8, 9}));
    EXPECT_EQ(changedBytes([](FinderInfo &i) { i.setVertical(-1); }), (Places{10, 11}));
    EXPECT_EQ(changedBytes([](FinderInfo &i) { i.setHorizontal(-1); }), (Places{12, 13}));
}

TEST(FinderInfo, AShortAttributeGoesOnWithZeros)
{
    for (qsizetype length = 0; length < 32; ++length) {
        const QByteArray start = numberedBytes().first(length);
        EXPECT_EQ(FinderInfo(start).attribute(), start + QByteArray(32 - length, '\0')) << length;
    }
}

TEST(FinderInfo, ALongAttributeIsKeptToItsEnd)
{
    const QByteArray tail("more than there should be");
    FinderInfo information(numberedBytes() + tail);
    information.setFlags(0);
    EXPECT_EQ(information.attribute().sliced(32), tail);
}

TEST(FinderInfo, CopiesShareNothing)
{
    const FinderInfo before(numberedBytes());
    FinderInfo after = before;
    after.setFlags(0);
    EXPECT_EQ(before.attribute(), numberedBytes());
}
