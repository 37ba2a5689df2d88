// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RunningCode.h"

#include "Helper/Running/HelperSession.h"
#include "Helper/Running/ProgramIcon.h"
#include "Helper/Running/RunningHelper.h"
#include "Helper/Running/RunningLauncher.h"
#include "Platform/Bus/BusProbe.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/LineText.h"
#include "Platform/Processes/NoDisplayExit.h"
#include "Platform/Processes/TerminationSignals.h"

#include <QApplication>
#include <QFile>
#include <QSessionManager>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

/// What the process was started with, to be started with again.
class Beginning
{
public:
    Beginning()
    {
        for (size_t i = 0; i < numbers.size(); ++i)
            ::sigaction(numbers[i], nullptr, &actions_[i]);
    }
    /// Keeps the process, its name and environment. Returns what the process ends with if it is told to end,
    /// or cannot begin again.
    int repeat(const QString &program, char **argv) const
    {
        for (size_t i = 0; i < numbers.size(); ++i)
            ::sigaction(numbers[i], &actions_[i], nullptr);
        if (TerminationSignals::hasUnhandled())
            return EXIT_SUCCESS;
        ::execv(QFile::encodeName(program).constData(), argv);
        std::fprintf(stderr, "QNBHelper: %s: %s\n", qPrintable(lineText(program)), std::strerror(errno));
        return EXIT_FAILURE;
    }

private:
    static constexpr std::array numbers = {SIGTERM, SIGINT, SIGHUP};
    std::array<struct sigaction, numbers.size()> actions_ = {};
};

/// Ends the process with a sentence if there is no display.
std::unique_ptr<QApplication> makeApplication(int &argc, char **argv)
{
    BusProbe::keepLibraryFromWaiting(SessionBus::answerTimeout);
    QGuiApplication::setDesktopFileName(QStringLiteral(QUENBY_IDENTIFIER));
    const NoDisplayExit atFailure;
    auto application = std::make_unique<QApplication>(argc, argv);
    // For window managers that look for no desktop entry.
    QGuiApplication::setWindowIcon(programIcon());
    // It ends when its work does. Windows come and go, and so do the jobs of the desktop's libraries, as in a
    // dialog for folders, each of which keeps a program as long as it lasts, and would end it then.
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setQuitLockEnabled(false);
    // Login items start the helper again, and the user the launcher; not the session manager.
    QObject::connect(
        application.get(), &QGuiApplication::saveStateRequest, application.get(),
        [](QSessionManager &manager) { manager.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);
    return application;
}

} // namespace

extern "C" Q_DECL_EXPORT RunningCode::Run runInBackground;
extern "C" Q_DECL_EXPORT RunningCode::RunLauncher runLauncher;

int runInBackground(int &argc, char **argv)
{
    const Beginning beginning;
    auto application = makeApplication(argc, argv);
    const QString program = QCoreApplication::applicationFilePath();
    const int result = runHelper();
    application.reset();
    return result == HelperSession::beginAnewCode ? beginning.repeat(program, argv) : result;
}

int runLauncher(char *program, const QStringList &folders)
{
    // The other arguments are not the library's.
    int argc = 1;
    char *argv[] = {program, nullptr};
    const auto application = makeApplication(argc, argv);
    return runLauncherAlone(folders);
}
