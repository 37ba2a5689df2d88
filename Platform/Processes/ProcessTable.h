// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QString>
#include <optional>
#include <sys/types.h>

/// Which process. The process id is the low word, the low 32 bits of the time it was started (in ticks of the
/// kernel's clock) the high one: a process that gets the id of an earlier one has another serial number.
struct ProcessSerialNumber
{
    quint32 high = 0;
    quint32 low = 0;
    friend bool operator==(const ProcessSerialNumber &, const ProcessSerialNumber &) = default;
};

inline constexpr ProcessSerialNumber kNoProcess{0, 0};
/// The first process of the system, whenever it was started.
inline constexpr ProcessSerialNumber kSystemProcess{0, 1};

struct ProcessInformation
{
    /// Null if unknown.
    QString name;
    /// Of the executable; empty if there is none, or if it is not ours to know.
    QString path;
    /// No information file tells any.
    quint32 mode = 0;
    ProcessSerialNumber launcher = kNoProcess;
    /// In ticks of 1/60 second since the system started.
    quint32 launchDate = 0;
};

/// The processes that run, from the kernel's tables.
///
/// A zombie does not run: it is found by nothing here. Listed are the processes that this user started, not
/// those of others, and not even for an administrator; information is given of any that is known by its
/// number.
///
/// A process is named as the kernel names it. What the kernel cuts, at 15 bytes, is completed from the file
/// name of the executable where that begins so: such a process is found by its whole name.
namespace ProcessTable {

/// Where the kernel shows its tables.
inline const QString standardRoot = QStringLiteral("/proc");

/// The next process in the order of process ids, which does not change while processes come and go; the first
/// after kNoProcess. None at the end.
std::optional<ProcessSerialNumber> getNextProcess(const ProcessSerialNumber &after,
                                                  const QString &root = standardRoot);
/// All that getNextProcess() would give, one after the other, at the cost of one pass.
QList<ProcessSerialNumber> processesAfter(const ProcessSerialNumber &after = kNoProcess,
                                          const QString &root = standardRoot);
/// Those whose name is \a name, exactly, in that order. Of the others no more than the name is looked at.
QList<ProcessSerialNumber> processesNamed(const QString &name, const QString &root = standardRoot);

/// None if the process has ended.
std::optional<ProcessInformation> getProcessInformation(const ProcessSerialNumber &process,
                                                        const QString &root = standardRoot);
std::optional<ProcessSerialNumber> getProcessForPID(pid_t pid, const QString &root = standardRoot);
/// None if the process has ended, also if another has its id now.
std::optional<pid_t> getProcessPID(const ProcessSerialNumber &process, const QString &root = standardRoot);
std::optional<ProcessSerialNumber> getCurrentProcess();
bool sameProcess(const ProcessSerialNumber &one, const ProcessSerialNumber &other);

/// Sends \a signal to this process and to no other: not to one that got its id meanwhile, nor to a group, nor
/// to the system process. False if it was not sent.
bool sendSignal(const ProcessSerialNumber &process, int signal, const QString &root = standardRoot);
/// Lets a stopped process go on.
bool wakeUpProcess(const ProcessSerialNumber &process);

} // namespace ProcessTable
