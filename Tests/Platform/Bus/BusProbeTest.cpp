// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/BusProbe.h"

#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using BusProbe::Answer;

namespace {

class BusProbeAddressTest : public ::testing::Test
{
protected:
    BusProbeAddressTest()
        : address_(qgetenv(BusProbe::addressVariable))
        , runtimeFolder_(qgetenv("XDG_RUNTIME_DIR"))
    {
    }
    ~BusProbeAddressTest() override
    {
        qputenv(BusProbe::addressVariable, address_);
        qputenv("XDG_RUNTIME_DIR", runtimeFolder_);
    }

private:
    const QByteArray address_;
    const QByteArray runtimeFolder_;
};

} // namespace

TEST_F(BusProbeAddressTest, IsWhatTheEnvironmentNames)
{
    qputenv(BusProbe::addressVariable, "unix:path=/some/where");
    EXPECT_EQ(BusProbe::address(), QStringLiteral("unix:path=/some/where"));
}

TEST_F(BusProbeAddressTest, IsTheRuntimeFoldersBusByDefault)
{
    qunsetenv(BusProbe::addressVariable);
    qputenv("XDG_RUNTIME_DIR", "/run/a b,c");
    EXPECT_EQ(BusProbe::address(), QStringLiteral("unix:path=/run/a%20b%2Cc/bus"));
}

TEST_F(BusProbeAddressTest, IsNoneWithoutEither)
{
    qunsetenv(BusProbe::addressVariable);
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(BusProbe::address(), BusProbe::noBusAddress);
    EXPECT_EQ(BusProbe::ask(BusProbe::address(), 1s), Answer::Nobody);
}

TEST_F(BusProbeAddressTest, OneThatIsSilentKeepsNobodyWaitingAndStaysInTheEnvironment)
{
    const SilentSocket silent;
    qputenv(BusProbe::addressVariable, silent.busAddress().toUtf8());
    EXPECT_FALSE(BusProbe::keepLibraryFromWaiting(50ms));
    QElapsedTimer time;
    time.start();
    EXPECT_FALSE(BusProbe::libraryHasBus());
    EXPECT_LT(time.elapsed(), 1000);
    EXPECT_EQ(qgetenv(BusProbe::addressVariable), silent.busAddress().toUtf8());
    QDBusConnection::disconnectFromBus(QStringLiteral("qt_default_session_bus"));
}

TEST(BusProbeTest, ARunningBusAnswers)
{
    const PrivateBus bus;
    EXPECT_EQ(BusProbe::ask(bus.address(), 5s), Answer::Yes);
    EXPECT_EQ(BusProbe::ask(bus.address() + QStringLiteral(",guid=0123"), 5s), Answer::Yes);
}

TEST(BusProbeTest, AnyOfSeveralAddressesWillDo)
{
    const PrivateBus bus;
    EXPECT_EQ(BusProbe::ask(QStringLiteral("tcp:host=localhost;unix:path=/nowhere/bus;") + bus.address(), 5s),
              Answer::Yes);
}

TEST(BusProbeTest, EscapesInAPathAreResolved)
{
    const PrivateBus bus;
    QString escaped = bus.address();
    escaped.replace(QStringLiteral("/bus"), QStringLiteral("/%62us"));
    EXPECT_EQ(BusProbe::ask(escaped, 5s), Answer::Yes);
}

TEST(BusProbeTest, NobodyListensOnAStaleSocket)
{
    PrivateBus bus;
    bus.kill();
    EXPECT_EQ(BusProbe::ask(bus.address(), 5s), Answer::Nobody);
}

TEST(BusProbeTest, ASilentSocketIsWaitedForUntilTheTimeout)
{
    const SilentSocket silent;
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(BusProbe::ask(silent.busAddress(), 100ms), Answer::Silence);
    EXPECT_GE(timer.elapsed(), 99);
    EXPECT_LT(timer.elapsed(), 1000);
}

TEST(BusProbeTest, OneThatNeverStopsToSendIsSilence)
{
    const SilentSocket socket;
    std::thread sender([&socket] {
        const int client = ::accept(socket.descriptor(), nullptr, nullptr);
        const QByteArray much(1 << 16, 'x');
        while (::send(client, much.constData(), size_t(much.size()), MSG_NOSIGNAL) > 0) {
        }
        ::close(client);
    });
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(BusProbe::ask(socket.busAddress(), 100ms), Answer::Silence);
    EXPECT_LT(timer.elapsed(), 2000);
    sender.join();
}

TEST(BusProbeTest, AFullQueueOfConnectionsIsSilence)
{
    const QTemporaryDir folder;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray path = folder.filePath(QStringLiteral("full")).toUtf8();
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listening, 0), 0);
    const int occupying = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::connect(occupying, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);

    EXPECT_EQ(BusProbe::ask(QStringLiteral("unix:path=") + QString::fromUtf8(path), 100ms), Answer::Silence);
    ::close(occupying);
    ::close(listening);
}

TEST(BusProbeTest, APathLongerThanASocketsNameIsNobody)
{
    EXPECT_EQ(BusProbe::ask(QStringLiteral("unix:path=/") + QString(200, u'x'), 5s), Answer::Nobody);
}
