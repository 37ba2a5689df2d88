// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/FileManagers.h"

#include "Platform/Desktop/Bundle.h"
#include "Platform/Processes/Subprocess.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTimer>

#include <csignal>
#include <memory>
#include <sys/wait.h>

namespace {

Q_LOGGING_CATEGORY(lcFileManagers, "quenby.platform.filemanagers")

/// In bytes; some lines are expected.
constexpr qsizetype longestAnswer = 64 * 1024;

/// The last line of \a errors, which sums up unless a signal came first, without the name of who says it.
QString reasonOf(const QByteArray &errors, int status)
{
    if (WIFSIGNALED(status))
        return QStringLiteral("it did not end in time, or was ended");
    const QString line = QString::fromUtf8(errors.trimmed().split('\n').constLast());
    const qsizetype afterName = line.indexOf(u": ") + 2;
    if (!line.isEmpty())
        return afterName < 2 ? line : line.mid(afterName);
    return QStringLiteral("it ended with the status %1").arg(WEXITSTATUS(status));
}

} // namespace

void FileManagers::ask(const QString &plugin, const QByteArray &command, const Answered &answered,
                       std::chrono::milliseconds timeout)
{
    const auto fail = [answered, plugin](const QString &reason) {
        qCWarning(lcFileManagers) << plugin << reason;
        answered(Result<QString>::failure(reason));
    };
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(plugin);
    const QString executable = bundle ? bundle->executablePath() : QString();
    if (executable.isEmpty()) {
        fail(QStringLiteral("there is nothing to be run in %1").arg(plugin));
        return;
    }
    const auto process = std::make_shared<Subprocess>();
    process->keepOutput();
    if (const Result<> started = process->start(QFile::encodeName(executable), {command}); !started) {
        fail(started.error);
        return;
    }
    process->closeInput();
    // Holds what it waits for: nobody else does.
    process->setEndHandler([process, answered, fail](int status) {
        if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
            answered(QString::fromUtf8(process->output(longestAnswer)));
        else
            fail(reasonOf(process->errors(longestAnswer), status));
    });
    QTimer::singleShot(timeout, QCoreApplication::instance(), [process = std::weak_ptr(process), plugin] {
        const std::shared_ptr<Subprocess> late = process.lock();
        if (late && late->signal(SIGKILL))
            qCWarning(lcFileManagers) << plugin << "took too long";
    });
}
