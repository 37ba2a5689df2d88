// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <chrono>
#include <functional>

/// Waits until \a condition holds, and says whether it came to hold; events are processed meanwhile.
bool waitUntil(const std::function<bool()> &condition,
               std::chrono::milliseconds timeout = std::chrono::milliseconds(10000));

/// A program that a test runs beside itself, and ends, by its own process id, at the latest when this goes.
class ChildProcess
{
public:
    explicit ChildProcess(const QString &program, const QStringList &arguments = {},
                          const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    bool isRunning() const;
    qint64 pid() const { return process_.processId(); }
    void signal(int number);
    /// False if it is still running after \a timeout.
    bool waitForEnd(std::chrono::milliseconds timeout = std::chrono::milliseconds(10000));
    /// Whether it has ended by returning \a code, not by a signal.
    bool hasReturned(int code) const;
    /// What it has written so far.
    QByteArray output();
    QByteArray errors();

private:
    QProcess process_;
    QByteArray output_;
    QByteArray errors_;
};
