// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"
#include "Platform/Preferences/Preferences.h"
#include "Source/Pane/QNBEarlierStatesDialog.h"
#include "Source/Pane/QNBHelperNotes.h"
#include "Source/System/CMMInstaller.h"
#include "Source/System/TQProcess.h"
#include "Toolkit/AlertPanel.h"
#include "Toolkit/FilePanel.h"

#include <QList>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QUrl;
QT_END_NAMESPACE

/// The world outside the pane.
struct QNBPaneServices
{
    /// None once the pane was left.
    using AlertAnswers = std::function<std::optional<AlertPanel::Answer>(const AlertPanel &alert)>;

    std::unique_ptr<Preferences> preferences;
    /// Posts a system-wide notification.
    std::function<void(const QString &name)> postNotificationName;
    std::function<bool(const QUrl &url)> openURL;
    /// The bundles loaded in this process.
    std::function<QList<Bundle>()> allBundles;
    QString applicationSupportPath;
    /// Opens a file or folder with the program that the desktop chooses for it.
    std::function<bool(const QString &path)> openFile;
    /// Shows a file or folder in the file manager.
    std::function<bool(const QString &path)> selectFile;
    AlertPanel::Runner runAlertPanel;
    FilePanel::Runner runFilePanel;
    /// The running processes of a name.
    std::function<QList<TQProcess>(const QString &name)> everyProcessNamed;
    /// Sends a signal, if that process still runs.
    std::function<void(const TQProcess &process, int signal)> kill;
    /// Adds to the session's login items, or takes away, what is at \a path.
    std::function<void(const QString &path, bool openAtLogin)> addLoginItem;
    /// Blocks the window.
    std::function<void(std::chrono::microseconds duration)> sleep;
    /// Calls \a changed, on the main thread, whenever the helper may have come or gone, or says otherwise.
    std::function<void(const std::function<void()> &changed)> watchHelper;
    /// What the running helper says of itself; answered on the main thread.
    QNBHelperNotes::Ask askHelper;
    /// What the installer of the file managers' plug-in asks of the world.
    std::function<CMMInstaller::Services(Preferences &preferences, const std::optional<Bundle> &paneBundle,
                                         const AlertAnswers &runAlertPanel)>
        installerServices;
    QNBEarlierStatesDialog::Runner chooseEarlierState = QNBEarlierStatesDialog::runner();
    /// Where what is not saved is kept; nowhere if empty.
    QString recoveryFolder = {};
    /// How long an edit may be in memory only.
    std::chrono::milliseconds recoveryDelay = std::chrono::seconds(2);
    /// What the window may stand still for without telling why.
    std::chrono::milliseconds unexplainedWait = std::chrono::seconds(1);

    /// The user's own.
    static QNBPaneServices standard();
};
