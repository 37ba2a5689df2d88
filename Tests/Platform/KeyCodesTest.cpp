// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/KeyCodes.h"

#include <gtest/gtest.h>

namespace {

TEST(KeyCodesTest, NamedKeysHaveTheirCodes)
{
    EXPECT_EQ(KeyCodes::fromQt(QKeyCombination(Qt::Key_Return))->code, 36);
    EXPECT_EQ(KeyCodes::fromQt(QKeyCombination(Qt::Key_Backspace))->code, 51);
    EXPECT_EQ(KeyCodes::fromQt(QKeyCombination(Qt::Key_Delete))->code, 117);
    EXPECT_FALSE(KeyCodes::fromQt(QKeyCombination(Qt::Key_Shift)));
    EXPECT_FALSE(KeyCodes::fromQt(QKeyCombination(Qt::Key_VolumeUp)));
}

TEST(KeyCodesTest, ModifiersChangeNamesAcrossMachines)
{
    EXPECT_EQ(KeyCodes::fromQt(Qt::ControlModifier | Qt::Key_N)->flags, KeyCodes::commandFlag);
    EXPECT_EQ(KeyCodes::fromQt(Qt::MetaModifier | Qt::Key_N)->flags, KeyCodes::controlFlag);
    EXPECT_EQ(KeyCodes::fromQt(Qt::AltModifier | Qt::Key_N)->flags, KeyCodes::optionFlag);
    EXPECT_EQ(KeyCodes::fromQt(Qt::ShiftModifier | Qt::Key_N)->flags, KeyCodes::shiftFlag);
}

TEST(KeyCodesTest, EveryCodeComesBack)
{
    int known = 0;
    for (qint64 code = 0; code < 256; ++code) {
        const KeyCombo combo{KeyCodes::commandFlag | KeyCodes::shiftFlag, code};
        const std::optional<QKeyCombination> keys = KeyCodes::toQt(combo);
        if (!keys)
            continue;
        ++known;
        EXPECT_EQ(KeyCodes::fromQt(*keys), combo) << "code " << code;
    }
    EXPECT_EQ(known, 100);
}

TEST(KeyCodesTest, KeypadKeysAreOtherKeys)
{
    EXPECT_EQ(KeyCodes::fromQt(Qt::KeypadModifier | Qt::Key_1)->code, 83);
    EXPECT_EQ(KeyCodes::fromQt(QKeyCombination(Qt::Key_1))->code, 18);
    EXPECT_EQ(KeyCodes::fromQt(Qt::KeypadModifier | Qt::Key_Left)->code, 123);
}

TEST(KeyCodesTest, NoCombinationIsEmpty)
{
    EXPECT_TRUE((KeyCombo{0, 0}.isEmpty()));
    EXPECT_TRUE((KeyCombo{KeyCodes::commandFlag, -1}.isEmpty()));
    EXPECT_FALSE((KeyCombo{0, 122}.isEmpty()));
}

} // namespace
