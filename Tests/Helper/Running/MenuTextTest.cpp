// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/MenuText.h"

#include <gtest/gtest.h>

using MenuText::Reader;

TEST(MenuTextTest, AnAmpersandIsNoAccessKey)
{
    EXPECT_EQ(MenuText::forName(QStringLiteral("A & B && C"), Reader::Library),
              QStringLiteral("A && B &&&& C"));
}

TEST(MenuTextTest, AnUnderscoreInATrayIsNoAccessKey)
{
    EXPECT_EQ(MenuText::forName(QStringLiteral("my_preset"), Reader::Tray), QStringLiteral("my__preset"));
    EXPECT_EQ(MenuText::forName(QStringLiteral("my_preset"), Reader::Library), QStringLiteral("my_preset"));
}

TEST(MenuTextTest, OnlyTheMarkInFrontIsTurnedOnTheWayToATray)
{
    EXPECT_EQ(MenuText::forName(QStringLiteral("A & B"), Reader::Tray), QStringLiteral("&A & B"));
}

TEST(MenuTextTest, ANameIsOneLineThatShowsEveryCharacter)
{
    EXPECT_EQ(MenuText::forName(QStringLiteral("a\nb\tc \u202Ed\u009B"), Reader::Library),
              QStringLiteral("a␊b␉c <U+202E>d<U+009B>"));
}
