// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/IdleProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString idle = QStringLiteral(QUENBY_IDLE);

} // namespace

IdleProgram::IdleProgram(const QString &name, const QString &place)
    : name_(name)
    // As the kernel will tell it.
    , path_(QFileInfo(folder_.path()).canonicalFilePath() + u'/' + place + u'/' + name)
{
    path_ = QDir::cleanPath(path_);
    if (!QDir().mkpath(QFileInfo(path_).path()) || !QFile::copy(idle, path_))
        qFatal("cannot make %s", qPrintable(path_));
}

std::unique_ptr<ChildProcess> IdleProgram::start(const QStringList &arguments) const
{
    auto process = std::make_unique<ChildProcess>(path_, arguments);
    if (!waitUntil([&] { return process->output().contains("ready\n"); }))
        qFatal("%s is not ready", qPrintable(path_));
    return process;
}

pid_t IdleProgram::startZombie() const
{
    const QByteArray path = QFile::encodeName(path_);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(path.constData(), path.constData(), "gone", nullptr);
        ::_exit(1);
    }
    siginfo_t how = {};
    if (child == -1 || ::waitid(P_PID, id_t(child), &how, WEXITED | WNOWAIT) == -1 || how.si_status != 0)
        qFatal("no zombie of %s", qPrintable(path_));
    return child;
}
