// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/Authorization.h"

#include "Platform/Processes/Subprocess.h"

#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <optional>
#include <sys/wait.h>

namespace {

Q_LOGGING_CATEGORY(lcAuthorization, "quenby.platform.authorization")

/// Without an agent on the desktop there is no question in a terminal that the user may not even see.
const QByteArray withoutTerminal = QByteArrayLiteral("--disable-internal-agent");
/// So that the tool takes a "y" for a yes. The agent passes it on.
const QByteArray plainLocale = QByteArrayLiteral("LC_ALL=C");
const QByteArray goOn = QByteArrayLiteral("y\n");

/// Nothing tells when a process becomes another program.
constexpr std::chrono::milliseconds lookInterval{20};

/// The kernel keeps that much of a name.
constexpr qsizetype longestProcessName = 15;

QByteArray processNameOf(const QByteArray &program)
{
    return program.mid(program.lastIndexOf('/') + 1).left(longestProcessName);
}

QString ending(int status)
{
    if (WIFEXITED(status))
        return QStringLiteral("it returned %1").arg(WEXITSTATUS(status));
    return QStringLiteral("it was ended by signal %1").arg(WTERMSIG(status));
}

} // namespace

Authorization::Authorization()
    : Authorization(Options())
{
}

Authorization::Authorization(Options options)
    : options_(std::move(options))
{
}

Authorization::~Authorization()
{
    release();
}

bool Authorization::copyRights(const QByteArray &tool, const QByteArrayList &arguments)
{
    release();
    const QString agent = QStandardPaths::findExecutable(options_.agent);
    if (agent.isEmpty()) {
        qCWarning(lcAuthorization) << "no administrator's rights, there is no" << options_.agent;
        return false;
    }
    // A child, and no detached process: the agent asks for its parent, and not for one that is gone.
    process_ = std::make_unique<Subprocess>();
    const Result<> started = process_->start(
        QFile::encodeName(agent), QByteArrayList{withoutTerminal, tool} + arguments, {plainLocale});
    if (!started) {
        qCWarning(lcAuthorization) << "no administrator's rights:" << started.error;
        release();
        return false;
    }

    QString refusal = QStringLiteral("this program is ending");
    QEventLoop loop;
    process_->setEndHandler([&](int status) {
        refusal = agent + QStringLiteral(": ") + ending(status);
        loop.quit();
    });
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        // Its number may be another's by now.
        if (!process_->isRunning())
            return;
        const std::optional<QByteArray> name = processName();
        if (!name)
            refusal = QStringLiteral("process %1 cannot be seen").arg(process_->pid());
        granted_ = name == processNameOf(tool);
        if (granted_ || !name)
            loop.quit();
    });
    look.start(lookInterval);
    loop.exec(QEventLoop::ExcludeUserInputEvents);

    process_->setEndHandler({});
    granted_ = granted_ && process_->isRunning();
    if (!granted_) {
        qCWarning(lcAuthorization) << "no administrator's rights:" << refusal;
        release();
    }
    return granted_;
}

bool Authorization::executeWithPrivileges()
{
    if (!granted_)
        return false;
    const bool goesOn = process_->write(goOn);
    release();
    return goesOn;
}

std::optional<QByteArray> Authorization::processName() const
{
    QFile file(QFile::decodeName(options_.processes + '/' + QByteArray::number(process_->pid()) + "/comm"));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray name = file.readAll();
    if (name.endsWith('\n'))
        name.chop(1);
    return name;
}

void Authorization::release()
{
    // Its question goes from the screen. Who has become the tool is not met by that: it ends by itself.
    if (process_ && !granted_)
        process_->signal(SIGTERM);
    process_.reset();
    granted_ = false;
}
