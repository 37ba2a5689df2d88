// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RunningLauncher.h"

#include "Helper/Running/LauncherSession.h"
#include "Helper/Running/RunningHelper.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Processes/ExitHandler.h"
#include "Platform/Processes/TerminationSignals.h"

#include <QApplication>

#include <memory>

int runLauncherAlone(const QStringList &folders)
{
    TerminationSignals signals;
    LauncherSession session(std::make_shared<SessionBus>());
    session.start(folders);
    signals.handleWith([&] { session.quit(); });
    // Without its display the library ends the process from within the event loop.
    const ExitHandler exitHandler([&] { session.leave(); }, undoLimit);
    return QApplication::exec();
}
