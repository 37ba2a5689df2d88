// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/ContextMenuRefresh.h"
#include "Helper/Running/Creations.h"
#include "Helper/Running/HelperObject.h"
#include "Helper/Running/HotKeys.h"
#include "Helper/Running/PresetLauncher.h"
#include "Helper/Running/PresetMenu.h"
#include "Helper/Running/SettingsWatch.h"
#include "Helper/Running/SingleInstance.h"
#include "Helper/Running/TrayIcon.h"
#include "Helper/Running/TrayWatch.h"
#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/SessionBus.h"
#include "Shared/Source/QNBHelperState.h"

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

/// The running helper: brings together the settings, where they are offered, and what the user chooses.
class HelperSession : public QObject
{
public:
    /// What the event loop ends with if the process is to begin anew: Qt's own part in the tray knows one
    /// session bus only, the one that was there when the process started.
    static constexpr int beginAnewCode = 100;

    HelperSession(std::shared_ptr<SessionBus> bus, SingleInstance &instance);
    ~HelperSession() override;

    void start();
    /// Ends the event loop once what is being created has been cancelled and undone.
    void quit();
    /// The process ends now: waits until what is being created has been undone, and ends all threads.
    void leave();

private:
    void busChanged(const std::optional<QDBusConnection> &connection);
    /// Tells the pane.
    void stateChanged();
    void beginAnew();
    void update(const Result<QNBSettings> &settings);
    void updateTray();
    void fill(PresetMenu &menu) const;
    PresetMenu::Handlers menuHandlers();

    void create(qsizetype preset, const QString &folder);
    void chooseFolder(qsizetype preset);

    const std::shared_ptr<SessionBus> bus_;
    SingleInstance &instance_;
    bool isQuitting_ = false;
    /// The settings were looked at, and could be read or not.
    bool hasRead_ = false;
    /// By default, while the settings cannot be read.
    bool showsInTray_ = true;
    /// The settings could not be read when they were looked at last, and the user knows it.
    bool isOutOfDate_ = false;
    ContextMenuRefresh contextMenu_;
    Creations creations_;
    SettingsWatch settings_;
    DistributedNotificationCenter notificationCenter_;
    std::optional<HelperObject> object_;
    PresetLauncher launcher_;
    QNBHelperState state_;
    HotKeys hotKeys_;
    /// The first that there was.
    std::optional<TrayWatch::Tray> tray_;
    std::optional<TrayWatch> trayWatch_;
    std::optional<PresetMenu> trayMenu_;
    std::optional<TrayIcon> trayIcon_;
    const Mailbox mailbox_;
};
