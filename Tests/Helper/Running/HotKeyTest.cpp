// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/HotKeyFixture.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

class HotKeyProgramTest : public HotKeyFixture
{
protected:
    bool waitForItsEnd(const ChildProcess &helper) const
    {
        return waitUntil([&] { return !hasLauncher(helper); });
    }
};

} // namespace

TEST_F(HotKeyProgramTest, ItOpensTheLauncherAtThePointerAndThePresetIsCreatedByTheKeyboard)
{
    store(with(controlAltP));
    FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    const QPoint pointer(400, 300);
    screen_.moveMouse(pointer);
    screen_.typeKey(typedControlAltP);
    ASSERT_TRUE(waitForLauncher(*helper));
    const QRect place = screen_.placeOf(screen_.windowsOf(helper->pid()).constFirst());
    constexpr int frame = 40;
    EXPECT_TRUE(QRect(pointer, QSize(frame, frame)).contains(place.topLeft()));
    screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("ters")});
    screen_.typeKey(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return !desktop.shown().isEmpty(); }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
    EXPECT_FALSE(hasLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, ItIsHeardWhateverLocksAreOn)
{
    store(with(controlAltP));
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    // With the first, with both, with the second.
    for (const char *lock : {"Caps_Lock", "Num_Lock", "Caps_Lock"}) {
        screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("key"), QString::fromLatin1(lock)});
        screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("key"), typedControlAltP});
        EXPECT_TRUE(waitForLauncher(*helper)) << lock;
        screen_.typeKey(QStringLiteral("Escape"));
        EXPECT_TRUE(waitForItsEnd(*helper)) << lock;
    }
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, ItFollowsTheSettings)
{
    store(with(controlAltP));
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    storeAndPost(with(controlF12));
    ASSERT_TRUE(waitUntilHeard(*helper, 2));
    screen_.typeKey(typedControlF12);
    ASSERT_TRUE(waitForLauncher(*helper));
    screen_.typeKey(QStringLiteral("Escape"));
    ASSERT_TRUE(waitForItsEnd(*helper));
    storeAndPost(with({}));
    ASSERT_TRUE(waitForLog(*helper, "there is no hot key"));
    // Another one may have it now.
    const auto other = startOther(controlF12);
    screen_.typeKey(typedControlF12);
    ASSERT_TRUE(waitForLauncher(*other));
    EXPECT_FALSE(hasLauncher(*helper));
    expectEndOf(*other);
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, OneThatAnotherProgramHasIsLeftToIt)
{
    store(with(controlF12));
    const auto other = startOther(controlF12);
    const auto helper = start();
    EXPECT_TRUE(waitForLog(*helper, "another program has it"));
    EXPECT_TRUE(waitForLog(*helper, "there is no way to hear of the hot key here"));
    screen_.typeKey(typedControlF12);
    EXPECT_TRUE(waitForLauncher(*other));
    EXPECT_FALSE(hasLauncher(*helper));
    expectEndOf(*helper);
    expectEndOf(*other);
}

TEST_F(HotKeyProgramTest, WhileAnotherIsRecordedItIsLeftAlone)
{
    store(with(controlF12));
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    post(QNBHotKeyIsBeingRecordedNotification);
    ASSERT_TRUE(waitForLog(*helper, "is left to who records one"));
    {
        // Settings that change meanwhile count afterwards.
        storeAndPost(with(controlAltP));
        ASSERT_TRUE(waitForLog(*helper, "presets in the menu", 2));
        // The recorder says so every two seconds. One that is silent for six is taken for dead.
        post(QNBHotKeyIsBeingRecordedNotification);
        const auto other = startOther(controlF12);
        post(QNBHotKeyIsBeingRecordedNotification);
        screen_.typeKey(typedControlF12);
        ASSERT_TRUE(waitForLauncher(*other));
        EXPECT_FALSE(hasLauncher(*helper));
        post(QNBHotKeyIsBeingRecordedNotification);
        expectEndOf(*other);
        EXPECT_EQ(helper->errors().count("the hot key is heard by"), 1);
    }
    post(QNBHotKeyRecordingEndedNotification);
    ASSERT_TRUE(waitUntilHeard(*helper, 2));
    screen_.typeKey(typedControlAltP);
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, OneOfAnEarlierVersionIsHeardByTheKeyOfItsCharacter)
{
    // Z, whose key is in the place of the US Y in Germany.
    store(with({KeyCodes::commandFlag | KeyCodes::optionFlag, 6, true}));
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("de")});
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    for (const char *key : {"ctrl+alt+z", "ctrl+alt+y"}) {
        screen_.typeKey(QString::fromLatin1(key));
        EXPECT_TRUE(waitForLauncher(*helper)) << key;
        screen_.typeKey(QStringLiteral("Escape"));
        ASSERT_TRUE(waitForItsEnd(*helper));
    }
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, ItEndsWithTheLauncherOpen)
{
    store(with(controlAltP));
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    screen_.typeKey(typedControlAltP);
    ASSERT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}
