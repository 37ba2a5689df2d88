// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ContextMenuRefresh.h"

#include "Helper/Presets.h"
#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/DesktopFolders.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcRefresh, "quenby.helper.contextmenu")

const QString installedPlugin = QStringLiteral("/Library/Contextual Menu Items/QNBContextMenu.plugin");
const QString ownPlugin = QStringLiteral("/Contents/MacOS/QNBContextMenu.plugin");
const QByteArray refreshCommand = QByteArrayLiteral("refresh");

QString executableOf(const QString &bundlePath)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(bundlePath);
    return bundle ? bundle->executablePath() : QString();
}

/// The plug-in that came with this helper, and knows what this can be called with, in place of the installed
/// one, which may be older. Empty if none is installed.
QString pluginProgram()
{
    const QString installed = executableOf(DesktopFolders::home() + installedPlugin);
    const std::optional<Bundle> pane = paneBundle();
    const QString own = pane ? executableOf(pane->bundlePath() + ownPlugin) : QString();
    return installed.isEmpty() || own.isEmpty() ? installed : own;
}

} // namespace

void ContextMenuRefresh::refresh()
{
    if (process_ && process_->isRunning()) {
        again_ = true;
        return;
    }
    const QString program = pluginProgram();
    if (program.isEmpty())
        return;
    process_ = std::make_unique<Subprocess>();
    process_->setEndHandler([this](int status) { ended(status); });
    const QByteArray ownPath = QFile::encodeName(QCoreApplication::applicationFilePath());
    if (const Result<> started = process_->start(QFile::encodeName(program), {refreshCommand, ownPath});
        !started)
        qCWarning(lcRefresh) << program << started.error;
}

void ContextMenuRefresh::ended(int status)
{
    if (status != 0)
        qCWarning(lcRefresh) << "the file managers' menus may be out of date: the plug-in ended with status"
                             << status;
    if (std::exchange(again_, false))
        refresh();
}
