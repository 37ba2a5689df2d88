// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileManagers.h"

#include "Platform/Bundle.h"
#include "Platform/Subprocess.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTimer>

#include <csignal>
#include <memory>
#include <sys/wait.h>

namespace {

Q_LOGGING_CATEGORY(lcFileManagers, "quenby.platform.filemanagers")

const QByteArray registerCommand = QByteArrayLiteral("register");

} // namespace

bool FileManagers::registerPlugin(const QString &plugin, std::chrono::milliseconds timeout)
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
    registration->setEndHandler([registration, executable](int status) {
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            qCWarning(lcFileManagers) << executable << "did not register well, status" << status;
    });
    QTimer::singleShot(timeout, QCoreApplication::instance(),
                       [registration = std::weak_ptr(registration), executable] {
                           const std::shared_ptr<Subprocess> late = registration.lock();
                           if (late && late->signal(SIGKILL))
                               qCWarning(lcFileManagers) << executable << "took too long to register";
                       });
    return true;
}
