// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// By which of the desktop's ways the hot key is heard, and what the helper says of that.

#include "Tests/Helper/Running/FakeGlobalAccel.h"
#include "Tests/Helper/Running/FakePortal.h"
#include "Tests/Helper/Running/HotKeyFixture.h"
#include "Tests/Session/NotificationListener.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QList>

#include <chrono>
#include <gmock/gmock.h>
#include <optional>

using namespace std::chrono_literals;
using ::testing::ElementsAre;

namespace {

using HotKeyWaysProgramTest = HotKeyFixture;

} // namespace

TEST_F(HotKeyWaysProgramTest, InAWaylandSessionThePortalIsAskedAlsoFromAnXScreen)
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

TEST_F(HotKeyWaysProgramTest, InAWaylandSessionNothingIsGrabbedOnAnXScreen)
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

TEST_F(HotKeyWaysProgramTest, InAWaylandSessionTheDesktopsServiceIsAskedOnlyWhereItIsTheCompositors)
{
    store(with(controlAltP));
    FakePortal portal(bus_.address());
    {
        const FakeGlobalAccel ofSomeProgram(bus_.address());
        const auto helper = startInWaylandSession();
        EXPECT_TRUE(waitForState(HotKeyState::ByPortal));
        EXPECT_EQ(ofSomeProgram.key(), 0);
        expectEndOf(*helper);
    }
    ASSERT_TRUE(waitUntil([&] { return !portal.hasSession(); }));
    const FakeGlobalAccel ofTheCompositor(bus_.address(), FakeGlobalAccel::Manner::Giving,
                                          FakeGlobalAccel::Program::Compositor);
    const auto helper = startInWaylandSession();
    EXPECT_TRUE(waitForState(HotKeyState::ByDesktop));
    EXPECT_FALSE(portal.hasSession());
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, ACompositorThatTakesItsNameAfterTheServicesIsNoticed)
{
    store(with(controlAltP));
    FakeGlobalAccel service(bus_.address());
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitForState(HotKeyState::Impossible));
    service.becomeCompositor();
    EXPECT_TRUE(waitForState(HotKeyState::ByDesktop));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, APortalThatStartsAgainIsAskedAgain)
{
    store(with(controlAltP));
    std::optional<FakePortal> portal(std::in_place, bus_.address());
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitForState(HotKeyState::ByPortal));
    portal.reset();
    EXPECT_TRUE(waitForState(HotKeyState::Impossible));
    portal.emplace(bus_.address(), FakePortal::Manner::Asking);
    EXPECT_TRUE(waitForState(HotKeyState::Asking));
    portal.reset();
    EXPECT_TRUE(waitForState(HotKeyState::Impossible)) << "it went before the user's answer";
    portal.emplace(bus_.address());
    ASSERT_TRUE(waitForState(HotKeyState::ByPortal));
    portal->activate(portal->shortcut());
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, AUserWhoDoesNotWantItIsNotAskedAgainUntilTheSettingsChange)
{
    store(with(controlAltP));
    FakePortal portal(bus_.address(), FakePortal::Manner::Cancelling);
    const auto helper = startInWaylandSession();
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    post(QNBHotKeyIsBeingRecordedNotification);
    post(QNBHotKeyRecordingEndedNotification);
    const QByteArray nobody = "there is no way to hear of the hot key here";
    ASSERT_TRUE(waitForLog(*helper, nobody, 2));
    EXPECT_EQ(portal.bindings(), 1);
    EXPECT_EQ(state().hotKey, HotKeyState::Refused);
    storeAndPost(with(controlF12));
    EXPECT_TRUE(waitForLog(*helper, nobody, 3));
    EXPECT_EQ(portal.bindings(), 2);
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, WhatNobodyHasDecidedIsAskedAgainOnTheNextOccasion)
{
    store(with(controlAltP));
    std::optional<FakePortal> portal(std::in_place, bus_.address(), FakePortal::Manner::FailingToAsk);
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitForState(HotKeyState::Refused));
    portal->setManner(FakePortal::Manner::Granting);
    post(QNBHotKeyIsBeingRecordedNotification);
    post(QNBHotKeyRecordingEndedNotification);
    EXPECT_TRUE(waitForState(HotKeyState::ByPortal));
    portal->closeSession();
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    portal.emplace(bus_.address());
    EXPECT_TRUE(waitForState(HotKeyState::ByPortal));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, APortalThatDiesOfTheQuestionIsAskedAgainAfterPausesThatGrow)
{
    store(with(controlAltP));
    QList<std::chrono::steady_clock::time_point> times;
    std::optional<FakePortal> portal(std::in_place, bus_.address(), FakePortal::Manner::Dying);
    const auto helper = startInWaylandSession();
    while (times.size() < 3) {
        ASSERT_TRUE(waitUntil([&] { return portal->bindings() > 0; }));
        times.append(portal->askedAt());
        // The session starts it again at once.
        portal.emplace(bus_.address(), FakePortal::Manner::Dying);
    }
    // Less than the pauses: a timer may be early.
    EXPECT_GT(times.at(1) - times.at(0), 250ms);
    EXPECT_GT(times.at(2) - times.at(1), 700ms);
    portal.emplace(bus_.address());
    EXPECT_TRUE(waitForState(HotKeyState::ByPortal)) << "nobody has refused it";
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, ThePaneIsToldWhatBecomesOfIt)
{
    store(with({}));
    NotificationListener listener(bus_.address());
    const auto helper = start();
    EXPECT_EQ(state().hotKey, HotKeyState::None);
    const int before = listener.count("QNBHelperStateChangedNotification");
    storeAndPost(with(controlAltP));
    ASSERT_TRUE(waitUntil([&] { return listener.count("QNBHelperStateChangedNotification") > before; }));
    EXPECT_TRUE(waitForState(HotKeyState::ByScreen));
    {
        FakeGlobalAccel service(bus_.address());
        EXPECT_TRUE(waitForState(HotKeyState::ByDesktop)) << "it comes first, also when it comes later";
        storeAndPost(with(controlF12));
        EXPECT_TRUE(waitUntil([&] { return service.key() == (Qt::CTRL | Qt::Key_F12).toCombined(); }));
    }
    const auto other = startOther(controlAltP);
    storeAndPost(with(controlAltP));
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    storeAndPost(with({}));
    EXPECT_TRUE(waitForState(HotKeyState::None));
    expectEndOf(*other);
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, WhileAnotherIsRecordedThePortalKeepsItAndItDoesNothing)
{
    store(with(controlAltP));
    FakePortal portal(bus_.address());
    const auto helper = startInWaylandSession();
    ASSERT_TRUE(waitForState(HotKeyState::ByPortal));
    post(QNBHotKeyIsBeingRecordedNotification);
    ASSERT_TRUE(waitForLog(*helper, "is left to who records one"));
    portal.activate(portal.shortcut());
    // What was said before it is heard before it.
    storeAndPost(with(controlAltP));
    ASSERT_TRUE(waitForLog(*helper, "presets in the menu", 2));
    EXPECT_FALSE(hasLauncher(*helper));
    EXPECT_TRUE(portal.hasSession());
    post(QNBHotKeyRecordingEndedNotification);
    ASSERT_TRUE(waitUntil([&] {
        portal.activate(portal.shortcut());
        return hasLauncher(*helper);
    }));
    EXPECT_EQ(portal.bindings(), 1) << "the user is not asked again";
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, ARecorderThatDiesDoesNotKeepIt)
{
    store(with(controlF12));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitUntilHeard(*helper));
    post(QNBHotKeyIsBeingRecordedNotification);
    ASSERT_TRUE(waitUntil([&] { return service.key() == 0; }));
    // After six seconds without a word.
    EXPECT_TRUE(waitUntil([&] { return service.key() == (Qt::CTRL | Qt::Key_F12).toCombined(); }, 30s));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, TheDesktopsServiceIsAskedForWhatTheLayoutGivesThere)
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

TEST_F(HotKeyWaysProgramTest, TheDesktopsOwnServiceComesFirst)
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

TEST_F(HotKeyWaysProgramTest, ADesktopsServiceThatStartsAgainIsAskedAgain)
{
    store(with(controlAltP));
    std::optional<FakeGlobalAccel> service(std::in_place, bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitForState(HotKeyState::ByDesktop));
    service.reset();
    EXPECT_TRUE(waitForState(HotKeyState::ByScreen));
    service.emplace(bus_.address());
    ASSERT_TRUE(waitForState(HotKeyState::ByDesktop));
    service->press();
    EXPECT_TRUE(waitForLauncher(*helper));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, ADesktopsServiceThatFailsIsARefusalAndForgetsTheHelper)
{
    store(with(controlAltP));
    const FakeGlobalAccel service(bus_.address(), FakeGlobalAccel::Manner::Failing,
                                  FakeGlobalAccel::Program::Compositor);
    const auto helper = startInWaylandSession();
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    // It may have taken the key all the same.
    EXPECT_TRUE(waitUntil([&] { return service.action().isEmpty(); }));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, OneThatAnotherLayoutDoesNotHaveIsHeardAgainUnderOneThatHasIt)
{
    // The yen, which is on Japanese keyboards only.
    store(with({KeyCodes::commandFlag, 93}));
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("jp")});
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitForState(HotKeyState::ByDesktop));
    const int key = service.key();
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    ASSERT_TRUE(waitForState(HotKeyState::Refused));
    EXPECT_EQ(service.key(), 0);
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("jp")});
    EXPECT_TRUE(waitForState(HotKeyState::ByDesktop));
    EXPECT_EQ(service.key(), key);
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, OneThatAnotherLayoutTakesAwayIsNotSaidToBeHeard)
{
    store(with(controlAltP));
    FakeGlobalAccel service(bus_.address());
    const auto helper = start();
    ASSERT_TRUE(waitForState(HotKeyState::ByDesktop));
    service.setManner(FakeGlobalAccel::Manner::Refusing);
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("us"), QStringLiteral("dvorak")});
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    service.setManner(FakeGlobalAccel::Manner::Giving);
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    EXPECT_TRUE(waitForState(HotKeyState::ByDesktop));
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, OneWhoseKeyOfAnotherLayoutIsTakenIsNotSaidToBeHeard)
{
    // The key of the German Z.
    const auto other = startOther({KeyCodes::commandFlag | KeyCodes::optionFlag, 16});
    store(with({KeyCodes::commandFlag | KeyCodes::optionFlag, 6, true}));
    const auto helper = start();
    ASSERT_TRUE(waitForState(HotKeyState::ByScreen));
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("de")});
    EXPECT_TRUE(waitForState(HotKeyState::Refused));
    screen_.ask(QStringLiteral("setxkbmap"), {QStringLiteral("us")});
    EXPECT_TRUE(waitForState(HotKeyState::ByScreen));
    expectEndOf(*other);
    expectEndOf(*helper);
}

TEST_F(HotKeyWaysProgramTest, OnlyTheDesktopsServiceIsBelieved)
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

TEST_F(HotKeyWaysProgramTest, WhatTheDesktopsServiceRefusesIsGrabbedOnTheScreen)
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
