// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <csignal>
#include <sys/prctl.h>

namespace {

constexpr int startTimeout = 10000;
/// In milliseconds.
constexpr int pollInterval = 10;

} // namespace

bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    // There is always an event to wait for.
    QTimer poll;
    poll.start(pollInterval);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
    }
    return true;
}

ChildProcess::ChildProcess(const QString &program, const QStringList &arguments,
                           const QProcessEnvironment &environment)
{
    process_.setProcessEnvironment(environment);
    // A test that is killed leaves nobody behind.
    process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process_.start(program, arguments);
    if (!process_.waitForStarted(startTimeout))
        qFatal("%s: %s", qPrintable(program), qPrintable(process_.errorString()));
}

ChildProcess::~ChildProcess()
{
    if (!isRunning())
        return;
    signal(SIGTERM);
    signal(SIGCONT);
    if (!waitForEnd()) {
        signal(SIGKILL);
        waitForEnd();
    }
}

bool ChildProcess::isRunning() const
{
    return process_.state() != QProcess::NotRunning;
}

void ChildProcess::signal(int number)
{
    if (pid() > 0)
        ::kill(pid_t(pid()), number);
}

bool ChildProcess::waitForEnd(std::chrono::milliseconds timeout)
{
    return !isRunning() || process_.waitForFinished(int(timeout.count()));
}

bool ChildProcess::hasReturned(int code) const
{
    return !isRunning() && process_.exitStatus() == QProcess::NormalExit && process_.exitCode() == code;
}

QByteArray ChildProcess::output()
{
    return output_ += process_.readAllStandardOutput();
}

QByteArray ChildProcess::errors()
{
    return errors_ += process_.readAllStandardError();
}
