// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ForkedProcess.h"

#include <csignal>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The status with which the child has ended.
int statusOf(const std::function<void()> &work)
{
    const pid_t child = ::fork();
    EXPECT_NE(child, -1);
    if (child == 0) {
        work();
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

} // namespace

void ForkedProcess::run(const std::function<void()> &work)
{
    const int status = statusOf(work);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

void ForkedProcess::runAsOrdinaryUser(const QByteArrayList &folders, const std::function<void()> &work)
{
    if (::geteuid() != 0) {
        run(work);
        return;
    }
    const passwd *nobody = ::getpwnam("nobody");
    ASSERT_NE(nobody, nullptr);
    for (const QByteArray &folder : folders)
        ASSERT_EQ(::chown(folder.constData(), nobody->pw_uid, nobody->pw_gid), 0) << folder.constData();
    run([&] {
        ASSERT_EQ(::setgroups(0, nullptr), 0);
        ASSERT_EQ(::setresgid(nobody->pw_gid, nobody->pw_gid, nobody->pw_gid), 0);
        ASSERT_EQ(::setresuid(nobody->pw_uid, nobody->pw_uid, nobody->pw_uid), 0);
        work();
    });
}

bool ForkedProcess::isKilled(const std::function<void()> &work)
{
    const int status = statusOf(work);
    EXPECT_TRUE((WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) ||
                (WIFEXITED(status) && WEXITSTATUS(status) == 0));
    return WIFSIGNALED(status);
}
