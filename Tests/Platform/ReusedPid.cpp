// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ReusedPid.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <linux/sched.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Twice the most ids that the kernel gives out.
constexpr int mostTries = 2 * 4'194'304;
/// The ids between are for whoever else starts a process meanwhile.
constexpr pid_t near = 20;

void putLine(const char *path, const QByteArray &line)
{
    QFile file(QString::fromLatin1(path));
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        file.write(line);
}

/// A table for the children of this process, and mounts of its own: as the administrator, or as one within.
bool leaveTable()
{
    if (::unshare(CLONE_NEWPID | CLONE_NEWNS) == 0)
        return true;
    const QByteArray user = QByteArray::number(::geteuid());
    const QByteArray group = QByteArray::number(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNS) != 0)
        return false;
    putLine("/proc/self/setgroups", "deny");
    putLine("/proc/self/uid_map", user + ' ' + user + " 1");
    putLine("/proc/self/gid_map", group + ' ' + group + " 1");
    return true;
}

bool showTable(const QByteArray &folder)
{
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("proc", folder.constData(), "proc", 0, nullptr) == 0;
}

template <typename Work>
bool inChild(Work work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work() ? 0 : 1);
    int status = -1;
    return child != -1 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

[[noreturn]] void waitToBeEnded()
{
    while (true)
        ::pause();
}

pid_t forkWithPid(pid_t wanted)
{
    clone_args arguments = {};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = reinterpret_cast<std::uintptr_t>(&wanted);
    arguments.set_tid_size = 1;
    return pid_t(::syscall(SYS_clone3, &arguments, sizeof arguments));
}

/// An id that was just given to a process that ended at once.
pid_t spendPid()
{
    const pid_t child = ::vfork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

} // namespace

bool ReusedPid::run(const std::function<bool(const QString &root)> &scenario)
{
    const QTemporaryDir folder;
    const QString proc = QStringLiteral("/proc");
    return inChild([&] {
        if (!leaveTable())
            return scenario(proc);
        return inChild(
            [&] { return showTable(QFile::encodeName(folder.path())) && scenario(folder.path()); });
    });
}

pid_t ReusedPid::startWaiting()
{
    const pid_t child = ::fork();
    if (child == 0)
        waitToBeEnded();
    return child;
}

pid_t ReusedPid::startWaiting(pid_t wanted)
{
    const pid_t asked = forkWithPid(wanted);
    if (asked == 0)
        waitToBeEnded();
    if (asked != -1)
        return asked;
    for (int tries = 0; tries < mostTries; ++tries) {
        const pid_t spent = spendPid();
        if (spent >= wanted || spent < wanted - near)
            continue;
        const pid_t child = ::fork();
        if (child == 0) {
            if (::getpid() == wanted)
                waitToBeEnded();
            ::_exit(0);
        }
        if (child == wanted)
            return child;
        ::waitpid(child, nullptr, 0);
    }
    return -1;
}
