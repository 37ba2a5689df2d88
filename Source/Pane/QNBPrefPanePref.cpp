// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/Mailbox.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Desktop/FileViewer.h"
#include "Platform/Desktop/Workspace.h"
#include "Platform/Processes/ProcessTable.h"
#include "Shared/Source/QNBHelperState.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Pane/QNBFileManagersRow.h"
#include "Source/Pane/QNBHelperNotes.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Source/System/HJSLoginItemController.h"
#include "Toolkit/OutlineView.h"

#include <QDir>
#include <QUrl>
#include <algorithm>
#include <thread>

Q_LOGGING_CATEGORY(lcPane, "quenby.pane")

namespace {

const QString recoveryFolderName = QStringLiteral("Recovery");

/// Empty without a home.
QString folderForRecovery()
{
    const QString folder = DesktopFolders::stateFolder();
    return folder.isEmpty() ? QString() : QDir(folder).filePath(recoveryFolderName);
}

} // namespace

QNBPaneServices QNBPaneServices::standard()
{
    const auto bus = std::make_shared<SessionBus>();
    const auto center = std::make_shared<DistributedNotificationCenter>(bus);
    const auto fileViewer = std::make_shared<FileViewer>(bus);
    return {
        .preferences = std::make_unique<Preferences>(QNBProductIdentifier()),
        .postNotificationName = [center](const QString &name) { center->postNotificationName(name); },
        .openURL = [](const QUrl &url) { return Workspace::openURL(url); },
        .allBundles = [] { return Bundle::allBundles(); },
        .applicationSupportPath = QNBApplicationSupportPath(),
        .openFile = [](const QString &path) { return Workspace::openFile(path); },
        .selectFile = [fileViewer](const QString &path) { return fileViewer->selectFile(path); },
        .runAlertPanel = AlertPanel::runner(),
        .runFilePanel = FilePanel::runner(),
        .everyProcessNamed = [](const QString &name) { return TQProcess::everyProcessNamed(name); },
        .kill = [](const TQProcess &process,
                   int signal) { ProcessTable::sendSignal(process.processSerialNumber(), signal); },
        .addLoginItem =
            [](const QString &path, bool openAtLogin) {
                HJSLoginItemController::addLoginItemOpenAtLogin(path, openAtLogin);
            },
        .sleep = [](std::chrono::microseconds duration) { std::this_thread::sleep_for(duration); },
        .watchHelper =
            [bus, center, mailbox = std::make_shared<Mailbox>()](const std::function<void()> &changed) {
                bus->watchOwner(QNBHelperServiceName(), mailbox->bound<>(changed));
                center->addObserver(QNBHelperStateChangedNotification, changed);
            },
        .askHelper =
            [bus, mailbox = std::make_shared<Mailbox>()](const auto &answered) {
                QNBHelperState::ask(*bus, mailbox->bound<const std::optional<QNBHelperState> &>(answered));
            },
        .installerServices = &CMMInstaller::Services::standard,
        .recoveryFolder = folderForRecovery(),
    };
}

QNBPrefPanePref::QNBPrefPanePref(Services services)
    : _services(std::move(services))
    , _unsavedState(paneOfUnsavedState(), _services.recoveryFolder, _services.recoveryDelay)
{
}

QNBPrefPanePref::~QNBPrefPanePref()
{
    if (_mainView) {
        _ui_presetHierarchyView->setDataSource(nullptr);
        _ui_presetListView->setDelegate(nullptr);
        for (QNBHoverButton *button : std::as_const(_hoverButtons))
            button->setDelegate(nullptr);
    }
}

std::optional<Bundle> QNBPrefPanePref::ourBundle(const QList<Bundle> &allBundles)
{
    const auto ours = std::find_if(allBundles.begin(), allBundles.end(), [](const Bundle &bundle) {
        return bundle.bundleIdentifier() == QNBProductIdentifier();
    });
    return ours == allBundles.end() ? std::nullopt : std::optional(*ours);
}

std::optional<Bundle> QNBPrefPanePref::ourBundle() const
{
    if (!_bundle)
        _bundle = ourBundle(_services.allBundles());
    return _bundle;
}
