// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Notifications.h"

#include "Platform/Bus/SessionBus.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// For what is expected to happen.
constexpr auto answerTime = 20s;

class NotificationsTest : public ::testing::Test
{
protected:
    Notifications::Notice notice()
    {
        return {QStringLiteral("Title"),
                QStringLiteral("a < b & \"c\""),
                {{QStringLiteral("show"), QStringLiteral("Show folder")},
                 {QStringLiteral("undo"), QStringLiteral("Undo")}},
                [this](const QString &key) { chosen_.append(key); }};
    }

    PrivateBus bus_;
    QStringList chosen_;
};

} // namespace

TEST_F(NotificationsTest, ShowsTextAndActions)
{
    const FakeDesktop desktop(bus_.address(), {QStringLiteral("body"), QStringLiteral("actions")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    EXPECT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_EQ(desktop.shown()[0].program, QStringLiteral("Quenby"));
    EXPECT_EQ(desktop.shown()[0].title, QStringLiteral("Title"));
    EXPECT_EQ(desktop.shown()[0].text, QStringLiteral("a < b & \"c\""));
    EXPECT_THAT(desktop.shown()[0].actions, ElementsAre(QStringLiteral("show"), QStringLiteral("Show folder"),
                                                        QStringLiteral("undo"), QStringLiteral("Undo")));
}

TEST_F(NotificationsTest, TextIsNoMarkup)
{
    const FakeDesktop desktop(bus_.address(), {QStringLiteral("body-markup")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    EXPECT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_EQ(desktop.shown()[0].text, QStringLiteral("a &lt; b &amp; &quot;c&quot;"));
}

TEST_F(NotificationsTest, EveryCharacterIsShown)
{
    const FakeDesktop desktop(bus_.address(), {QStringLiteral("body")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show({QStringLiteral("\u202Etitle\n"), QStringLiteral("one\ntwo\u009B\u200B")});
    EXPECT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_EQ(desktop.shown()[0].title, QStringLiteral("<U+202E>title␊"));
    EXPECT_EQ(desktop.shown()[0].text, QStringLiteral("one\ntwo<U+009B><U+200B>"));
}

TEST_F(NotificationsTest, ADesktopWithoutActionsGetsNone)
{
    const FakeDesktop desktop(bus_.address(), {QStringLiteral("body")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    EXPECT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_THAT(desktop.shown()[0].actions, IsEmpty());
}

TEST_F(NotificationsTest, TellsWhichActionWasChosenOfWhichNotice)
{
    FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    Notifications::Notice other = notice();
    other.handler = [this](const QString &key) { chosen_.append(QStringLiteral("other ") + key); };
    notifications.show(notice());
    notifications.show(other);
    ASSERT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 2);
    desktop.choose(desktop.shown()[1].id, QStringLiteral("undo"));
    desktop.choose(desktop.shown()[0].id, QStringLiteral("show"));
    desktop.choose(4711, QStringLiteral("show"));
    EXPECT_TRUE(waitUntil([this] { return chosen_.size() == 2; }));
    EXPECT_THAT(chosen_, ElementsAre(QStringLiteral("other undo"), QStringLiteral("show")));
}

TEST_F(NotificationsTest, AClosedNoticeIsOver)
{
    FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    notifications.show(notice());
    ASSERT_TRUE(notifications.flush(answerTime));
    ASSERT_EQ(desktop.shown().size(), 2);
    desktop.close(desktop.shown()[0].id);
    desktop.choose(desktop.shown()[0].id, QStringLiteral("undo"));
    desktop.choose(desktop.shown()[1].id, QStringLiteral("show"));
    EXPECT_TRUE(waitUntil([this] { return !chosen_.isEmpty(); }));
    EXPECT_THAT(chosen_, ElementsAre(QStringLiteral("show")));
}

TEST_F(NotificationsTest, AnotherProgramCannotChoose)
{
    FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    ASSERT_TRUE(notifications.flush(answerTime));
    ChildProcess stranger(QStringLiteral("dbus-send"),
                          {QStringLiteral("--bus=%1").arg(bus_.address()), QStringLiteral("--type=signal"),
                           QStringLiteral("/org/freedesktop/Notifications"),
                           QStringLiteral("org.freedesktop.Notifications.ActionInvoked"),
                           QStringLiteral("uint32:%1").arg(desktop.shown()[0].id),
                           QStringLiteral("string:undo")});
    ASSERT_TRUE(stranger.waitForEnd());
    ASSERT_TRUE(stranger.hasReturned(0));
    // The bus has passed on the stranger's signal before this one.
    desktop.choose(desktop.shown()[0].id, QStringLiteral("show"));
    EXPECT_TRUE(waitUntil([this] { return !chosen_.isEmpty(); }));
    EXPECT_THAT(chosen_, ElementsAre(QStringLiteral("show")));
}

TEST_F(NotificationsTest, WithoutAnyoneToShowItNothingIsShown)
{
    Notifications withoutDesktop(std::make_shared<SessionBus>(bus_.address()));
    withoutDesktop.show(notice());
    EXPECT_FALSE(withoutDesktop.flush(answerTime));

    Notifications withoutBus(std::make_shared<SessionBus>(BusProbe::noBusAddress));
    withoutBus.show(notice());
    EXPECT_FALSE(withoutBus.flush(answerTime));

    const SilentSocket socket;
    Notifications withSilence(std::make_shared<SessionBus>(socket.busAddress()));
    withSilence.show(notice());
    EXPECT_FALSE(withSilence.flush(answerTime));
}

TEST_F(NotificationsTest, ADesktopThatRefusesIsAFailure)
{
    const FakeDesktop desktop(bus_.address(), {}, FakeDesktop::Manner::Refusing);
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    EXPECT_FALSE(notifications.flush(answerTime));
}

TEST_F(NotificationsTest, ASilentDesktopIsNotWaitedForLongerThanAsked)
{
    const FakeDesktop desktop(bus_.address(), {}, FakeDesktop::Manner::Silent);
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    notifications.show(notice());
    EXPECT_FALSE(notifications.flush(50ms));
}

TEST_F(NotificationsTest, ShowsAgainAfterTheBusHasComeBack)
{
    Notifications notifications(std::make_shared<SessionBus>(bus_.address()));
    {
        const FakeDesktop desktop(bus_.address(), {});
        notifications.show(notice());
        ASSERT_TRUE(notifications.flush(answerTime));
    }
    bus_.kill();
    bus_.start();
    const FakeDesktop desktop(bus_.address(), {});
    const auto isShown = [&] {
        notifications.show(notice());
        return notifications.flush(answerTime);
    };
    EXPECT_TRUE(waitUntil(isShown));
    EXPECT_FALSE(desktop.shown().isEmpty());
}
