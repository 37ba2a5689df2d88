// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/Creations.h"
#include "Helper/Running/HelperObject.h"
#include "Helper/Running/PresetLauncher.h"
#include "Helper/Running/SettingsWatch.h"
#include "Helper/Running/SingleInstance.h"
#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/Mailbox.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

class SessionBus;

/// The launcher in a process of its own, where no helper runs: one window, what is created from it, and how
/// the user is told of that. There is no tray, no hot key, nothing that outlives it, and nothing that others
/// could order but to open the window for their folders; whether the helper runs stays the user's choice.
class LauncherSession : public QObject
{
public:
    explicit LauncherSession(std::shared_ptr<SessionBus> bus);
    ~LauncherSession() override;

    /// Opens the window, for \a folders if there are any. The event loop ends when it was closed and what was
    /// chosen in it is done and told.
    void start(const QStringList &folders);
    /// The same at once, once what is being created has been cancelled and undone.
    void quit();
    /// The process ends now: waits until what is being created has been undone, and ends all threads.
    void leave();

private:
    void busChanged(const std::optional<QDBusConnection> &connection);
    void endIfDone();

    const std::shared_ptr<SessionBus> bus_;
    bool isQuitting_ = false;
    bool isEnding_ = false;
    Creations creations_;
    SettingsWatch settings_;
    DistributedNotificationCenter notificationCenter_;
    PresetLauncher launcher_;
    SingleInstance instance_;
    std::optional<HelperObject> object_;
    const Mailbox mailbox_;
};
