// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RunningHelper.h"

#include "Helper/HelperService.h"
#include "Helper/Presets.h"
#include "Helper/Running/HelperSession.h"
#include "Helper/Running/SingleInstance.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Desktop/SharedFileList.h"
#include "Platform/Files/FileURL.h"
#include "Platform/Processes/ChildEnvironment.h"
#include "Platform/Processes/ExitHandler.h"
#include "Platform/Processes/TerminationSignals.h"

#include <QApplication>
#include <QFile>
#include <QLoggingCategory>

#include <cstdlib>
#include <memory>
#include <optional>

namespace {

Q_LOGGING_CATEGORY(lcRunning, "quenby.helper")

/// If it is started with the session, it goes on being so after it was moved; not so if the user has stopped
/// it in the pane since.
void followWithLoginItem()
{
    if (!helperIsWanted())
        return;
    const QString path = helperBundlePath();
    const std::optional<SharedFileList> loginItems = SharedFileList::create();
    if (!loginItems || !Bundle::isNamedLikeAnApplication(path))
        return;
    const QUrl url = fileURLOfPath(QFile::encodeName(path));
    if (const Result<> replaced = loginItems->replaceOutdated(url); !replaced)
        qCWarning(lcRunning) << "the login item names an old place:" << replaced.error;
}

} // namespace

int runHelper()
{
    TerminationSignals signals;
    const auto bus = std::make_shared<SessionBus>();
    SingleInstance instance(bus, HelperService::name);
    if (!instance.acquire(DesktopFolders::runtimeDirectory()))
        // A bus that has started this goes on waiting for the name of a program that ended well.
        return qEnvironmentVariableIsSet(ChildEnvironment::busAddressVariable) ? EXIT_FAILURE : EXIT_SUCCESS;

    followWithLoginItem();
    HelperSession session(bus, instance);
    session.start();
    signals.handleWith([&] {
        // The next one need not wait for what is undone meanwhile.
        instance.release();
        session.quit();
    });
    // Without its display the library ends the process from within the event loop.
    const ExitHandler exitHandler([&] { session.leave(); }, undoLimit);
    return QApplication::exec();
}
