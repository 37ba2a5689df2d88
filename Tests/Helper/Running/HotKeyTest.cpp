// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/KeyCodes.h"
#include "Platform/Mailbox.h"
#include "Platform/SessionBus.h"
#include "Shared/Source/QNBHelperState.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/FakeGlobalAccel.h"
#include "Tests/Helper/Running/FakePortal.h"
#include "Tests/Helper/Running/RunningFixture.h"
#include "Tests/Session/NotificationListener.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

constexpr QNBKeyCombo controlAltP{KeyCodes::commandFlag | KeyCodes::optionFlag, 35};
constexpr QNBKeyCombo controlF12{KeyCodes::commandFlag, 111};
const QString typedControlAltP = QStringLiteral("ctrl+alt+p");
const QString typedControlF12 = QStringLiteral("ctrl+F12");

using HotKeyState = QNBHelperState::HotKey;

class HotKeyProgramTest : public RunningFixture
{
protected:
    HotKeyProgramTest() { useTarget(); }

    QNBSettings with(const QNBKeyCombo &combo) const
    {
        QNBSettings result = settings();
        result.showMenubar = false;
        result.shortcutCombo = combo;
        return result;
    }
    /// Another user's helper, which has the hot key.
    std::unique_ptr<ChildProcess> startOther(const QNBKeyCombo &combo)
    {
        store(with(combo), otherHome_);
        auto other = startIn(environmentOf(otherHome_));
        EXPECT_TRUE(waitUntilHeard(*other));
        return other;
    }
    /// The windows are on an X screen all the same, as those of older programs are there.
    std::unique_ptr<ChildProcess> startInWaylandSession()
    {
        QProcessEnvironment wayland = environment();
        wayland.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
        auto helper = startIn(wayland);
        EXPECT_TRUE(waitUntil([this] { return isOnBus(); }));
        return helper;
    }
    /// What it says of itself.
    QNBHelperState state() const
    {
        SessionBus bus(bus_.address());
        std::optional<QNBHelperState> state;
        bool isKnown = false;
        const Mailbox mailbox;
        QNBHelperState::ask(bus, mailbox.bound<const std::optional<QNBHelperState> &>(
                                     [&](const std::optional<QNBHelperState> &answer) {
                                         state = answer;
                                         isKnown = true;
                                     }));
        EXPECT_TRUE(waitUntil([&] { return isKnown; }));
        EXPECT_TRUE(state);
        return state.value_or(QNBHelperState());
    }
    bool waitForState(HotKeyState expected) const
    {
        return waitUntil([&] { return state().hotKey == expected; });
    }
    /// The only window that it shows then.
    bool hasLauncher(const ChildProcess &helper) const { return !screen_.windowsOf(helper.pid()).isEmpty(); }
    /// Once what is typed goes there.
    bool waitForLauncher(const ChildProcess &helper) const
    {
        const QString window = screen_.windowOf(helper.pid());
        return !window.isEmpty() && waitUntil([&] { return screen_.hasKeyboard(window); });
    }
    bool waitForItsEnd(const ChildProcess &helper) const
    {
        return waitUntil([&] { return !hasLauncher(helper); });
    }
    static bool waitForLog(ChildProcess &helper, const QByteArray &text, qsizetype times = 1)
    {
        return waitUntil([&] { return helper.errors().count(text) >= times; });
    }
    static bool waitUntilHeard(ChildProcess &helper, qsizetype times = 1)
    {
        return waitForLog(helper, "the hot key is heard by", times);
    }

private:
    const TemporaryHome otherHome_;
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

TEST_F(HotKeyProgramTest, InAWaylandSessionThePortalIsAskedAlsoFromAnXScreen)
{
    store(with(controlAltP));
    FakePortal portal(bus_.address());
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitUntilHeard(*helper));
    EXPECT_TRUE(waitForState(HotKeyState::ByPortal));
    EXPECT_EQ(state().keys, FakePortal::givenKeys);
    portal.activate(portal.shortcut());
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, InAWaylandSessionNothingIsGrabbedOnAnXScreen)
{
    store(with(controlAltP));
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitForLog(*helper, "there is no way to hear of the hot key here"));
    EXPECT_TRUE(waitForState(HotKeyState::Impossible));
    // Nobody has it, or this one would not get it.
    const auto other = startOther(controlAltP);
    screen_.typeKey(typedControlAltP);
    EXPECT_TRUE(waitForLauncher(*other));
    EXPECT_FALSE(hasLauncher(*helper));
    expectEndOf(*other);
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, AUserWhoDoesNotWantItIsARefusalAndNothingIsGrabbed)
{
    store(with(controlAltP));
    FakePortal portal(bus_.address(), FakePortal::Manner::Cancelling);
    const auto helper = startInWaylandSession();
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, ThePaneIsToldWhatBecomesOfIt)
{
    store(with({}));
    NotificationListener listener(bus_.address());
    const auto helper = start();
    EXPECT_EQ(state(), QNBHelperState());
    const int before = listener.count("QNBHelperStateChangedNotification");
    storeAndPost(with(controlAltP));
    ASSERT_TRUE(waitUntil([&] { return listener.count("QNBHelperStateChangedNotification") > before; }));
    EXPECT_TRUE(waitForState(HotKeyState::ByScreen));
    {
        FakeGlobalAccel service(bus_.address());
        storeAndPost(with(controlF12));
        EXPECT_TRUE(waitForState(HotKeyState::ByDesktop));
    }
    const auto other = startOther(controlAltP);
    storeAndPost(with(controlAltP));
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    storeAndPost(with({}));
    EXPECT_TRUE(waitForState(HotKeyState::None));
    expectEndOf(*other);
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
        const auto other = startOther(controlF12);
        screen_.typeKey(typedControlF12);
        ASSERT_TRUE(waitForLauncher(*other));
        EXPECT_FALSE(hasLauncher(*helper));
        expectEndOf(*other);
        EXPECT_EQ(helper->errors().count("the hot key is heard by"), 1);
    }
    post(QNBHotKeyRecordingEndedNotification);
    ASSERT_TRUE(waitUntilHeard(*helper, 2));
    screen_.typeKey(typedControlAltP);
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, ARecorderThatDiesDoesNotKeepIt)
{
    store(with(controlF12));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    post(QNBHotKeyIsBeingRecordedNotification);
    ASSERT_TRUE(waitUntil([&] { return service.key() == 0; }));
    ASSERT_TRUE(waitUntilHeard(*helper, 2));
    EXPECT_EQ(service.key(), (Qt::CTRL | Qt::Key_F12).toCombined());
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, TheDesktopsServiceIsAskedForWhatTheLayoutGivesThere)
{
    // The key that has the digit one on a US keyboard.
    store(with({KeyCodes::commandFlag | KeyCodes::shiftFlag, 18}));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitUntil([&] { return service.key() == (Qt::CTRL | Qt::Key_Exclam).toCombined(); }));
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("fr")});
    EXPECT_TRUE(waitUntil([&] { return service.key() == (Qt::CTRL | Qt::Key_1).toCombined(); }));
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

TEST_F(HotKeyProgramTest, TheDesktopsOwnServiceComesFirst)
{
    store(with(controlAltP));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitUntil([&] { return service.key() != 0; }));
    EXPECT_EQ(service.key(), (Qt::CTRL | Qt::ALT | Qt::Key_P).toCombined());
    EXPECT_THAT(service.action().mid(0, 2),
                ElementsAre(QStringLiteral("org.quenby.QNBHelper"), QStringLiteral("show-presets")));
    EXPECT_FALSE(helper->errors().contains("X screen"));
    service.press();
    ASSERT_TRUE(waitForLauncher(*helper));
    storeAndPost(with(controlF12));
    ASSERT_TRUE(waitUntil([&] { return service.key() == (Qt::CTRL | Qt::Key_F12).toCombined(); }));
    storeAndPost(with({}));
    ASSERT_TRUE(waitUntil([&] { return service.key() == 0; }));
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, OnlyTheDesktopsServiceIsBelieved)
{
    store(with(controlAltP));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    const QString stranger = QStringLiteral("stranger");
    ASSERT_TRUE(QDBusConnection::connectToBus(bus_.address(), stranger)
                    .interface()
                    ->isServiceRegistered(QStringLiteral("org.kde.kglobalaccel")));
    service.press(stranger);
    // The helper has heard all that was said before it asks for another key.
    ASSERT_TRUE(
        QDBusConnection(stranger).interface()->isServiceRegistered(QStringLiteral("org.kde.kglobalaccel")));
    storeAndPost(with(controlF12));
    ASSERT_TRUE(waitUntilHeard(*helper, 2));
    EXPECT_FALSE(hasLauncher(*helper));
    service.press();
    EXPECT_TRUE(waitForLauncher(*helper));
    QDBusConnection::disconnectFromBus(stranger);
    expectEndOf(*helper);
}

TEST_F(HotKeyProgramTest, WhatTheDesktopsServiceRefusesIsGrabbedOnTheScreen)
{
    store(with(controlAltP));
    FakeGlobalAccel service(bus_.address(), FakeGlobalAccel::Manner::Refusing);
    const auto helper = start();
    ASSERT_TRUE(waitForLog(*helper, "a grab on the X screen"));
    ASSERT_TRUE(waitUntilHeard(*helper));
    screen_.typeKey(typedControlAltP);
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}
