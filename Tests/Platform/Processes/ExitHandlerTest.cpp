// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ExitHandler.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace std::chrono_literals;
using ::testing::EndsWith;

namespace {

constexpr int exitCode = 3;

void say(const char *line)
{
    std::fprintf(stderr, "%s\n", line);
}

/// Something static that is made after the handler.
struct MadeLate
{
    ~MadeLate() { say("static destroyed"); }
};

/// Each test ends a process of its own.
class ExitHandlerDeathTest : public ::testing::Test
{
protected:
    // Others have threads by now, which a mere copy of the process would lack.
    ExitHandlerDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

[[noreturn]] void exitInTheMiddle()
{
    const ExitHandler handler([] { say("handled"); }, 60s);
    static const MadeLate late;
    say("exit");
    std::exit(exitCode);
}

[[noreturn]] void exitAfterwards()
{
    {
        const ExitHandler handler([] { say("handled"); }, 60s);
    }
    static const MadeLate late;
    say("exit");
    std::exit(exitCode);
}

[[noreturn]] void exitInTheHandlerToo()
{
    const ExitHandler handler(
        [] {
            say("handled");
            std::exit(exitCode + 1);
        },
        60s);
    say("exit");
    std::exit(exitCode);
}

[[noreturn]] void exitWithAHandlerThatHangs()
{
    const ExitHandler handler(
        [] {
            for (;;)
                ::pause();
        },
        1s);
    say("exit");
    std::exit(exitCode);
}

} // namespace

TEST_F(ExitHandlerDeathTest, CallsBeforeAnythingStaticIsDestroyed)
{
    EXPECT_EXIT(exitInTheMiddle(), ::testing::ExitedWithCode(exitCode),
                EndsWith("exit\nhandled\nstatic destroyed\n"));
}

TEST_F(ExitHandlerDeathTest, CallsNothingAfterTheOrdinaryWayOut)
{
    EXPECT_EXIT(exitAfterwards(), ::testing::ExitedWithCode(exitCode), EndsWith("exit\nstatic destroyed\n"));
}

TEST_F(ExitHandlerDeathTest, CallsOnceWhenTheHandlerExitsItself)
{
    EXPECT_EXIT(exitInTheHandlerToo(), ::testing::ExitedWithCode(exitCode + 1), EndsWith("exit\nhandled\n"));
}

TEST_F(ExitHandlerDeathTest, EndsTheProcessWhenTheHandlerHangs)
{
    EXPECT_EXIT(exitWithAHandlerThatHangs(), ::testing::KilledBySignal(SIGALRM), EndsWith("exit\n"));
}
