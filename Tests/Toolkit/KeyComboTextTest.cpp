// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboText.h"

#include <gtest/gtest.h>

TEST(KeyComboTextTest, WordsForPeople)
{
    const KeyboardLayout us = KeyboardLayout::named(QStringLiteral("us"));
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag | KeyCodes::shiftFlag, 45}, us), u"Ctrl+Shift+N");
    EXPECT_EQ(keyComboText({KeyCodes::controlFlag, 122}, us), u"Meta+F1");
    EXPECT_EQ(keyComboText({}, us), u"");
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag, 0}, us), u"Ctrl+A");
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag, 0}, KeyboardLayout::named(QStringLiteral("fr"))),
              u"Ctrl+Q");
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag, 200}, us), u"Key 200");
}
