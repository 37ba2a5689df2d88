// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Mailbox.h"

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class SessionBus;

/// Waits for the desktop to have a tray: a StatusNotifierWatcher with a host on the session bus, or the owner
/// of the system tray's selection on an X screen.
///
/// The library looks once in the life of a process, and waits for an answer when it does. It must not be
/// asked before there is a tray, and one that answers.
class TrayWatch : public QObject, private QAbstractNativeEventFilter
{
public:
    enum class Tray { OnBus, OnScreen };

    /// Calls \a appeared once, from the event loop.
    TrayWatch(std::shared_ptr<SessionBus> bus, std::function<void(Tray tray)> appeared);
    ~TrayWatch() override;

private:
    void askWatcher();
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    void watchScreen();
    void lookAtScreen();
    void appear(Tray tray);

    const std::shared_ptr<SessionBus> bus_;
    std::function<void(Tray)> appeared_;
    /// Of the selection that the owner of the screen's tray holds, and of its announcement; 0 without a
    /// screen.
    quint32 selectionAtom_ = 0;
    quint32 managerAtom_ = 0;
    const Mailbox mailbox_;
};
