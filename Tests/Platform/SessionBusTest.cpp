// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/SessionBus.h"

#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;
using SessionBus::Answer;

namespace {

class SessionBusAddressTest : public ::testing::Test
{
protected:
    SessionBusAddressTest()
        : address_(qgetenv(SessionBus::addressVariable))
        , runtimeFolder_(qgetenv("XDG_RUNTIME_DIR"))
    {
    }
    ~SessionBusAddressTest() override
    {
        qputenv(SessionBus::addressVariable, address_);
        qputenv("XDG_RUNTIME_DIR", runtimeFolder_);
    }

private:
    const QByteArray address_;
    const QByteArray runtimeFolder_;
};

} // namespace

TEST_F(SessionBusAddressTest, IsWhatTheEnvironmentNames)
{
    qputenv(SessionBus::addressVariable, "unix:path=/some/where");
    EXPECT_EQ(SessionBus::address(), QStringLiteral("unix:path=/some/where"));
}

TEST_F(SessionBusAddressTest, IsTheRuntimeFoldersBusByDefault)
{
    qunsetenv(SessionBus::addressVariable);
    qputenv("XDG_RUNTIME_DIR", "/run/a b,c");
    EXPECT_EQ(SessionBus::address(), QStringLiteral("unix:path=/run/a%20b%2Cc/bus"));
}

TEST_F(SessionBusAddressTest, IsNoneWithoutEither)
{
    qunsetenv(SessionBus::addressVariable);
    qunsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(SessionBus::address(), SessionBus::noBusAddress);
    EXPECT_EQ(SessionBus::ask(SessionBus::address(), 1s), Answer::Nobody);
}

TEST_F(SessionBusAddressTest, OneThatAnswersIsKept)
{
    const PrivateBus bus;
    qputenv(SessionBus::addressVariable, bus.address().toUtf8());
    EXPECT_TRUE(SessionBus::keepIfItAnswers(5s));
    EXPECT_EQ(SessionBus::address(), bus.address());
}

TEST_F(SessionBusAddressTest, OneThatIsSilentIsTakenAway)
{
    const SilentSocket silent;
    qputenv(SessionBus::addressVariable, silent.busAddress().toUtf8());
    EXPECT_FALSE(SessionBus::keepIfItAnswers(50ms));
    EXPECT_EQ(SessionBus::address(), SessionBus::noBusAddress);
}

TEST(SessionBusTest, ARunningBusAnswers)
{
    const PrivateBus bus;
    EXPECT_EQ(SessionBus::ask(bus.address(), 5s), Answer::Yes);
    EXPECT_EQ(SessionBus::ask(bus.address() + QStringLiteral(",guid=0123"), 5s), Answer::Yes);
}

TEST(SessionBusTest, AnyOfSeveralAddressesWillDo)
{
    const PrivateBus bus;
    EXPECT_EQ(
        SessionBus::ask(QStringLiteral("tcp:host=localhost;unix:path=/nowhere/bus;") + bus.address(), 5s),
        Answer::Yes);
}

TEST(SessionBusTest, EscapesInAPathAreResolved)
{
    const PrivateBus bus;
    QString escaped = bus.address();
    escaped.replace(QStringLiteral("/bus"), QStringLiteral("/%62us"));
    EXPECT_EQ(SessionBus::ask(escaped, 5s), Answer::Yes);
}

TEST(SessionBusTest, NobodyListensOnAStaleSocket)
{
    PrivateBus bus;
    bus.kill();
    EXPECT_EQ(SessionBus::ask(bus.address(), 5s), Answer::Nobody);
}

TEST(SessionBusTest, ASilentSocketIsWaitedForUntilTheTimeout)
{
    const SilentSocket silent;
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(SessionBus::ask(silent.busAddress(), 100ms), Answer::Silence);
    EXPECT_GE(timer.elapsed(), 99);
    EXPECT_LT(timer.elapsed(), 1000);
}

TEST(SessionBusTest, AFullQueueOfConnectionsIsSilence)
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

    EXPECT_EQ(SessionBus::ask(QStringLiteral("unix:path=") + QString::fromUtf8(path), 100ms),
              Answer::Silence);
    ::close(occupying);
    ::close(listening);
}

TEST(SessionBusTest, APathLongerThanASocketsNameIsNobody)
{
    EXPECT_EQ(SessionBus::ask(QStringLiteral("unix:path=/") + QString(200, u'x'), 5s), Answer::Nobody);
}
