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

TEST(MenuTextTest, ALongNameIsShortenedInItsMiddleAndNoCharacterIsCut)
{
    const QString face = QString::fromUtf8("\xf0\x9f\x98\x80");
    for (qsizetype offset = 0; offset < 2; ++offset) {
        const QString text = MenuText::forName(QString(offset, u'x') + face.repeated(200), Reader::Library);
        EXPECT_LE(text.size(), MenuText::longest);
        EXPECT_TRUE(text.contains(u'…'));
        EXPECT_TRUE(text.isValidUtf16());
    }
    const QString fits(MenuText::longest, u'x');
    EXPECT_EQ(MenuText::forName(fits, Reader::Library), fits);
}
