// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/OwnProcesses.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool write(const char *path, const std::string &text)
{
    std::ofstream file(path);
    file << text;
    file.close();
    return bool(file);
}

/// As fork(), but the child is the first process of a namespace of its own. Its user is still unnamed there,
/// unless it is root.
pid_t forkIntoNamespace()
{
    std::fflush(nullptr);
    const int ofUser = ::getuid() == 0 ? 0 : CLONE_NEWUSER;
    return pid_t(::syscall(SYS_clone, CLONE_NEWPID | CLONE_NEWNS | ofUser | SIGCHLD, 0, 0, 0, 0));
}

/// Makes the child of forkIntoNamespace() the \a user and \a group that its parent is.
bool nameUser(uid_t user, gid_t group)
{
    return user == 0 ||
           (write("/proc/self/setgroups", "deny") &&
            write("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1") &&
            write("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1"));
}

/// What /proc shows becomes the namespace of this process.
bool showOwnProcesses()
{
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == 0;
}

/// Waits until \a child ends, and returns its exit status. The first process of a namespace is given those
/// that lost their parent; they are waited for in the meantime.
int waitFor(pid_t child)
{
    for (;;) {
        int status = 0;
        const pid_t ended = ::waitpid(-1, &status, 0);
        if (ended == child)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        if (ended == -1 && errno != EINTR)
            return EXIT_FAILURE;
    }
}

int runHere(const std::function<int()> &run)
{
    std::fputs(
        "The system gives the tests no process namespace. Those that end the helper refuse to run while the "
        "user's helper runs: quit it first.\n",
        stderr);
    return run();
}

/// The status by which the first process of the namespace says that it could not be set up.
constexpr int notSetUp = 125;

} // namespace

int runInOwnProcesses(const std::function<int()> &run)
{
    if (std::getenv("QUENBY_TESTS_OWN_PROCESSES") == nullptr)
        return run();
    const uid_t user = ::getuid();
    const gid_t group = ::getgid();
    const pid_t first = forkIntoNamespace();
    if (first != 0) {
        const int status = first == -1 ? notSetUp : waitFor(first);
        return status == notSetUp ? runHere(run) : status;
    }

    // The namespace ends with the program that was started, and with it all of its processes.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (!nameUser(user, group) || !showOwnProcesses())
        ::_exit(notSetUp);
    const pid_t tests = ::fork();
    if (tests != 0)
        ::_exit(tests == -1 ? notSetUp : waitFor(tests));
    return run();
}
