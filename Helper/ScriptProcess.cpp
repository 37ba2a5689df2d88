// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptProcess.h"

#include "Helper/ScriptSupervisor.h"
#include "Platform/Files/FileDescriptor.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("ScriptProcess", text);
}

/// Waits for one script, and reads what it writes.
class Watch
{
public:
    Watch(ScriptSupervisor &supervisor, FileDescriptor &output, const ScriptLimits &limits)
        : supervisor_(supervisor)
        , output_(output)
        , limits_(limits)
    {
    }

    ScriptResult untilItEnds()
    {
        using Outcome = ScriptResult::Outcome;
        const QDeadlineTimer deadline(limits_.duration);
        for (;;) {
            std::array<pollfd, 3> files{{{supervisor_.descriptor(), POLLIN, 0},
                                         {output_.isOpen() ? output_.get() : -1, POLLIN, 0},
                                         {limits_.interruption, POLLIN, 0}}};
            const auto [told, wrote, interrupted] = std::tie(files[0], files[1], files[2]);
            const int count =
                ::poll(files.data(), files.size(), int(std::max<qint64>(deadline.remainingTime(), 0)));
            if (count == -1 && errno != EINTR) {
                result_.error = systemError(tr("it cannot be waited for"), errno);
                return endAll(Outcome::CouldNotStart);
            }
            if (count <= 0) {
                if (deadline.hasExpired())
                    return endAll(Outcome::TimedOut);
                continue;
            }
            if (wrote.revents != 0)
                readOnce();
            if (told.revents != 0)
                return readNews();
            if (interrupted.revents != 0)
                return endAll(Outcome::Interrupted);
            if (deadline.hasExpired())
                return endAll(Outcome::TimedOut);
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

    ScriptResult readNews()
    {
        using Outcome = ScriptResult::Outcome;
        const ScriptSupervisor::Report report = supervisor_.read();
        readRest();
        if (report.news == ScriptSupervisor::News::CouldNotStart) {
            result_.error = qt_error_string(report.value);
            result_.outcome = Outcome::CouldNotStart;
        } else if (report.news != ScriptSupervisor::News::Ended) {
            result_.error = tr("it cannot be waited for");
            result_.outcome = Outcome::CouldNotStart;
        } else if (WIFEXITED(report.value)) {
            result_.outcome = Outcome::Exited;
            result_.code = WEXITSTATUS(report.value);
        } else {
            result_.outcome = Outcome::Signalled;
            result_.code = WTERMSIG(report.value);
        }
        return result_;
    }

    ScriptResult endAll(ScriptResult::Outcome outcome)
    {
        supervisor_.endAll();
        readRest();
        result_.outcome = outcome;
        return result_;
    }

    /// A pipe holds less.
    static constexpr int mostReadsAtTheEnd = 32;

    ScriptSupervisor &supervisor_;
    FileDescriptor &output_;
    const ScriptLimits &limits_;
    ScriptResult result_;
};

ScriptResult couldNotStart(const QString &reason)
{
    ScriptResult result;
    result.outcome = ScriptResult::Outcome::CouldNotStart;
    result.error = reason;
    return result;
}

} // namespace

ScriptResult ScriptProcess::run(const QByteArray &program, const QByteArrayList &arguments,
                                const QByteArray &folder, const ScriptLimits &limits)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) == -1)
        return couldNotStart(qt_error_string(errno));
    FileDescriptor output(FileLayer::real(), ends[0]);
    FileDescriptor input(FileLayer::real(), ends[1]);
    // Only this end: the script may not know what to do about a full pipe.
    if (::fcntl(output.get(), F_SETFL, O_NONBLOCK) == -1)
        return couldNotStart(qt_error_string(errno));
    QString error;
    std::optional<ScriptSupervisor> supervisor =
        ScriptSupervisor::start(program, arguments, folder, input.get(), &error);
    if (!supervisor)
        return couldNotStart(error);
    input.close();
    return Watch(*supervisor, output, limits).untilItEnds();
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
            .arg(QString::number(code), QString::fromLocal8Bit(::strsignal(code)));
    case Outcome::TimedOut:
        return tr("The script took too long and was ended");
    case Outcome::Interrupted:
        break;
    }
    return tr("The script was interrupted");
}
