// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/SessionBus.h"

#include "Platform/Mailbox.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QThread>

#include <csignal>
#include <gmock/gmock.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

using namespace std::chrono_literals;
using ::testing::ElementsAre;

namespace {

constexpr auto longTime = 20s;
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString name = QStringLiteral("org.quenby.Test");

QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName, method);
}

QDBusMessage signal(const QString &member = QStringLiteral("Changed"))
{
    return QDBusMessage::createSignal(QStringLiteral("/org/quenby/DistributedNotificationCenter"),
                                      QStringLiteral("org.quenby.DistributedNotificationCenter"), member);
}

/// A bus that takes whoever asks whether it is there, but not the connections of the library.
class RefusingBus
{
public:
    RefusingBus()
        : notifier_(socket_.descriptor(), QSocketNotifier::Read)
    {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { refuse(); });
    }
    QString address() const { return socket_.busAddress(); }

private:
    void refuse()
    {
        const int client = ::accept(socket_.descriptor(), nullptr, nullptr);
        if (lineOf(client).contains("AUTH") && ::send(client, "OK 0\r\n", 6, MSG_NOSIGNAL) == 6 &&
            lineOf(client).startsWith("BEGIN"))
            ::send(client, "l\2", 2, MSG_NOSIGNAL);
        ::close(client);
    }
    static QByteArray lineOf(int client)
    {
        QByteArray result;
        char buffer[512];
        while (!result.contains("\r\n")) {
            const ssize_t count = ::recv(client, buffer, sizeof buffer, 0);
            if (count <= 0)
                return {};
            result.append(buffer, count);
        }
        return result;
    }

    SilentSocket socket_;
    QSocketNotifier notifier_;
};

/// A bus whose daemon can be stopped, and one who uses it.
class SessionBusTest : public ::testing::Test
{
protected:
    /// The answer to \a message; waits for it.
    QDBusMessage answerTo(const QDBusMessage &message)
    {
        const auto answer = std::make_shared<std::optional<QDBusMessage>>();
        bus_.call(
            message, longTime,
            mailbox_.bound<const QDBusMessage &>([answer](const QDBusMessage &reply) { *answer = reply; }));
        EXPECT_TRUE(waitUntil([&] { return answer->has_value(); }, longTime));
        return answer->value_or(QDBusMessage());
    }
    void stop() { daemon_.process().signal(SIGSTOP); }
    void goOn() { daemon_.process().signal(SIGCONT); }

    PrivateBus daemon_;
    SessionBus bus_{daemon_.address()};
    const Mailbox mailbox_;
};

} // namespace

TEST_F(SessionBusTest, WhatIsSentToABusThatIsStoppedIsSentOnceWhenItGoesOn)
{
    NotificationListener listener(daemon_.address());
    stop();
    bus_.send(signal());
    bus_.send(signal());
    EXPECT_FALSE(bus_.flush(2s));
    goOn();
    EXPECT_TRUE(waitUntil([&] { return listener.count("Changed") > 0; }, longTime));
    bus_.send(signal(QStringLiteral("Last")));
    EXPECT_TRUE(waitUntil([&] { return listener.count("Last") == 1; }, longTime));
    EXPECT_EQ(listener.count("Changed"), 1);
}

TEST_F(SessionBusTest, WhoWaitsForABusThatWasSilentHasItAskedAtOnce)
{
    stop();
    bus_.send(signal());
    EXPECT_FALSE(bus_.flush());
    goOn();
    EXPECT_TRUE(bus_.flush());
}

TEST_F(SessionBusTest, WhatIsSentToABusThatStopsWhileItIsUsedArrivesOnceItGoesOn)
{
    NotificationListener listener(daemon_.address());
    ASSERT_TRUE(bus_.flush());
    stop();
    bus_.send(signal());
    EXPECT_FALSE(bus_.flush());
    goOn();
    EXPECT_TRUE(waitUntil([&] { return listener.count("Changed") == 1; }, longTime));
}

TEST_F(SessionBusTest, ACallToABusThatIsStoppedFailsAndIsNotMadeLater)
{
    stop();
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(answerTo(busCall(QStringLiteral("RequestName")) << name << 0U).type(),
              QDBusMessage::ErrorMessage);
    EXPECT_LT(time.elapsed(), 3000);
    goOn();
    const auto isOwned = [&] { return answerTo(busCall(QStringLiteral("NameHasOwner")) << name); };
    QDBusMessage answer;
    EXPECT_TRUE(waitUntil([&] { return (answer = isOwned()).type() == QDBusMessage::ReplyMessage; }));
    EXPECT_FALSE(answer.arguments().value(0).toBool());
}

TEST_F(SessionBusTest, ASignalThatNoBusCanTakeKeepsNothingElseBack)
{
    ASSERT_TRUE(bus_.flush());
    bus_.send(signal(QStringLiteral("not a name")));
    EXPECT_TRUE(bus_.flush());
}

TEST_F(SessionBusTest, ACallThatIsNotAnsweredBeforeTheBusGoesFails)
{
    ASSERT_TRUE(bus_.flush());
    stop();
    int failures = 0;
    bus_.call(busCall(QStringLiteral("GetId")), longTime,
              mailbox_.bound<const QDBusMessage &>([&](const QDBusMessage &reply) {
                  failures += reply.type() == QDBusMessage::ErrorMessage;
              }));
    daemon_.kill();
    EXPECT_TRUE(waitUntil([&] { return failures == 1; }));
}

TEST_F(SessionBusTest, WhoWatchesIsToldThatItIsStoppedThenThereThenGoneThenThere)
{
    stop();
    QList<bool> told;
    bus_.watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [&](const std::optional<QDBusConnection> &connection) { told.append(connection.has_value()); }));
    const auto waitFor = [&](qsizetype count) {
        return waitUntil([&] { return told.size() == count; }, longTime);
    };
    EXPECT_TRUE(waitFor(1));
    goOn();
    EXPECT_TRUE(waitFor(2));
    daemon_.kill();
    EXPECT_TRUE(waitFor(3));
    daemon_.start();
    EXPECT_TRUE(waitFor(4));
    EXPECT_THAT(told, ElementsAre(false, true, false, true));
}

TEST_F(SessionBusTest, WhoWatchesIsToldOfABusThatAnswersAndTakesNoConnection)
{
    const RefusingBus refusing;
    SessionBus bus(refusing.address());
    QList<bool> told;
    bus.watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [&](const std::optional<QDBusConnection> &connection) { told.append(connection.has_value()); }));
    EXPECT_TRUE(waitUntil([&] { return !told.isEmpty(); }));
    EXPECT_THAT(told, ElementsAre(false));
}

TEST_F(SessionBusTest, ABusThatIsAwayIsLookedForAfterPausesThatGrow)
{
    SilentSocket socket;
    QList<qint64> times;
    QElapsedTimer time;
    time.start();
    QSocketNotifier notifier(socket.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&] {
        ::close(::accept(socket.descriptor(), nullptr, nullptr));
        times.append(time.elapsed());
    });
    SessionBus bus(socket.busAddress());
    bus.watch([](const std::optional<QDBusConnection> &) {});
    ASSERT_TRUE(waitUntil([&] { return times.size() == 4; }, longTime));
    // In milliseconds, a little less than the pauses: a timer may be early by a twentieth.
    EXPECT_GT(times.at(1) - times.at(0), 450);
    EXPECT_GT(times.at(2) - times.at(1), 900);
    EXPECT_GT(times.at(3) - times.at(2), 1800);
}

TEST_F(SessionBusTest, WhoWatchesAnOwnerIsToldWhenItChanges)
{
    int changes = 0;
    bus_.watchOwner(name, mailbox_.bound<>([&] { ++changes; }));
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_EQ(
        answerTo(busCall(QStringLiteral("RequestName")) << QStringLiteral("org.quenby.Other") << 0U).type(),
        QDBusMessage::ReplyMessage);
    EXPECT_EQ(answerTo(busCall(QStringLiteral("RequestName")) << name << 0U).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitUntil([&] { return changes == 2; }));
}

TEST_F(SessionBusTest, NoneOfItsFunctionsWaitsForABusThatIsStopped)
{
    stop();
    QElapsedTimer time;
    time.start();
    bus_.send(signal());
    bus_.listen({{}, {}, {}, QStringLiteral("Changed")}, [](const QDBusMessage &) {});
    bus_.watch([](const std::optional<QDBusConnection> &) {});
    bus_.call(busCall(QStringLiteral("GetId")), longTime, [](const QDBusMessage &) {});
    EXPECT_LT(time.elapsed(), 200);
    goOn();
}
