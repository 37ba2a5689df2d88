// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Gestalt.h"

#include <gtest/gtest.h>

TEST(GestaltTest, ProvidesThePluginInterfaceOfTenFiveEight)
{
    EXPECT_EQ(Gestalt::systemVersion(), 0x1058);
}
