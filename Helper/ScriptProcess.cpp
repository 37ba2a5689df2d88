// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptProcess.h"

#include "Platform/FileDescriptor.h"
#include "Platform/ProcessStart.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("ScriptProcess", text);
}

/// Waits for one process, and reads what it writes.
class Watch
{
public:
    Watch(pid_t pid, FileDescriptor &output, const ScriptLimits &limits)
        : pid_(pid)
        , output_(output)
        , limits_(limits)
    {
    }

    ScriptResult untilItEnds()
    {
        using Outcome = ScriptResult::Outcome;
        // A number that a process with a different end may get is of no use: this one is not reaped before.
        FileDescriptor process(FileLayer::real(), static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
        if (!process.isOpen()) {
            result_.error = systemError(tr("it cannot be waited for"), errno);
            return kill(Outcome::CouldNotStart);
        }
        const QDeadlineTimer deadline(limits_.duration);
        for (;;) {
            std::array<pollfd, 3> files{{{process.get(), POLLIN, 0},
                                         {output_.isOpen() ? output_.get() : -1, POLLIN, 0},
                                         {limits_.interruption, POLLIN, 0}}};
            const auto [ended, wrote, interrupted] = std::tie(files[0], files[1], files[2]);
            const int count =
                ::poll(files.data(), files.size(), int(std::max<qint64>(deadline.remainingTime(), 0)));
            if (count == -1 && errno != EINTR) {
                result_.error = systemError(tr("it cannot be waited for"), errno);
                return kill(Outcome::CouldNotStart);
            }
            if (count <= 0) {
                if (deadline.hasExpired())
                    return kill(Outcome::TimedOut);
                continue;
            }
            if (wrote.revents != 0)
                readOnce();
            if (ended.revents != 0)
                return reap();
            if (interrupted.revents != 0)
                return kill(Outcome::Interrupted);
            if (deadline.hasExpired())
                return kill(Outcome::TimedOut);
        }
    }

private:
    /// False when there is nothing to read now, or will never be.
    bool readOnce()
    {
        std::array<char, 65536> buffer;
        const ssize_t size = FileLayer::real().read(output_.get(), buffer.data(), buffer.size());
        if (size <= 0) {
            if (size == 0)
                output_.close();
            return false;
        }
        const qint64 kept = std::min<qint64>(size, limits_.output - result_.output.size());
        result_.output.append(buffer.data(), kept);
        result_.omittedOutput += size - kept;
        return true;
    }

    /// What is in the pipe by now; a process that the script left running may go on writing for ever.
    void readRest()
    {
        for (int reads = 0; output_.isOpen() && reads < mostReadsAtTheEnd && readOnce(); ++reads) {
        }
    }

    int status() const
    {
        int status = 0;
        while (::waitpid(pid_, &status, 0) == -1 && errno == EINTR) {
        }
        return status;
    }

    ScriptResult reap()
    {
        const int ended = status();
        readRest();
        if (WIFEXITED(ended)) {
            result_.outcome = ScriptResult::Outcome::Exited;
            result_.code = WEXITSTATUS(ended);
        } else {
            result_.outcome = ScriptResult::Outcome::Signalled;
            result_.code = WTERMSIG(ended);
        }
        return result_;
    }

    ScriptResult kill(ScriptResult::Outcome outcome)
    {
        ::kill(-pid_, SIGKILL);
        status();
        readRest();
        result_.outcome = outcome;
        return result_;
    }

    /// A pipe holds less.
    static constexpr int mostReadsAtTheEnd = 32;

    const pid_t pid_;
    FileDescriptor &output_;
    const ScriptLimits &limits_;
    ScriptResult result_;
};

ScriptResult couldNotStart(int errorNumber)
{
    ScriptResult result;
    result.outcome = ScriptResult::Outcome::CouldNotStart;
    result.error = qt_error_string(errorNumber);
    return result;
}

} // namespace

ScriptResult ScriptProcess::run(const QByteArray &program, const QByteArrayList &arguments,
                                const QByteArray &folder, const ScriptLimits &limits)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) == -1)
        return couldNotStart(errno);
    FileDescriptor output(FileLayer::real(), ends[0]);
    FileDescriptor input(FileLayer::real(), ends[1]);
    // Only this end: the script may not know what to do about a full pipe.
    if (::fcntl(output.get(), F_SETFL, O_NONBLOCK) == -1)
        return couldNotStart(errno);

    QByteArrayList words = QByteArrayList{program} + arguments;
    ProcessStart beginning;
    ::posix_spawn_file_actions_addopen(&beginning.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&beginning.actions, input.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&beginning.actions, input.get(), STDERR_FILENO);
    ::posix_spawn_file_actions_addchdir_np(&beginning.actions, folder.constData());
    pid_t pid = 0;
    if (const int error = ::posix_spawn(&pid, program.constData(), &beginning.actions, &beginning.attributes,
                                        ProcessStart::pointersTo(words).data(), environ))
        return couldNotStart(error);
    input.close();
    return Watch(pid, output, limits).untilItEnds();
}

QString ScriptResult::failure() const
{
    switch (outcome) {
    case Outcome::NotRun:
        return {};
    case Outcome::CouldNotStart:
        return tr("The script could not be started: %1").arg(error);
    case Outcome::Exited:
        return code == 0 ? QString() : tr("The script ended with status %1").arg(code);
    case Outcome::Signalled:
        return tr("The script was ended by signal %1 (%2)")
            .arg(code)
            .arg(QString::fromLocal8Bit(::strsignal(code)));
    case Outcome::TimedOut:
        return tr("The script took too long and was ended");
    case Outcome::Interrupted:
        break;
    }
    return tr("The script was interrupted");
}
