// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/PortalHotKey.h"

#include "Helper/Running/PortalTrigger.h"
#include "Tests/Helper/Running/FakePortal.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>

#include <csignal>
#include <gtest/gtest.h>
#include <optional>

namespace {

const QString hotKeyConnection = QStringLiteral("portal-hot-key");
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
constexpr KeyCombo controlAltP{KeyCodes::commandFlag | KeyCodes::optionFlag, 35};

class PortalHotKeyTest : public ::testing::Test
{
protected:
    ~PortalHotKeyTest() override
    {
        hotKey_.reset();
        QDBusConnection::disconnectFromBus(hotKeyConnection);
    }

    void grab()
    {
        begin();
        ASSERT_TRUE(waitUntil([this] { return granted_ + refused_ + denied_ + missing_ + gone_ > 0; }));
    }

    void begin()
    {
        hotKey_.emplace(QDBusConnection::connectToBus(bus_.address(), hotKeyConnection),
                        HotKey::Handlers{.pressed =
                                             [this](const QByteArray &token) {
                                                 ++pressed_;
                                                 token_ = token;
                                             },
                                         .asking =
                                             [this] {
                                                 EXPECT_EQ(granted_ + refused_, 0);
                                                 ++asking_;
                                             },
                                         .granted =
                                             [this](const QString &keys) {
                                                 ++granted_;
                                                 keys_ = keys;
                                             },
                                         .lost = [this](const QString &) { ++lost_; },
                                         .refused = [this](const QString &) { ++refused_; },
                                         .denied = [this](const QString &) { ++denied_; },
                                         .missing = [this](const QString &) { ++missing_; },
                                         .gone = [this](const QString &) { ++gone_; }});
        hotKey_->grab(controlAltP);
    }

    PrivateBus bus_;
    std::optional<PortalHotKey> hotKey_;
    int pressed_ = 0;
    int asking_ = 0;
    int granted_ = 0;
    int lost_ = 0;
    int refused_ = 0;
    int denied_ = 0;
    int missing_ = 0;
    int gone_ = 0;
    QString keys_;
    QByteArray token_;
};

} // namespace

TEST_F(PortalHotKeyTest, AsksForItsCombinationAndHearsOfIt)
{
    FakePortal portal(bus_.address());
    grab();
    EXPECT_EQ(granted_, 1);
    EXPECT_EQ(portal.shortcutOptions().value(QStringLiteral("preferred_trigger")).toString(),
              QStringLiteral("CTRL+ALT+p"));
    EXPECT_FALSE(portal.shortcutOptions().value(QStringLiteral("description")).toString().isEmpty());
    // Signals keep their order.
    portal.activate(QStringLiteral("another one"));
    portal.activate(portal.shortcut());
    ASSERT_TRUE(waitUntil([this] { return pressed_ > 0; }));
    EXPECT_EQ(pressed_, 1);
    EXPECT_EQ(token_, FakePortal::activationToken.toUtf8());
    EXPECT_EQ(refused_, 0);
}

TEST_F(PortalHotKeyTest, SaysWhichApplicationItIsBeforeAndHowTheDesktopCallsTheKeys)
{
    FakePortal portal(bus_.address());
    grab();
    EXPECT_EQ(portal.application(), QStringLiteral("org.quenby.Quenby"));
    EXPECT_EQ(asking_, 1);
    EXPECT_EQ(keys_, FakePortal::givenKeys);
}

TEST_F(PortalHotKeyTest, TellsHowTheDesktopCallsOtherKeysThatTheUserChooses)
{
    FakePortal portal(bus_.address());
    grab();
    const QString others = QStringLiteral("Super+F5");
    portal.changeKeys(others);
    EXPECT_TRUE(waitUntil([&] { return keys_ == others; }));
    portal.changeKeys(QStringLiteral("Press <Control><Alt>p"));
    EXPECT_TRUE(waitUntil([&] { return keys_ == QStringLiteral("Ctrl+Alt+P"); }));
}

TEST_F(PortalHotKeyTest, IsLostWhileTheUserHasTakenItAway)
{
    FakePortal portal(bus_.address());
    grab();
    portal.takeShortcutAway();
    EXPECT_TRUE(waitUntil([this] { return lost_ == 1; }));
    EXPECT_EQ(granted_, 1);
    portal.changeKeys(FakePortal::givenKeys);
    EXPECT_TRUE(waitUntil([this] { return granted_ == 2; }));
    EXPECT_EQ(refused_, 0);
}

TEST_F(PortalHotKeyTest, IsLostWhileItHasNoKeys)
{
    FakePortal portal(bus_.address());
    grab();
    for (const int times : {1, 2}) {
        portal.changeKeys({});
        EXPECT_TRUE(waitUntil([&] { return lost_ == times; }));
    }
    portal.changeKeys(FakePortal::givenKeys);
    EXPECT_TRUE(waitUntil([this] { return granted_ == 2; }));
    EXPECT_EQ(refused_, 0);
}

TEST_F(PortalHotKeyTest, IsNotLostWhereTheDesktopNeverNamesItsKeys)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::GrantingWithoutKeys);
    grab();
    portal.changeKeys({});
    EXPECT_TRUE(waitUntil([this] { return granted_ == 2; }));
    EXPECT_EQ(lost_, 0);
}

TEST_F(PortalHotKeyTest, WhatAUserDoesNotWantIsDenied)
{
    for (const auto manner : {FakePortal::Manner::Cancelling, FakePortal::Manner::CancellingWithWrongNumber,
                              FakePortal::Manner::GrantingNothing}) {
        FakePortal portal(bus_.address(), manner);
        denied_ = 0;
        grab();
        EXPECT_EQ(denied_, 1) << int(manner);
        hotKey_.reset();
        QDBusConnection::disconnectFromBus(hotKeyConnection);
    }
    EXPECT_EQ(granted_ + refused_, 0);
}

TEST_F(PortalHotKeyTest, WhatGoesWrongIsARefusalByNobody)
{
    for (const auto manner : {FakePortal::Manner::FailingToAsk, FakePortal::Manner::UnableToAsk}) {
        FakePortal portal(bus_.address(), manner);
        refused_ = 0;
        grab();
        EXPECT_EQ(refused_, 1) << int(manner);
        hotKey_.reset();
        QDBusConnection::disconnectFromBus(hotKeyConnection);
    }
    EXPECT_EQ(granted_ + denied_ + missing_ + gone_, 0);
}

TEST_F(PortalHotKeyTest, IsGrantedByADesktopThatTakesNoNamesOfApplications)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::WithoutRegistry);
    grab();
    EXPECT_EQ(granted_, 1);
}

TEST_F(PortalHotKeyTest, ABusThatIsStoppedHoldsNobodyUp)
{
    FakePortal portal(bus_.address());
    QDBusConnection::connectToBus(bus_.address(), hotKeyConnection);
    bus_.process().signal(SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    begin();
    // The library waits up to 25 s for an answer.
    EXPECT_FALSE(timer.hasExpired(5000));
    bus_.process().signal(SIGCONT);
    ASSERT_TRUE(waitUntil([this] { return granted_ + refused_ + missing_ > 0; }));
    EXPECT_EQ(granted_, 1);
}

TEST_F(PortalHotKeyTest, WhatIsGivenToItIsGrantedWhateverNumberTheDesktopAnswersWith)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::GrantingWithWrongNumber);
    grab();
    EXPECT_EQ(refused_, 0);
    EXPECT_EQ(granted_, 1);
    EXPECT_EQ(keys_, FakePortal::givenKeys);
}

TEST_F(PortalHotKeyTest, ItsSessionIsKnownAgainInEachRun)
{
    FakePortal portal(bus_.address());
    grab();
    const QString token = portal.sessionToken();
    EXPECT_FALSE(token.isEmpty());
    hotKey_.reset();
    ASSERT_TRUE(waitUntil([&] { return !portal.hasSession(); }));
    QDBusConnection::disconnectFromBus(hotKeyConnection);
    granted_ = 0;
    grab();
    EXPECT_EQ(portal.sessionToken(), token);
}

TEST_F(PortalHotKeyTest, OnlyThePortalIsBelieved)
{
    FakePortal portal(bus_.address());
    grab();
    const QString stranger = QStringLiteral("stranger");
    ASSERT_TRUE(
        QDBusConnection::connectToBus(bus_.address(), stranger).send(portal.activation(portal.shortcut())));
    // What the bus was told before it answers is passed on before that.
    for (const QString &connection : {stranger, hotKeyConnection})
        ASSERT_TRUE(QDBusConnection(connection).interface()->isServiceRegistered(portalService));
    QDBusConnection::disconnectFromBus(stranger);
    QCoreApplication::processEvents();
    EXPECT_EQ(pressed_, 0);
    portal.activate(portal.shortcut());
    EXPECT_TRUE(waitUntil([this] { return pressed_ == 1; }));
}

TEST_F(PortalHotKeyTest, ClosesItsSession)
{
    FakePortal portal(bus_.address());
    grab();
    EXPECT_TRUE(portal.hasSession());
    hotKey_.reset();
    EXPECT_TRUE(waitUntil([&] { return !portal.hasSession(); }));
}

TEST_F(PortalHotKeyTest, ClosesASessionThatWasAskedForAndNotAnswered)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::OpeningSilently);
    begin();
    ASSERT_TRUE(waitUntil([&] { return portal.hasSession(); }));
    hotKey_.reset();
    portal.setManner(FakePortal::Manner::Granting);
    grab();
    EXPECT_EQ(granted_, 1) << "the one before has the same name";
}

TEST_F(PortalHotKeyTest, ASessionThatTheDesktopClosesIsARefusal)
{
    FakePortal portal(bus_.address());
    grab();
    ASSERT_EQ(granted_, 1);
    portal.closeSession();
    EXPECT_TRUE(waitUntil([this] { return refused_ == 1; }));
}

TEST_F(PortalHotKeyTest, WhereADesktopHasNoSuchPortalThereIsNoSuchWay)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::Unknown);
    grab();
    EXPECT_EQ(missing_, 1);
}

TEST_F(PortalHotKeyTest, OnABusWithoutAPortalThereIsNoSuchWay)
{
    grab();
    EXPECT_EQ(missing_, 1);
}

TEST_F(PortalHotKeyTest, WithoutASessionThereIsNoSuchWay)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::Failing);
    grab();
    EXPECT_EQ(missing_, 1);
}

TEST_F(PortalHotKeyTest, APortalThatEndsBeforeItAnswersIsGone)
{
    FakePortal portal(bus_.address(), FakePortal::Manner::Dying);
    grab();
    EXPECT_EQ(gone_, 1);
    EXPECT_EQ(refused_ + missing_, 0);
}

TEST(PortalTriggerTest, OnlyKeysThatAreSureAreShownInAnotherWay)
{
    const KeyboardLayout us = KeyboardLayout::named(QStringLiteral("us"));
    const auto shown = [&](const char *description) {
        return PortalTrigger::shown(QString::fromUtf8(description), us);
    };
    EXPECT_EQ(shown("Press <Control><Alt>p"), QStringLiteral("Ctrl+Alt+P"));
    EXPECT_EQ(shown("Press <Super>Home."), QStringLiteral("Meta+Home"));
    EXPECT_EQ(shown("<Shift><Primary>F5"), QStringLiteral("Ctrl+Shift+F5"));
    for (const char *other : {"", "Super+P", "Press p", "Press <Hyper>p", "Press <Control>nothing",
                              "Press <Control>a, then <Control>b", "Appuyez sur <Control>p"})
        EXPECT_EQ(shown(other), QString::fromUtf8(other));
}

TEST(PortalTriggerTest, KeysAreNamedAsThePortalKnowsThem)
{
    const KeyboardLayout us = KeyboardLayout::named(QStringLiteral("us"));
    EXPECT_EQ(PortalTrigger::forCombo({KeyCodes::shiftFlag | KeyCodes::controlFlag, 111}, us),
              QStringLiteral("SHIFT+LOGO+F12"));
    EXPECT_EQ(PortalTrigger::forCombo({KeyCodes::commandFlag, 116}, us), QStringLiteral("CTRL+Prior"));
    EXPECT_EQ(PortalTrigger::forCombo({KeyCodes::optionFlag, 18}, us), QStringLiteral("ALT+1"));
    EXPECT_EQ(PortalTrigger::forCombo({0, 83}, us), QStringLiteral("KP_1"));
    EXPECT_EQ(PortalTrigger::forCombo({KeyCodes::commandFlag, 69}, us), QStringLiteral("CTRL+KP_Add"));
    EXPECT_EQ(PortalTrigger::forCombo({KeyCodes::commandFlag, 200}, us), QString());
}
