// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/DurableFileWriter.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QPointer>

#include <functional>
#include <sys/types.h>

/// A child of this process that outlives its owner and this process if need be: nobody ever waits for it, and
/// no zombie is left while there is an event loop. Its output goes nowhere, unless it is kept.
class Subprocess
{
public:
    /// Called from the event loop, with the status as waitpid() gives it.
    using EndHandler = std::function<void(int status)>;

    Subprocess() = default;
    /// Its input ends; the process itself is left alone, and the handler will not be called.
    ~Subprocess();
    Subprocess(const Subprocess &) = delete;
    Subprocess &operator=(const Subprocess &) = delete;

    /// Before start(): what it writes to its standard output and to its standard error is kept.
    void keepOutput() { keepsOutput_ = true; }
    /// Once. \a program is a path; \a environment holds assignments that go before those of this process.
    Result<> start(const QByteArray &program, const QByteArrayList &arguments,
                   const QByteArrayList &environment = {});

    pid_t pid() const { return pid_; }
    bool isRunning() const;
    void setEndHandler(EndHandler handler);

    /// What was kept so far, no more of it than \a limit bytes.
    QByteArray output(qsizetype limit) const { return kept(output_, limit); }
    QByteArray errors(qsizetype limit) const { return kept(errors_, limit); }

    /// Sends \a bytes, a few, to its input; false if nobody reads it any more.
    bool write(const QByteArray &bytes);
    void closeInput();
    /// Never meets another process of the same number. False without the right to.
    bool signal(int number);

private:
    static QByteArray kept(int descriptor, qsizetype limit);

    class Watch;
    QPointer<Watch> watch_;
    pid_t pid_ = 0;
    int input_ = -1;
    bool keepsOutput_ = false;
    /// Files without a name; -1 unless output is kept.
    int output_ = -1;
    int errors_ = -1;
};
