// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Bus/Mailbox.h"

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class SessionBus;

/// Watches whether the desktop has a tray: a StatusNotifierWatcher with a host on the session bus, or the
/// owner of the system tray's selection on an X screen.
///
/// The library looks once in the life of a process, and waits for an answer when it does. It must not be
/// asked before there is a tray, and one that answers.
class TrayWatch : public QObject, private QAbstractNativeEventFilter
{
public:
    enum class Tray { OnBus, OnScreen };

    /// Calls \a changed from the event loop as soon as it is known whether there is a tray, and then each
    /// time it comes or goes: with where it is, or with none.
    TrayWatch(std::shared_ptr<SessionBus> bus, std::function<void(std::optional<Tray> tray)> changed);
    ~TrayWatch() override;

private:
    void askWatcher();
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void watchScreen();
    bool isOnScreen();
    void tell();

    const std::shared_ptr<SessionBus> bus_;
    const std::function<void(std::optional<Tray>)> changed_;
    /// None until the bus has been asked.
    std::optional<bool> isOnBus_;
    bool hasTold_ = false;
    /// What was told last.
    std::optional<Tray> told_;
    /// Of the selection that the owner of the screen's tray holds, and of its announcement; 0 without a
    /// screen.
    quint32 selectionAtom_ = 0;
    quint32 managerAtom_ = 0;
    /// Its owner.
    quint32 trayWindow_ = 0;
    const Mailbox mailbox_;
};
