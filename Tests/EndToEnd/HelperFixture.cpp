// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/HelperFixture.h"

#include "Tests/EndToEnd/HelperProcesses.h"

#include <csignal>

HelperFixture::~HelperFixture()
{
    host_.reset();
    if (!hasBegun_)
        return;
    // Nobody else's, or the test would not have begun.
    const QList<qint64> left = helpers();
    for (const qint64 pid : left)
        ::kill(pid_t(pid), SIGKILL);
    EXPECT_TRUE(waitUntil([] { return helpers().isEmpty(); }));
}

void HelperFixture::SetUp()
{
    ASSERT_THAT(helpers(), ::testing::IsEmpty())
        << "A helper runs in this session. These tests end it by the pane's button: quit it first.";
    hasBegun_ = true;
}
