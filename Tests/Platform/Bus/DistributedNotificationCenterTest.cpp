// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/DistributedNotificationCenter.h"

#include "Platform/Bus/SessionBus.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

const QString changed = QStringLiteral("ConfigurationChanged");

/// The time \a action takes, in milliseconds.
template <typename Action>
qint64 duration(Action action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    return timer.elapsed();
}

/// Where a bus should be: whoever connects is disconnected at once.
class EndingSocket
{
public:
    EndingSocket()
        : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const QByteArray path = QFile::encodeName(folder_.filePath(name_));
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        EXPECT_EQ(::bind(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(descriptor_, 1), 0);
    }
    ~EndingSocket() { ::close(descriptor_); }
    EndingSocket(const EndingSocket &) = delete;
    EndingSocket &operator=(const EndingSocket &) = delete;

    QString busAddress() const { return QStringLiteral("unix:path=") + folder_.filePath(name_); }
    /// How many have connected by now.
    int connections()
    {
        for (int client = ::accept(descriptor_, nullptr, nullptr); client >= 0;
             client = ::accept(descriptor_, nullptr, nullptr)) {
            ++connections_;
            ::close(client);
        }
        return connections_;
    }

private:
    const QString name_ = QStringLiteral("bus");
    const QTemporaryDir folder_;
    const int descriptor_;
    int connections_ = 0;
};

std::atomic<int> linesOfAbsence;

void countLinesOfAbsence(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (text.contains(u"no bus at"))
        ++linesOfAbsence;
}

} // namespace

TEST(DistributedNotificationCenterTest, AMissingBusIsToldOnceHoweverOftenItIsLookedFor)
{
    EndingSocket socket;
    linesOfAbsence = 0;
    const QtMessageHandler before = qInstallMessageHandler(countLinesOfAbsence);
    {
        DistributedNotificationCenter centre(std::make_shared<SessionBus>(socket.busAddress()));
        centre.addObserver(changed, [] {});
        EXPECT_TRUE(waitUntil([&] { return socket.connections() >= 3; }, 30s));
    }
    qInstallMessageHandler(before);
    EXPECT_EQ(linesOfAbsence, 1);
}

TEST(DistributedNotificationCenterTest, ANotificationIsASignalWithoutArguments)
{
    const PrivateBus bus;
    NotificationListener listener(bus.address());
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
    centre.postNotificationName(changed);
    ASSERT_TRUE(waitUntil([&] { return !listener.heard().isEmpty(); }));
    EXPECT_EQ(listener.heard().constFirst(), "path=/org/quenby/DistributedNotificationCenter; "
                                             "interface=org.quenby.DistributedNotificationCenter; "
                                             "member=ConfigurationChanged");
}

TEST(DistributedNotificationCenterTest, NotificationsKeepTheirOrder)
{
    const PrivateBus bus;
    NotificationListener listener(bus.address());
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
    constexpr int count = 300;
    for (int number = 0; number < count; ++number)
        centre.postNotificationName(QStringLiteral("Number%1").arg(number));
    EXPECT_TRUE(centre.flush());
    ASSERT_TRUE(waitUntil([&] { return listener.heard().size() == count; }));
    const QList<QByteArray> heard = listener.heard();
    for (int number = 0; number < count; ++number)
        ASSERT_TRUE(heard.at(number).endsWith("member=Number" + QByteArray::number(number))) << number;
}

TEST(DistributedNotificationCenterTest, NothingPostedJustBeforeTheEndIsLost)
{
    const PrivateBus bus;
    NotificationListener listener(bus.address());
    constexpr int count = 50;
    for (int number = 0; number < count; ++number) {
        DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
        centre.postNotificationName(changed);
    }
    EXPECT_TRUE(waitUntil([&] { return listener.count("ConfigurationChanged") == count; }))
        << listener.count("ConfigurationChanged");
}

TEST(DistributedNotificationCenterTest, ObserversHearOtherCentresAndTheirOwnOnce)
{
    const PrivateBus bus;
    DistributedNotificationCenter one(std::make_shared<SessionBus>(bus.address()));
    DistributedNotificationCenter other(std::make_shared<SessionBus>(bus.address()));
    int heardByOne = 0;
    int heardByOther = 0;
    int heardOfAnotherName = 0;
    one.addObserver(changed, [&] { ++heardByOne; });
    one.addObserver(QStringLiteral("SomethingElse"), [&] { ++heardOfAnotherName; });
    other.addObserver(changed, [&] { ++heardByOther; });
    ASSERT_TRUE(one.flush());
    ASSERT_TRUE(other.flush());

    one.postNotificationName(changed);
    EXPECT_TRUE(waitUntil([&] { return heardByOne >= 1 && heardByOther >= 1; }));
    other.postNotificationName(changed);
    EXPECT_TRUE(waitUntil([&] { return heardByOne >= 2 && heardByOther >= 2; }));
    one.postNotificationName(QStringLiteral("SomethingElse"));
    EXPECT_TRUE(waitUntil([&] { return heardOfAnotherName == 1; }));
    EXPECT_EQ(heardByOne, 2);
    EXPECT_EQ(heardByOther, 2);
}

TEST(DistributedNotificationCenterTest, TwoObserversOfOneNameAreBothCalledOnTheirThread)
{
    const PrivateBus bus;
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
    QList<QThread *> threads;
    centre.addObserver(changed, [&] { threads.append(QThread::currentThread()); });
    centre.addObserver(changed, [&] { threads.append(QThread::currentThread()); });
    centre.postNotificationName(changed);
    ASSERT_TRUE(waitUntil([&] { return threads.size() >= 2; }));
    EXPECT_EQ(threads, QList<QThread *>(2, QThread::currentThread()));
}

TEST(DistributedNotificationCenterTest, AnObserverIsNotCalledOnceTheCentreHasGone)
{
    const PrivateBus bus;
    NotificationListener listener(bus.address());
    int heard = 0;
    {
        DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
        centre.addObserver(changed, [&] { ++heard; });
        centre.postNotificationName(changed);
    }
    ASSERT_TRUE(waitUntil([&] { return listener.count("ConfigurationChanged") == 1; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(heard, 0);
}

TEST(DistributedNotificationCenterTest, WithoutABusNothingHappensAtOnce)
{
    const QStringList addresses = {BusProbe::noBusAddress, QString(), QStringLiteral("nonsense"),
                                   QStringLiteral("unix:path=/nowhere/bus")};
    for (const QString &address : addresses) {
        EXPECT_LT(duration([&] {
                      DistributedNotificationCenter centre(std::make_shared<SessionBus>(address));
                      centre.addObserver(changed, [] {});
                      centre.postNotificationName(changed);
                      EXPECT_FALSE(centre.flush());
                  }),
                  500)
            << qPrintable(address);
    }
}

TEST(DistributedNotificationCenterTest, AStaleSocketIsNoBus)
{
    PrivateBus bus;
    bus.kill();
    EXPECT_LT(duration([&] {
                  DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
                  centre.postNotificationName(changed);
                  EXPECT_FALSE(centre.flush());
              }),
              500);
}

TEST(DistributedNotificationCenterTest, ASilentBusDelaysNeitherPostingNorTheEndForLong)
{
    const SilentSocket silent;
    std::optional<DistributedNotificationCenter> centre;
    EXPECT_LT(duration([&] {
                  centre.emplace(std::make_shared<SessionBus>(silent.busAddress()));
                  for (int number = 0; number < 1000; ++number)
                      centre->postNotificationName(changed);
              }),
              200);
    EXPECT_LT(duration([&] { EXPECT_FALSE(centre->flush()); }), 1500);
    // By now the bus is known to be silent, and is not asked again.
    centre->postNotificationName(changed);
    EXPECT_LT(duration([&] { centre.reset(); }), 1500);
}

TEST(DistributedNotificationCenterTest, ABusThatFallsSilentDelaysTheEndOnlyAMoment)
{
    PrivateBus bus;
    std::optional<DistributedNotificationCenter> centre;
    centre.emplace(std::make_shared<SessionBus>(bus.address()));
    centre->postNotificationName(changed);
    ASSERT_TRUE(centre->flush());
    bus.process().signal(SIGSTOP);
    centre->postNotificationName(changed);
    EXPECT_LT(duration([&] { EXPECT_FALSE(centre->flush(200ms)); }), 700);
    centre->postNotificationName(changed);
    EXPECT_LT(duration([&] { centre.reset(); }), 2500);
}

TEST(DistributedNotificationCenterTest, ABusThatDiesIsSurvivedAndFoundAgain)
{
    PrivateBus bus;
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus.address()));
    int heard = 0;
    centre.addObserver(changed, [&] { ++heard; });
    centre.postNotificationName(changed);
    ASSERT_TRUE(waitUntil([&] { return heard == 1; }));

    bus.kill();
    centre.postNotificationName(changed);
    EXPECT_FALSE(centre.flush());

    bus.start();
    NotificationListener listener(bus.address());
    centre.postNotificationName(changed);
    EXPECT_TRUE(centre.flush());
    EXPECT_TRUE(waitUntil([&] { return listener.count("ConfigurationChanged") >= 1; }));
    EXPECT_TRUE(waitUntil([&] { return heard >= 2; }));
}

TEST(DistributedNotificationCenterTest, AnObserverHearsAgainWhenADeadBusComesBack)
{
    PrivateBus bus;
    DistributedNotificationCenter observing(std::make_shared<SessionBus>(bus.address()));
    int heard = 0;
    observing.addObserver(changed, [&] { ++heard; });
    ASSERT_TRUE(observing.flush());
    bus.kill();
    bus.start();
    DistributedNotificationCenter posting(std::make_shared<SessionBus>(bus.address()));
    EXPECT_TRUE(waitUntil([&] {
        posting.postNotificationName(changed);
        posting.flush();
        return heard > 0;
    }));
}
