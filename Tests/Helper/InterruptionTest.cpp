// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Interruption.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>

namespace {

bool canBeRead(int descriptor)
{
    pollfd file = {descriptor, POLLIN, 0};
    return ::poll(&file, 1, 0) == 1;
}

/// As both ways to ask agree; they have to.
bool isRequested(const Interruption &interruption)
{
    const bool requested = interruption.isRequested();
    if (canBeRead(interruption.descriptor()) != requested)
        std::abort();
    return requested;
}

} // namespace

// Each in a process of its own, which a signal may end.

TEST(InterruptionDeathTest, ASignalIsARequest)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                const Interruption interruption;
                const bool before = isRequested(interruption);
                std::raise(number);
                std::exit(!before && isRequested(interruption) ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "");
    }
}

TEST(InterruptionDeathTest, TheSecondOneEndsTheProcess)
{
    EXPECT_EXIT(
        {
            const Interruption interruption;
            std::raise(SIGTERM);
            std::raise(SIGTERM);
            std::exit(0);
        },
        ::testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptionDeathTest, OneThatIsIgnoredStaysIgnored)
{
    EXPECT_EXIT(
        {
            std::signal(SIGHUP, SIG_IGN);
            const Interruption interruption;
            std::raise(SIGHUP);
            std::exit(isRequested(interruption) ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
}
