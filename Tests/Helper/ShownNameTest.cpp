// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ShownName.h"

#include "Platform/Desktop/DesktopFolders.h"

#include <gtest/gtest.h>

TEST(ShownNameTest, ALongNameIsShortenedInItsMiddleAndNoCharacterIsCut)
{
    const QString face = QString::fromUtf8("\xf0\x9f\x98\x80");
    for (qsizetype offset = 0; offset < 2; ++offset) {
        const QString text = ShownName::ofName(QString(offset, u'x') + face.repeated(200));
        EXPECT_LE(text.size(), ShownName::longest);
        EXPECT_TRUE(text.contains(u'…'));
        EXPECT_TRUE(text.isValidUtf16());
    }
    const QString fits(ShownName::longest, u'x');
    EXPECT_EQ(ShownName::ofName(fits), fits);
}

TEST(ShownNameTest, TheHomeFolderIsWrittenShortAndOthersWhole)
{
    const QString home = DesktopFolders::home();
    EXPECT_EQ(ShownName::ofFolder(home), QStringLiteral("~"));
    EXPECT_EQ(ShownName::ofFolder(home + QStringLiteral("/a\nb")), QStringLiteral("~/a␊b"));
    EXPECT_EQ(ShownName::ofFolder(home + QStringLiteral("-other")), home + QStringLiteral("-other"));
}
