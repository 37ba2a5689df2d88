// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileManagers.h"

#include "Platform/Bundle.h"
#include "Platform/ProcessTable.h"
#include "Platform/Subprocess.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <sys/wait.h>

namespace {

Q_LOGGING_CATEGORY(lcFileManagers, "quenby.platform.filemanagers")

const QByteArray registerCommand = QByteArrayLiteral("register");
const QByteArray quitOption = QByteArrayLiteral("-q");

/// Those that look for extensions only when they start, and that may be told to quit. PCManFM-Qt is left
/// alone: it may be the one that draws the desktop, and nobody would start it again.
struct FileManager
{
    QLatin1StringView program;
    /// It runs under one of these names, according to who started it.
    std::array<QLatin1StringView, 2> processNames;
};
constexpr std::array fileManagers = {
    FileManager{QLatin1StringView("nautilus"), {QLatin1StringView("nautilus")}},
    FileManager{QLatin1StringView("thunar"), {QLatin1StringView("thunar"), QLatin1StringView("Thunar")}},
};

void reload(const FileManagers::IsRunning &isRunning)
{
    for (const FileManager &manager : fileManagers) {
        const bool runs =
            std::any_of(manager.processNames.begin(), manager.processNames.end(),
                        [&](QLatin1StringView name) { return !name.isEmpty() && isRunning(QString(name)); });
        if (!runs)
            continue;
        const QString program = QStandardPaths::findExecutable(QString(manager.program));
        if (program.isEmpty()) {
            qCWarning(lcFileManagers) << "not told to reload, not found:" << manager.program;
            continue;
        }
        Subprocess quit;
        if (const Result<> started = quit.start(QFile::encodeName(program), {quitOption}); !started)
            qCWarning(lcFileManagers) << started.error;
    }
}

bool isProcessRunning(const QString &name)
{
    return !ProcessTable::processesNamed(name).isEmpty();
}

} // namespace

bool FileManagers::restart(const QString &plugin, const IsRunning &isRunning,
                           std::chrono::milliseconds timeout)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(plugin);
    const QString executable = bundle ? bundle->executablePath() : QString();
    if (executable.isEmpty()) {
        qCWarning(lcFileManagers) << "nothing to be registered in" << plugin;
        return false;
    }
    const auto registration = std::make_shared<Subprocess>();
    if (const Result<> started = registration->start(QFile::encodeName(executable), {registerCommand});
        !started) {
        qCWarning(lcFileManagers) << started.error;
        return false;
    }
    registration->closeInput();
    // Holds what it waits for: nobody else does.
    registration->setEndHandler([registration, executable, isRunning](int status) {
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            qCWarning(lcFileManagers) << executable << "did not register well, status" << status;
        reload(isRunning);
    });
    QTimer::singleShot(timeout, QCoreApplication::instance(),
                       [registration = std::weak_ptr(registration), executable] {
                           const std::shared_ptr<Subprocess> late = registration.lock();
                           if (late && late->signal(SIGKILL))
                               qCWarning(lcFileManagers) << executable << "took too long to register";
                       });
    return true;
}

bool FileManagers::restart(const QString &plugin)
{
    return restart(plugin, isProcessRunning);
}
