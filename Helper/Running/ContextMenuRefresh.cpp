// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ContextMenuRefresh.h"

#include "Platform/Bundle.h"
#include "Platform/DesktopFolders.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcRefresh, "quenby.helper.contextmenu")

const QString installedPlugin = QStringLiteral("/Library/Contextual Menu Items/QNBContextMenu.plugin");
const QByteArray refreshCommand = QByteArrayLiteral("refresh");

} // namespace

void ContextMenuRefresh::refresh()
{
    if (process_ && process_->isRunning()) {
        again_ = true;
        return;
    }
    const std::optional<Bundle> plugin = Bundle::bundleWithPath(DesktopFolders::home() + installedPlugin);
    const QString program = plugin ? plugin->executablePath() : QString();
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
