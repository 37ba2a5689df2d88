// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/Series.h"
#include "Tests/Session/TemporaryHome.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/// What a crash may take at the most.
constexpr auto longestLoss = 3s;
constexpr int usersAtOnce = 10;
/// A pane is killed at the latest then: long enough for several saves and recovery files.
constexpr std::chrono::milliseconds longestRun = 6s;
constexpr std::chrono::seconds patience = 60s;

/// Somebody who edits, is interrupted by a crash, starts again and restores what is offered, and so on.
class User
{
public:
    void start()
    {
        host_ = std::make_unique<ChildProcess>(QStringLiteral(QUENBY_EDIT_WITHOUT_END), QStringList(),
                                               home_.environment());
    }
    /// Waits for the number of the edit that the pane found; -1 if it found none.
    long long found()
    {
        const QByteArray begin("starts ");
        waitUntil([&] { return host_->output().contains('\n'); }, patience);
        const QByteArray line = host_->output().split('\n').constFirst();
        return line.startsWith(begin) ? line.mid(begin.size()).toLongLong() : -1;
    }
    /// The number of the last edit that must have survived.
    long long kill()
    {
        const auto time = Clock::now().time_since_epoch();
        host_->signal(SIGKILL);
        EXPECT_TRUE(host_->waitForEnd());
        long long last = 0;
        const QList<QByteArray> lines = host_->output().split('\n').mid(1);
        for (const QByteArray &line : lines) {
            const QList<QByteArray> parts = line.split(' ');
            if (parts.size() == 2 && time - std::chrono::nanoseconds(parts.at(1).toLongLong()) > longestLoss)
                last = std::max(last, parts.at(0).toLongLong());
        }
        return last;
    }

private:
    const TemporaryHome home_;
    std::unique_ptr<ChildProcess> host_;
};

} // namespace

TEST(KilledPaneTest, AtMostTheLastThreeSecondsAreLost)
{
    const int kills = seriesOf(usersAtOnce, 300);
    std::mt19937 random{std::random_device()()};
    std::vector<User> users(usersAtOnce);
    std::vector<long long> survivors(usersAtOnce, 0);
    long long mustHaveSurvived = 0;
    for (int kill = 0; kill < kills; kill += usersAtOnce) {
        std::vector<std::pair<Clock::time_point, std::size_t>> ends;
        for (User &user : users)
            user.start();
        for (std::size_t number = 0; number < users.size(); ++number) {
            ASSERT_GE(users.at(number).found(), survivors.at(number)) << "after " << kill << " kills";
            const int run = std::uniform_int_distribution(0, int(longestRun.count()))(random);
            ends.emplace_back(Clock::now() + std::chrono::milliseconds(run), number);
        }
        std::sort(ends.begin(), ends.end());
        for (const auto &[time, number] : ends) {
            waitUntil([&] { return Clock::now() >= time; }, longestRun);
            const long long last = users.at(number).kill();
            survivors.at(number) = std::max(survivors.at(number), last);
            mustHaveSurvived += last > 0 ? 1 : 0;
        }
    }
    for (std::size_t number = 0; number < users.size(); ++number) {
        users.at(number).start();
        EXPECT_GE(users.at(number).found(), survivors.at(number));
        users.at(number).kill();
    }
    EXPECT_GT(mustHaveSurvived, 0) << "nobody has worked long enough";
}
