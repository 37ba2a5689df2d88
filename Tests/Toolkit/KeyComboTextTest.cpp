// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/KeyComboText.h"

#include <gtest/gtest.h>

TEST(KeyComboTextTest, WordsForPeople)
{
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag | KeyCodes::shiftFlag, 45}), u"Ctrl+Shift+N");
    EXPECT_EQ(keyComboText({KeyCodes::controlFlag, 122}), u"Meta+F1");
    EXPECT_EQ(keyComboText({}), u"");
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag, 0}), u"Ctrl+A");
    EXPECT_EQ(keyComboText({KeyCodes::commandFlag, 200}), u"Key 200");
}
