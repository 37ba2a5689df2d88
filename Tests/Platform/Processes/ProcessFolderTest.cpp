// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ProcessFolder.h"

#include <gtest/gtest.h>

namespace {

/// As the kernel writes it: of process 700, started 4242 ticks after the system.
QByteArray statOf(const QByteArray &command, const QByteArray &state = "S", const QByteArray &threads = "1")
{
    return "700 (" + command + ") " + state + " 600 700 700 0 -1 4194304 95 0 0 0 11 22 33 44 20 0 " +
           threads +
           " 0 4242 2539520 139 18446744073709551615 1 1 0 0 0 0 0 4096 2 0 0 0 17 0 0 0 0 0 0 0 0 0 0 0 0 0 "
           "0\n";
}

} // namespace

TEST(ProcessStatusTest, ReadsParentStartAndState)
{
    const auto status = ProcessStatus::parse(statOf("QNBHelper"));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->parent, 600);
    EXPECT_EQ(status->startTime, 4242U);
    EXPECT_FALSE(status->isZombie);
}

TEST(ProcessStatusTest, ANameMayHoldAnything)
{
    for (const QByteArray &name :
         {QByteArray(") Z 1 (x"), QByteArray("a) S 1 2 3"), QByteArray("\n"), QByteArray(""),
          QByteArray(")))"), QByteArray("\xff\xfe"), QByteArray("0 0 0 0")}) {
        const auto status = ProcessStatus::parse(statOf(name));
        ASSERT_TRUE(status) << name.constData();
        EXPECT_EQ(status->parent, 600);
        EXPECT_EQ(status->startTime, 4242U);
        EXPECT_FALSE(status->isZombie);
    }
}

TEST(ProcessStatusTest, CutShortItIsRefusedOrUnderstoodInFull)
{
    const QByteArray whole = statOf(") (");
    const qsizetype enough = whole.indexOf(" 2539520") + 1;
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const auto status = ProcessStatus::parse(whole.first(length));
        EXPECT_TRUE(length >= enough || !status) << length;
        EXPECT_TRUE(!status || status->startTime == 4242U) << length;
    }
}

TEST(ProcessStatusTest, WhatIsNoNumberIsRefused)
{
    for (const QByteArray &number : {QByteArray(""), QByteArray("x"), QByteArray("-1"), QByteArray("42x"),
                                     QByteArray("99999999999999999999")}) {
        QByteArray stat = statOf("a");
        EXPECT_FALSE(ProcessStatus::parse(stat.replace(" 4242 ", " " + number + " "))) << number.constData();
    }
    EXPECT_FALSE(ProcessStatus::parse(statOf("a", "SS")));
    EXPECT_FALSE(ProcessStatus::parse(statOf("a", "")));
}

TEST(ProcessStatusTest, AZombieHasNoThreadThatRuns)
{
    EXPECT_TRUE(ProcessStatus::parse(statOf("a", "Z"))->isZombie);
    EXPECT_TRUE(ProcessStatus::parse(statOf("a", "X"))->isZombie);
    EXPECT_FALSE(ProcessStatus::parse(statOf("a", "Z", "2"))->isZombie);
    EXPECT_FALSE(ProcessStatus::parse(statOf("a", "T"))->isZombie);
    EXPECT_FALSE(ProcessStatus::parse(statOf(") Z 1", "S"))->isZombie);
}
