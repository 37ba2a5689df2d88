// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/SilentSocket.h"
#include "Tests/Session/VirtualScreen.h"

#include <QElapsedTimer>

#include <csignal>

using namespace std::chrono_literals;

namespace {

/// The real program on a real screen, with accessibility on, which speaks over the bus too.
class UnusableBusTest : public ::testing::Test
{
protected:
    UnusableBusTest()
        : pane_(home_.path())
        , screen_(home_)
        , domain_(home_.configFolder())
    {
    }

    std::unique_ptr<ChildProcess> startHost(const QString &busAddress, bool endsAfterFirstPaint) const
    {
        QProcessEnvironment environment = screen_.environmentFrom(home_.environment(busAddress));
        if (endsAfterFirstPaint)
            environment.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
        return std::make_unique<ChildProcess>(QStringLiteral(QUENBY_PREFERENCES), QStringList(pane_.path()),
                                              environment);
    }

    /// The host paints, ends and has saved everything long before the 25 seconds for which the bus library
    /// waits for an answer.
    void expectNoLongDelay(const QString &busAddress)
    {
        ASSERT_TRUE(domain_.write(DomainFile::Form::Binary));
        const auto host = startHost(busAddress, true);
        ASSERT_TRUE(host->waitForEnd(10s));
        EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
        EXPECT_TRUE(host->errors().contains("first-paint-ns: ")) << host->errors().constData();
        EXPECT_EQ(domain_.differences().toStdString(), "");
    }

    const TemporaryHome home_;
    const PaneCopy pane_;
    const VirtualScreen screen_;
    const DomainFile domain_;
};

} // namespace

TEST_F(UnusableBusTest, AnAbsentOneDoesNotKeepTheWindowWaiting)
{
    expectNoLongDelay({});
}

TEST_F(UnusableBusTest, AStaleOneDoesNotKeepTheWindowWaiting)
{
    PrivateBus bus;
    bus.kill();
    expectNoLongDelay(bus.address());
}

TEST_F(UnusableBusTest, ASilentOneDoesNotKeepTheWindowWaiting)
{
    const SilentSocket silent;
    expectNoLongDelay(silent.busAddress());
}

TEST_F(UnusableBusTest, OneThatIsStoppedAtTheStartHearsOfTheSavesOnceItAnswers)
{
    PrivateBus bus;
    NotificationListener listener(bus.address());
    ASSERT_TRUE(domain_.write(DomainFile::Form::Binary));
    bus.process().signal(SIGSTOP);
    QElapsedTimer stopped;
    stopped.start();
    const auto host = startHost(bus.address(), false);
    ASSERT_FALSE(screen_.windowOf(host->pid()).isEmpty());
    ASSERT_TRUE(waitUntil([&] { return stopped.hasExpired(3000); }));
    bus.process().signal(SIGCONT);
    host->signal(SIGTERM);
    ASSERT_TRUE(host->waitForEnd());
    EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
    EXPECT_TRUE(waitUntil([&] { return listener.count("QNBPresetConfigurationChangedNotification") > 0; }));
}

TEST_F(UnusableBusTest, OneThatStopsWhileTheWindowIsOpenDelaysTheEndOnlyAMoment)
{
    PrivateBus bus;
    ASSERT_TRUE(domain_.write(DomainFile::Form::Binary));
    const auto host = startHost(bus.address(), false);
    ASSERT_FALSE(screen_.windowOf(host->pid()).isEmpty());
    bus.process().signal(SIGSTOP);
    QElapsedTimer timer;
    timer.start();
    host->signal(SIGTERM);
    ASSERT_TRUE(host->waitForEnd());
    EXPECT_LT(timer.elapsed(), 3000);
    EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
    EXPECT_EQ(domain_.differences().toStdString(), "");
}

TEST_F(UnusableBusTest, OneThatDiesWhileTheWindowIsOpenIsSurvived)
{
    PrivateBus bus;
    ASSERT_TRUE(domain_.write(DomainFile::Form::Binary));
    const auto host = startHost(bus.address(), false);
    ASSERT_FALSE(screen_.windowOf(host->pid()).isEmpty());
    bus.kill();
    host->signal(SIGTERM);
    ASSERT_TRUE(host->waitForEnd());
    EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
    EXPECT_EQ(domain_.differences().toStdString(), "");
}
