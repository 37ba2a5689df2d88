// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HotKeys.h"

#include "Tests/Helper/Running/FakePortal.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"

#include <QList>

#include <gmock/gmock.h>
#include <optional>

using namespace std::chrono_literals;
using ::testing::ElementsAre;

namespace {

using TheState = QNBHelperState::HotKey;

/// The hot key of a Wayland session, whose portal is left alone for the first pause only.
class HotKeysTest : public ::testing::Test
{
protected:
    explicit HotKeysTest(const PortalPauses &pauses = PortalPauses(PortalPauses::first))
        : pauses_(pauses)
    {
        qputenv(waylandDisplay, "wayland-0");
        bus_.watch(mailbox_.bound<const std::optional<QDBusConnection> &>([this](const auto &connection) {
            hotKeys_.setBus(connection);
            hasBus_ = connection.has_value();
        }));
        EXPECT_TRUE(waitUntil([this] { return hasBus_; }));
    }
    ~HotKeysTest() override
    {
        if (hadWaylandDisplay_)
            qputenv(waylandDisplay, waylandDisplayBefore_);
        else
            qunsetenv(waylandDisplay);
    }

    void startPortal(FakePortal::Manner manner) { portal_.emplace(daemon_.address(), manner); }
    bool waitForBinding() const
    {
        return waitUntil([this] { return portal_->bindings() == 1; });
    }
    bool waitFor(TheState state) const
    {
        return waitUntil([&] { return !told_.isEmpty() && told_.last() == state; });
    }

    static constexpr KeyCombo controlF1{KeyCodes::commandFlag, 122};
    static constexpr KeyCombo controlF2{KeyCodes::commandFlag, 120};

    PrivateBus daemon_;
    std::optional<FakePortal> portal_;
    QList<TheState> told_;

private:
    static constexpr char waylandDisplay[] = "WAYLAND_DISPLAY";
    const bool hadWaylandDisplay_ = qEnvironmentVariableIsSet(waylandDisplay);
    const QByteArray waylandDisplayBefore_ = qgetenv(waylandDisplay);
    SessionBus bus_{daemon_.address()};
    bool hasBus_ = false;
    const PortalPauses pauses_;

protected:
    HotKeys hotKeys_{bus_,
                     {.pressed = [](const QByteArray &) {},
                      .stateChanged = [this](TheState state, const QString &) { told_.append(state); }},
                     pauses_};

private:
    const Mailbox mailbox_;
};

/// The same with the pauses of the helper.
class HotKeysPausesTest : public HotKeysTest
{
protected:
    HotKeysPausesTest()
        : HotKeysTest(PortalPauses())
    {
    }
};

} // namespace

TEST_F(HotKeysTest, APortalThatHasGoneOnceMoreAfterTheLongestPauseIsLeftAloneUntilTheSettingsChange)
{
    startPortal(FakePortal::Manner::Dying);
    hotKeys_.set(controlF1);
    ASSERT_TRUE(waitForBinding());
    startPortal(FakePortal::Manner::Dying);
    ASSERT_TRUE(waitForBinding());
    startPortal(FakePortal::Manner::Granting);
    ASSERT_TRUE(waitFor(TheState::Impossible));
    EXPECT_THAT(told_, ElementsAre(TheState::Asking, TheState::Asking, TheState::Impossible))
        << "nothing is certain in a pause";
    hotKeys_.pause(1min);
    hotKeys_.resume();
    ASSERT_TRUE(waitUntil([this] { return told_.size() == 4; }));
    EXPECT_EQ(told_.last(), TheState::Impossible);
    EXPECT_EQ(portal_->bindings(), 0);
    hotKeys_.set(controlF2);
    EXPECT_TRUE(waitFor(TheState::ByPortal));
}

TEST_F(HotKeysTest, APortalThatHasHeardItForLongerThanTheLongestPauseBeginsWithTheFirstAgain)
{
    startPortal(FakePortal::Manner::Dying);
    hotKeys_.set(controlF1);
    ASSERT_TRUE(waitForBinding());
    startPortal(FakePortal::Manner::Granting);
    ASSERT_TRUE(waitFor(TheState::ByPortal));
    const auto granted = std::chrono::steady_clock::now();
    ASSERT_TRUE(
        waitUntil([&] { return std::chrono::steady_clock::now() > granted + PortalPauses::first + 50ms; }));
    startPortal(FakePortal::Manner::Granting);
    EXPECT_TRUE(waitForBinding());
}

TEST_F(HotKeysPausesTest, APortalThatGrantsItAndGoesIsLeftAloneForLongerEachTimeAndIsNotSaidToHearIt)
{
    startPortal(FakePortal::Manner::Granting);
    hotKeys_.set(controlF1);
    ASSERT_TRUE(waitFor(TheState::ByPortal));
    for (auto pause = PortalPauses::first; pause <= 2 * PortalPauses::first; pause *= 2) {
        told_.clear();
        const auto gone = std::chrono::steady_clock::now();
        startPortal(FakePortal::Manner::Granting);
        ASSERT_TRUE(waitFor(TheState::ByPortal));
        // Timers may be early by a twentieth.
        EXPECT_GT(portal_->askedAt() - gone, pause * 9 / 10);
        EXPECT_THAT(told_, ElementsAre(TheState::Asking, TheState::Asking, TheState::ByPortal))
            << "it is told when the portal goes, and when it is asked";
    }
}

TEST(PortalPausesTest, EachIsTwiceAsLongAsTheOneBeforeAndTheLongestIsTheLast)
{
    PortalPauses pauses(1800ms);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(pauses.next(), 500ms);
        EXPECT_EQ(pauses.next(), 1000ms);
        EXPECT_EQ(pauses.next(), 1800ms);
        EXPECT_EQ(pauses.next(), std::nullopt);
        EXPECT_EQ(pauses.next(), std::nullopt);
        pauses.reset();
    }
}

TEST(PortalPausesTest, OnlyAPortalThatHasHeardTheHotKeyForLongerThanTheLongestBeginsAnew)
{
    PortalPauses pauses(1800ms);
    EXPECT_EQ(pauses.next(1801ms), 500ms);
    EXPECT_EQ(pauses.next(1800ms), 1000ms);
    EXPECT_EQ(pauses.next(1ms), 1800ms);
    EXPECT_EQ(pauses.next(1800ms), std::nullopt);
    EXPECT_EQ(pauses.next(1801ms), 500ms);
}
