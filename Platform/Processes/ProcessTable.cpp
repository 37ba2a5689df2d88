// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ProcessTable.h"

#include "Platform/Files/SystemCalls.h"
#include "Platform/LineText.h"
#include "Platform/Processes/ProcessFolder.h"

#include <QFile>
#include <QLoggingCategory>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

Q_LOGGING_CATEGORY(lcProcesses, "quenby.platform.processes")

constexpr pid_t systemProcessID = 1;
constexpr quint64 launchDatesPerSecond = 60;

/// The folder with a folder for each process.
class ProcRoot
{
public:
    explicit ProcRoot(const QString &path)
        : folder_(::opendir(QFile::encodeName(path).constData()))
    {
        if (!folder_)
            qCWarning(lcProcesses) << path
                                   << qPrintable(lineText(systemError(QStringLiteral("open"), errno)));
    }

    bool isOpen() const { return folder_ != nullptr; }
    int descriptor() const { return ::dirfd(folder_.get()); }
    std::optional<ProcessFolder> process(pid_t pid) const
    {
        return isOpen() && pid > 0 ? ProcessFolder::open(descriptor(), pid) : std::nullopt;
    }

    /// The ids above \a after whose folder is \a wanted, given its id and its name here; in their order.
    template <typename Predicate>
    std::vector<pid_t> pids(pid_t after, Predicate wanted) const
    {
        std::vector<pid_t> result;
        while (const dirent *entry = isOpen() ? ::readdir(folder_.get()) : nullptr) {
            const char *end = entry->d_name + std::strlen(entry->d_name);
            pid_t pid = 0;
            const auto parsed = std::from_chars(entry->d_name, end, pid);
            if (parsed.ec == std::errc() && parsed.ptr == end && pid > after && wanted(pid, entry->d_name))
                result.push_back(pid);
        }
        std::sort(result.begin(), result.end());
        return result;
    }

private:
    std::unique_ptr<DIR, DirectoryCloser> folder_;
};

/// The id in the serial number, or 0 if no process can have it.
pid_t pidOf(const ProcessSerialNumber &process)
{
    return process.low <= quint32(std::numeric_limits<pid_t>::max()) ? pid_t(process.low) : 0;
}

ProcessSerialNumber serialNumber(pid_t pid, const ProcessStatus &status)
{
    return pid == systemProcessID ? kSystemProcess
                                  : ProcessSerialNumber{quint32(status.startTime), quint32(pid)};
}

/// The process in that folder, if it runs.
std::optional<ProcessSerialNumber> runningProcess(const ProcessFolder &folder, pid_t pid)
{
    const std::optional<ProcessStatus> status = folder.status();
    if (!status || status->isZombie)
        return std::nullopt;
    return serialNumber(pid, *status);
}

std::optional<ProcessSerialNumber> runningProcess(const ProcRoot &root, pid_t pid)
{
    const std::optional<ProcessFolder> folder = root.process(pid);
    return folder ? runningProcess(*folder, pid) : std::nullopt;
}

/// Who may end others' processes does not take them for their own.
bool isOfThisUser(const ProcessFolder &folder)
{
    return folder.realUser() == ::getuid();
}

/// The process with that id, if it runs and is to be listed.
std::optional<ProcessSerialNumber> listedProcess(const ProcRoot &root, pid_t pid)
{
    const std::optional<ProcessFolder> folder = root.process(pid);
    return folder && isOfThisUser(*folder) ? runningProcess(*folder, pid) : std::nullopt;
}

std::vector<pid_t> allPids(const ProcRoot &root, const ProcessSerialNumber &after)
{
    return root.pids(after == kNoProcess ? 0 : pidOf(after), [](pid_t, const char *) { return true; });
}

/// Whether the folder of that name is of a process that may have the name \a wanted, seen from what the
/// kernel keeps of it.
bool mayBeNamed(int root, const char *folder, const QByteArray &wanted)
{
    char path[sizeof(dirent::d_name) + sizeof "/comm"];
    std::snprintf(path, sizeof path, "%s/comm", folder);
    char command[64];
    ssize_t size = readProcessFile(root, path, command, sizeof command);
    if (size > 0 && command[size - 1] == '\n')
        --size;
    if (size < 0)
        return false;
    if (size == longestCommand ? wanted.startsWith(QByteArrayView(command, size))
                               : wanted == QByteArrayView(command, size))
        return true;
    // Bytes that are no text have no way back from the name they decode to.
    return std::any_of(command, command + size, [](char byte) { return (byte & 0x80) != 0; });
}

quint32 launchDate(quint64 startTime)
{
    const long ticks = ::sysconf(_SC_CLK_TCK);
    return ticks > 0 ? quint32(startTime * launchDatesPerSecond / quint64(ticks)) : 0;
}

// The C library has these since version 2.36 only.
int openPidfd(pid_t pid)
{
    return int(::syscall(SYS_pidfd_open, pid, 0U));
}

int sendSignalToPidfd(int pidfd, int signal)
{
    return int(::syscall(SYS_pidfd_send_signal, pidfd, signal, nullptr, 0U));
}

} // namespace

std::optional<ProcessSerialNumber> ProcessTable::getNextProcess(const ProcessSerialNumber &after,
                                                                const QString &root)
{
    const ProcRoot table(root);
    for (const pid_t pid : allPids(table, after)) {
        if (const std::optional<ProcessSerialNumber> process = listedProcess(table, pid))
            return process;
    }
    return std::nullopt;
}

QList<ProcessSerialNumber> ProcessTable::processesAfter(const ProcessSerialNumber &after, const QString &root)
{
    const ProcRoot table(root);
    QList<ProcessSerialNumber> processes;
    for (const pid_t pid : allPids(table, after)) {
        if (const std::optional<ProcessSerialNumber> process = listedProcess(table, pid))
            processes.append(*process);
    }
    return processes;
}

QList<ProcessSerialNumber> ProcessTable::processesNamed(const QString &name, const QString &root)
{
    const ProcRoot table(root);
    const QByteArray wanted = name.toLocal8Bit();
    const auto mayBeIt = [&](pid_t, const char *folder) {
        return mayBeNamed(table.descriptor(), folder, wanted);
    };
    QList<ProcessSerialNumber> processes;
    for (const pid_t pid : table.pids(0, mayBeIt)) {
        const std::optional<ProcessFolder> folder = table.process(pid);
        const QString known = folder ? folder->name() : QString();
        if (known.isNull() || known != name || !isOfThisUser(*folder))
            continue;
        if (const std::optional<ProcessSerialNumber> process = runningProcess(*folder, pid))
            processes.append(*process);
    }
    return processes;
}

std::optional<ProcessInformation> ProcessTable::getProcessInformation(const ProcessSerialNumber &process,
                                                                      const QString &root)
{
    const ProcRoot table(root);
    const std::optional<ProcessFolder> folder = table.process(pidOf(process));
    const std::optional<ProcessStatus> status = folder ? folder->status() : std::nullopt;
    if (!status || status->isZombie || serialNumber(pidOf(process), *status) != process)
        return std::nullopt;
    ProcessInformation information;
    information.name = folder->name();
    information.path = folder->executable();
    information.launcher = runningProcess(table, status->parent).value_or(kNoProcess);
    information.launchDate = launchDate(status->startTime);
    return information;
}

std::optional<ProcessSerialNumber> ProcessTable::getProcessForPID(pid_t pid, const QString &root)
{
    return runningProcess(ProcRoot(root), pid);
}

std::optional<pid_t> ProcessTable::getProcessPID(const ProcessSerialNumber &process, const QString &root)
{
    const pid_t pid = pidOf(process);
    return runningProcess(ProcRoot(root), pid) == process ? std::optional(pid) : std::nullopt;
}

std::optional<ProcessSerialNumber> ProcessTable::getCurrentProcess()
{
    return getProcessForPID(::getpid());
}

bool ProcessTable::sameProcess(const ProcessSerialNumber &one, const ProcessSerialNumber &other)
{
    return one == other;
}

bool ProcessTable::sendSignal(const ProcessSerialNumber &process, int signal, const QString &root)
{
    const pid_t pid = pidOf(process);
    if (pid <= systemProcessID) {
        qCWarning(lcProcesses) << "no signal is sent to process" << process.low;
        return false;
    }
    // From here on the descriptor stands for one process. If that one was started when the listed one was, it
    // is the listed one, and whoever gets its id later is not meant.
    const FileDescriptor pidfd(FileLayer::real(), openPidfd(pid));
    if (!pidfd.isOpen()) {
        qCInfo(lcProcesses) << qPrintable(
            lineText(systemError(QStringLiteral("open process %1").arg(pid), errno)));
        return false;
    }
    if (runningProcess(ProcRoot(root), pid) != process) {
        qCInfo(lcProcesses) << "process" << pid << "has ended, no signal is sent";
        return false;
    }
    if (sendSignalToPidfd(pidfd.get(), signal) == -1) {
        const int error = errno;
        qCWarning(lcProcesses) << qPrintable(lineText(systemError(
            QStringLiteral("send signal %1 to process %2").arg(QString::number(signal), QString::number(pid)),
            error)));
        return false;
    }
    return true;
}

bool ProcessTable::wakeUpProcess(const ProcessSerialNumber &process)
{
    return sendSignal(process, SIGCONT);
}
