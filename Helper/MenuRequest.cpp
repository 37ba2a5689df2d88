// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/MenuRequest.h"

#include "Helper/HelperService.h"
#include "Helper/Presets.h"
#include "Platform/Workspace.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <chrono>

using namespace std::chrono_literals;

namespace {

/// A helper is on the bus within a second, also on a machine that starts up.
constexpr auto startTimeout = 10s;
/// Between two questions whether it is there.
constexpr auto questionPause = 50ms;

QString tr(const char *text)
{
    return QCoreApplication::translate("MenuRequest", text);
}

/// Starts the helper that this program is.
Result<> startHelper()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return Result<>::failure(tr("There is no display on which the presets could be shown."));
    if (!Workspace::openFile(helperBundlePath()))
        return Result<>::failure(tr("The helper, which shows the presets, could not be started."));
    return {};
}

} // namespace

Result<> MenuRequest::send(SessionBus &bus, const QStringList &folders)
{
    using HelperService::Answer;
    QString error;
    Answer answer = HelperService::showMenu(bus, folders, &error);
    if (answer == Answer::NotRunning) {
        if (Result<> started = startHelper(); !started)
            return started;
        for (const QDeadlineTimer deadline(startTimeout);
             answer == Answer::NotRunning && !deadline.hasExpired();) {
            QThread::msleep(std::chrono::milliseconds(questionPause).count());
            answer = HelperService::showMenu(bus, folders, &error);
        }
    }
    switch (answer) {
    case Answer::Taken:
        return {};
    case Answer::NoBus:
        return Result<>::failure(
            tr("There is no session bus on which the helper could be asked to show the presets."));
    case Answer::NotRunning:
        return Result<>::failure(tr("The helper, which shows the presets, did not start."));
    case Answer::NotUnderstood:
    case Answer::Failed:
        break;
    }
    return Result<>::failure(error);
}
