// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"

#include <csignal>

namespace {

struct Way
{
    const char *name;
    DomainFile::Form form;
    int signal;
};

class LeavingTest : public ::testing::TestWithParam<Way>
{
protected:
    QuenbySession session_;
};

} // namespace

TEST_P(LeavingTest, KeepsEverythingAndTellsTheHelperOnce)
{
    ASSERT_TRUE(session_.domain().write(GetParam().form));
    const quint64 before = session_.domain().identity();
    const auto host = session_.startHost();
    ASSERT_TRUE(QuenbySession::waitUntilItCatchesSignals(*host));
    host->signal(GetParam().signal);
    ASSERT_TRUE(host->waitForEnd());
    EXPECT_TRUE(host->hasReturned(0)) << host->errors().constData();
    EXPECT_NE(session_.domain().identity(), before);
    EXPECT_EQ(session_.domain().differences().toStdString(), "");
    EXPECT_TRUE(session_.waitForNotifications(1)) << session_.notifications();
}

INSTANTIATE_TEST_SUITE_P(Ways, LeavingTest,
                         ::testing::Values(Way{"XMLBySIGTERM", DomainFile::Form::XML, SIGTERM},
                                           Way{"BinaryBySIGTERM", DomainFile::Form::Binary, SIGTERM},
                                           Way{"BinaryBySIGINT", DomainFile::Form::Binary, SIGINT},
                                           Way{"BinaryBySIGHUP", DomainFile::Form::Binary, SIGHUP}),
                         [](const auto &way) { return std::string(way.param.name); });
