// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/EndToEnd/DomainFile.h"
#include "Tests/EndToEnd/PaneCopy.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/Screen.h"
#include "Tests/Session/TemporaryHome.h"

#include <gtest/gtest.h>
#include <memory>

/// A user with a home and a bus of their own who starts the real program with the pane.
class QuenbySession
{
public:
    QuenbySession();

    /// What the desktop tells the programs that it starts.
    void setVariable(const QString &name, const QString &value) { variables_.insert(name, value); }
    /// What the host opens.
    const PaneCopy &pane() const { return pane_; }
    /// Starts the host, on \a screen if there is one, else with windows that nobody sees.
    std::unique_ptr<ChildProcess> startHost(const Screen *screen = nullptr) const;
    /// What the desktop gives to programs.
    QProcessEnvironment environment() const;
    /// Waits until \a host could be asked to end without losing anything.
    static bool waitUntilItCatchesSignals(const ChildProcess &host);

    TemporaryHome &home() { return home_; }
    QString busAddress() const { return bus_.address(); }
    DomainFile &domain() { return domain_; }
    /// How often the helper was told.
    int notifications() { return listener_.count("QNBPresetConfigurationChangedNotification"); }
    /// Waits for the notification number \a count, and says whether it is the last so far.
    bool waitForNotifications(int count);

private:
    QProcessEnvironment variables_;
    TemporaryHome home_;
    PaneCopy pane_;
    PrivateBus bus_;
    NotificationListener listener_;
    DomainFile domain_;
};
