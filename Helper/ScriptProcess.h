// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <chrono>

struct ScriptLimits
{
    std::chrono::milliseconds duration = std::chrono::minutes(5);
    /// Bytes of output that are kept; the rest is counted.
    qint64 output = qint64(1024) * 1024;
    /// The script is ended as soon as this can be read from; -1 for none.
    int interruption = -1;
};

/// What became of a script.
struct ScriptResult
{
    enum class Outcome {
        NotRun,
        CouldNotStart,
        /// With the exit status in code.
        Exited,
        /// With the signal's number in code.
        Signalled,
        TimedOut,
        Interrupted,
    };
    Outcome outcome = Outcome::NotRun;
    int code = 0;
    /// What it wrote to its standard output and error, together, and how much more of it there was.
    QByteArray output;
    qint64 omittedOutput = 0;
    /// Why it could not be started.
    QString error;

    bool hasSucceeded() const { return outcome == Outcome::Exited && code == 0; }
    /// In words; empty when it succeeded or did not run.
    QString failure() const;
};

/// A program that runs for a while, waited for by the calling thread.
namespace ScriptProcess {

/// Starts \a program with \a arguments in \a folder, without a shell: nothing to read, the environment of
/// this process as ScriptEnvironment gives it, a process group of its own. What it leaves running when it
/// ends goes on, but its output is not read any more; at the time limit, and at an interruption, it is killed
/// with everything that it has started, also what has left its process group or its session.
ScriptResult run(const QByteArray &program, const QByteArrayList &arguments, const QByteArray &folder,
                 const ScriptLimits &limits);

} // namespace ScriptProcess
