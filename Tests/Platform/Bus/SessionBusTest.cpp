// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/SessionBus.h"

#include "Platform/Bus/Mailbox.h"
#include "Platform/Files/FileDescriptor.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QSocketNotifier>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <gmock/gmock.h>
#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
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

/// Passes on what is said to a bus and by it, until it is asked for its id, and says nothing from then on.
class BusThatFallsSilent
{
public:
    explicit BusThatFallsSilent(const QString &busPath)
        : busPath_(QFile::encodeName(busPath))
        , notifier_(socket_.descriptor(), QSocketNotifier::Read)
    {
        time_.start();
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { accept(); });
    }
    QString address() const { return socket_.busAddress(); }
    /// When it was asked, in milliseconds.
    QList<qint64> questions() const { return questions_; }

private:
    using Descriptor = std::shared_ptr<const FileDescriptor>;

    static Descriptor descriptor(int number)
    {
        return std::make_shared<FileDescriptor>(FileLayer::real(), number);
    }
    void accept()
    {
        const Descriptor client = descriptor(::accept(socket_.descriptor(), nullptr, nullptr));
        const Descriptor bus = descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, busPath_.constData(), size_t(busPath_.size()));
        EXPECT_EQ(::connect(bus->get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        passOn(client, bus);
        passOn(bus, client);
    }
    void passOn(const Descriptor &from, const Descriptor &to)
    {
        auto *notifier = new QSocketNotifier(from->get(), QSocketNotifier::Read, &notifier_);
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this, notifier, from, to] {
            QByteArray bytes(4096, Qt::Uninitialized);
            bytes.truncate(std::max<ssize_t>(::recv(from->get(), bytes.data(), size_t(bytes.size()), 0), 0));
            if (bytes.contains("GetId"))
                questions_.append(time_.elapsed());
            if (questions_.isEmpty())
                ::send(to->get(), bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
            if (bytes.isEmpty()) {
                notifier->setEnabled(false);
                ::shutdown(to->get(), SHUT_WR);
            }
        });
    }

    const QByteArray busPath_;
    SilentSocket socket_;
    QElapsedTimer time_;
    QList<qint64> questions_;
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
        const int client = ::accept(socket.descriptor(), nullptr, nullptr);
        // Before the pause, which begins when it is closed.
        times.append(time.elapsed());
        ::close(client);
    });
    SessionBus bus(socket.busAddress());
    bus.watch([](const std::optional<QDBusConnection> &) {});
    ASSERT_TRUE(waitUntil([&] { return times.size() == 4; }, longTime));
    // In milliseconds, a little less than the pauses: a timer may be early by a twentieth.
    EXPECT_GT(times.at(1) - times.at(0), 450);
    EXPECT_GT(times.at(2) - times.at(1), 900);
    EXPECT_GT(times.at(3) - times.at(2), 1800);
}

TEST_F(SessionBusTest, ABusThatFallsSilentWhileItIsUsedIsAskedWithPatienceThatGrows)
{
    const BusThatFallsSilent silent(daemon_.address().mid(QStringLiteral("unix:path=").size()));
    SessionBus bus(silent.address());
    QList<bool> told;
    bus.watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [&](const std::optional<QDBusConnection> &connection) { told.append(connection.has_value()); }));
    ASSERT_TRUE(waitUntil([&] { return silent.questions().size() == 3; }, longTime));
    EXPECT_THAT(told, ElementsAre(false));
    // In milliseconds since before the first question: one second of patience, then two. A timer may be early
    // by a twentieth.
    EXPECT_GT(silent.questions().at(2), 2800);
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
    EXPECT_LT(time.elapsed(), 900);
    goOn();
}
