// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"
#include "Tests/Session/SilentSocket.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <csignal>

using namespace std::chrono_literals;

namespace {

/// The real program on a real screen, with accessibility on, which speaks over the bus too.
class SilentBusTest : public ::testing::Test
{
protected:
    SilentBusTest()
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

    /// The host paints within a second, ends soon after, and has saved everything.
    void expectNoDelay(const QString &busAddress)
    {
        ASSERT_TRUE(domain_.write(DomainFile::Form::Binary));
        const std::chrono::nanoseconds start = std::chrono::steady_clock::now().time_since_epoch();
        QElapsedTimer timer;
        timer.start();
        const auto host = startHost(busAddress, true);
        ASSERT_TRUE(host->waitForEnd());
        EXPECT_LT(timer.elapsed(), 2500);
        EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
        static const QRegularExpression line(QStringLiteral("first-paint-ns: ([0-9]+)\n"));
        const QRegularExpressionMatch match = line.match(QString::fromUtf8(host->errors()));
        ASSERT_TRUE(match.hasMatch()) << host->errors().constData();
        EXPECT_LT(match.captured(1).toLongLong() - start.count(), 1'000'000'000);
        EXPECT_EQ(domain_.differences().toStdString(), "");
    }

    const TemporaryHome home_;
    const PaneCopy pane_;
    const VirtualScreen screen_;
    const DomainFile domain_;
};

} // namespace

TEST_F(SilentBusTest, AnAbsentBusDelaysNothing)
{
    expectNoDelay({});
}

TEST_F(SilentBusTest, AStaleBusDelaysNothing)
{
    PrivateBus bus;
    bus.kill();
    expectNoDelay(bus.address());
}

TEST_F(SilentBusTest, ASilentBusDelaysNothing)
{
    const SilentSocket silent;
    expectNoDelay(silent.busAddress());
}

TEST_F(SilentBusTest, ABusThatStopsWhileTheWindowIsOpenDelaysTheEndOnlyAMoment)
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

TEST_F(SilentBusTest, ABusThatDiesWhileTheWindowIsOpenIsSurvived)
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
