// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Keyboard/WaylandKeymap.h"

#include "Keyboard/KeyboardLayout.h"
#include "Tests/Keyboard/FakeCompositor.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

namespace {

class WaylandKeymapTest : public ::testing::Test
{
protected:
    QTemporaryDir folder_;
};

} // namespace

TEST_F(WaylandKeymapTest, TheDisplayTellsOfItsKeymap)
{
    const KeyboardLayout german = KeyboardLayout::named(QStringLiteral("de"));
    const FakeCompositor compositor(folder_.path(), german.keymapText());
    const QByteArray text = WaylandKeymap::text(compositor.socketPath());
    EXPECT_EQ(text, compositor.keymap());
    EXPECT_EQ(KeyboardLayout::ofKeymap(text).symbol(KEY_Y), quint32('z'));
}

TEST_F(WaylandKeymapTest, ADisplayWithoutAKeyboardHasNone)
{
    const FakeCompositor compositor(folder_.path(), {});
    EXPECT_EQ(WaylandKeymap::text(compositor.socketPath()), QByteArray());
}

TEST_F(WaylandKeymapTest, NoDisplayHasNone)
{
    EXPECT_EQ(WaylandKeymap::text(folder_.filePath(QStringLiteral("none"))), QByteArray());
    EXPECT_EQ(KeyboardLayout::ofKeymap("no keymap").symbol(KEY_Y), 0U);
}
