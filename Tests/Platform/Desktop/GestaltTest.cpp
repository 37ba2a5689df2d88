// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Gestalt.h"

#include <gtest/gtest.h>

TEST(GestaltTest, ADesktopOfTodayIsNewerThanTheLastSystemThatLoadsContextualMenuPlugins)
{
    constexpr qint32 lastOfTenFive = 0x105F;
    EXPECT_GT(Gestalt::systemVersion(), lastOfTenFive);
}
