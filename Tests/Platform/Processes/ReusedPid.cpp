// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ReusedPid.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <ctime>
#include <linux/sched.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString kernelTable = QStringLiteral("/proc");

/// What the process of a scenario ends with.
enum Outcome { Holds, Fails, NotPossible };

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
Outcome inChild(Work work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    int status = -1;
    const bool hasEnded = child != -1 && ::waitpid(child, &status, 0) == child && WIFEXITED(status);
    return hasEnded ? Outcome(WEXITSTATUS(status)) : Fails;
}

Outcome outcome(bool holds)
{
    return holds ? Holds : Fails;
}

/// In the child, does not return.
pid_t waitIfChild(pid_t child)
{
    if (child == 0)
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    while (child == 0)
        ::pause();
    return child;
}

pid_t startWaiting()
{
    return waitIfChild(::fork());
}

/// Under an id that is free; -1 where ids cannot be chosen.
pid_t startWaiting(pid_t wanted)
{
    clone_args arguments = {};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = reinterpret_cast<std::uintptr_t>(&wanted);
    arguments.set_tid_size = 1;
    return waitIfChild(pid_t(::syscall(SYS_clone3, &arguments, sizeof arguments)));
}

bool end(pid_t child)
{
    return child > 0 && ::kill(child, SIGKILL) == 0 && ::waitpid(child, nullptr, 0) == child;
}

/// In which tick of its clock the kernel would say that a process started now was started.
long long tick()
{
    timespec time = {};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    const long perSecond = ::sysconf(_SC_CLK_TCK);
    return time.tv_sec * perSecond + time.tv_nsec / (1'000'000'000 / perSecond);
}

void waitForNextTick()
{
    const long long now = tick();
    while (tick() == now)
        ::sched_yield();
}

Outcome runWithChosenIds(const QString &table, const ReusedPid::Scenario &scenario)
{
    const pid_t pid = startWaiting();
    if (!end(pid) || startWaiting(pid) != pid)
        return NotPossible;
    return outcome(scenario({table, pid, [pid] {
                                 waitForNextTick();
                                 return end(pid) && startWaiting(pid) == pid;
                             }}));
}

QString folderOf(const QString &table, pid_t pid)
{
    return table + u'/' + QString::number(pid);
}

} // namespace

bool ReusedPid::run(const Scenario &scenario)
{
    const QTemporaryDir folder;
    const auto runInTable = [&] {
        return showTable(QFile::encodeName(folder.path())) ? runWithChosenIds(folder.path(), scenario)
                                                           : NotPossible;
    };
    const Outcome result = inChild([&] { return leaveTable() ? inChild(runInTable) : NotPossible; });
    return result == NotPossible ? runWithLinks(scenario) : result == Holds;
}

bool ReusedPid::runWithLinks(const Scenario &scenario)
{
    const QTemporaryDir folder;
    const auto runInTable = [&] {
        const pid_t first = startWaiting();
        waitForNextTick();
        const pid_t second = startWaiting();
        const QString link = folderOf(folder.path(), second);
        const auto replace = [&] {
            return end(first) && QFile::remove(link) && QFile::link(folderOf(kernelTable, second), link);
        };
        const bool isReady = first > 0 && second > 0 && QFile::link(folderOf(kernelTable, first), link);
        return outcome(isReady && scenario({folder.path(), second, replace}));
    };
    return inChild(runInTable) == Holds;
}
