// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Running/ContextMenuRefresh.h"
#include "Helper/Running/CreationNotices.h"
#include "Helper/Running/CreationPanel.h"
#include "Helper/Running/CreationWorker.h"
#include "Helper/Running/FolderMenu.h"
#include "Helper/Running/HelperObject.h"
#include "Helper/Running/HotKeys.h"
#include "Helper/Running/PresetMenu.h"
#include "Helper/Running/RecentFolders.h"
#include "Helper/Running/SingleInstance.h"
#include "Helper/Running/TrayIcon.h"
#include "Helper/Running/TrayWatch.h"
#include "Platform/DistributedNotificationCenter.h"
#include "Platform/SessionBus.h"

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

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
    void beginAnew();
    void reload();
    void updateTray();
    void fill(PresetMenu &menu) const;
    void popUpMenu();
    PresetMenu::Handlers menuHandlers();

    void create(qsizetype preset, const QString &folder);
    void chooseFolder(qsizetype preset);
    /// On the thread of the bus's orders.
    static Result<QList<CreationOrder>> ordersFor(const HelperService::Preset &preset,
                                                  const QStringList &folders);
    bool createAll(const QList<CreationOrder> &orders);
    /// The same, and tells the user if it is too much.
    void createOrTell(const QList<CreationOrder> &orders);
    /// On the thread of the bus's orders.
    static Result<QStringList> labelsFor(const QStringList &folders);
    void showMenu(const QStringList &labels, const QStringList &folders);
    void remember(const QList<CreationOrder> &orders);
    void settingsChanged();
    void askAboutScript(const CreationOrder &order, const Script &script);
    void openPane();

    const std::shared_ptr<SessionBus> bus_;
    SingleInstance &instance_;
    bool isQuitting_ = false;
    /// The settings were looked at, and could be read or not.
    bool hasRead_ = false;
    RecentFolders folders_;
    QStringList labels_;
    /// By default, while the settings cannot be read.
    bool showsInTray_ = true;
    /// The settings could not be read when they were looked at last, and the user knows it.
    bool isOutOfDate_ = false;
    ContextMenuRefresh contextMenu_;
    std::optional<CreationWorker> worker_;
    CreationPanel panel_;
    CreationNotices notices_;
    /// Of a burst of changes the last one is read; of one without an end, one now and then.
    QTimer reloadTimer_;
    QDeadlineTimer latestReload_;
    /// Settings that cannot be read are tried again, each time after a longer pause.
    QTimer retryTimer_;
    DistributedNotificationCenter notificationCenter_;
    std::optional<HelperObject> object_;
    HotKeys hotKeys_;
    /// For the hot key.
    std::optional<PresetMenu> popupMenu_;
    /// For a file manager.
    std::optional<FolderMenu> folderMenu_;
    /// Once there is one.
    std::optional<TrayWatch::Tray> tray_;
    std::optional<TrayWatch> trayWatch_;
    std::optional<PresetMenu> trayMenu_;
    std::optional<TrayIcon> trayIcon_;
    const Mailbox mailbox_;
};
