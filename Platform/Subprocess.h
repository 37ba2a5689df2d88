// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/DurableFileWriter.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QPointer>

#include <functional>
#include <sys/types.h>

/// A child of this process that outlives its owner and this process if need be: nobody ever waits for it, and
/// no zombie is left while there is an event loop. Its output goes nowhere.
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

    /// Once. \a program is a path; \a environment holds assignments that go before those of this process.
    Result<> start(const QByteArray &program, const QByteArrayList &arguments,
                   const QByteArrayList &environment = {});

    pid_t pid() const { return pid_; }
    bool isRunning() const;
    void setEndHandler(EndHandler handler);

    /// Sends \a bytes, a few, to its input; false if nobody reads it any more.
    bool write(const QByteArray &bytes);
    void closeInput();
    /// Never meets another process of the same number. False without the right to.
    bool signal(int number);

private:
    class Watch;
    QPointer<Watch> watch_;
    pid_t pid_ = 0;
    int input_ = -1;
};
