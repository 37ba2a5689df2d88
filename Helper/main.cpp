// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLine.h"
#include "Helper/Presets.h"
#include "Helper/Running/RunningHelper.h"
#include "Helper/StandardStreams.h"
#include "Platform/SessionBus.h"

#include <QApplication>

#include <chrono>
#include <sys/prctl.h>

using namespace std::chrono_literals;

namespace {

/// The running helper is found, and ended, by its name: the command line is not it.
constexpr char commandLineProcessName[] = "QNBHelper-cli";
/// A bus that is there answers within a millisecond or two.
constexpr auto busTimeout = 1000ms;

void introduce()
{
    QCoreApplication::setApplicationName(helperName);
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
}

int runInBackground(int &argc, char **argv)
{
    // The library's own windows use it.
    SessionBus::keepIfItAnswers(busTimeout);
    QGuiApplication::setDesktopFileName(QStringLiteral(QUENBY_IDENTIFIER));
    QApplication application(argc, argv);
    introduce();
    return runHelper(application);
}

} // namespace

int main(int argc, char **argv)
{
    StandardStreams::occupyClosed();
    if (argc <= 1)
        return runInBackground(argc, argv);
    ::prctl(PR_SET_NAME, commandLineProcessName);
    const Interruption interruption;
    const QCoreApplication application(argc, argv);
    introduce();
    return static_cast<int>(CommandLine(interruption).run(QCoreApplication::arguments()));
}
