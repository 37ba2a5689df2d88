// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Shared/Source/QNBHelperState.h"
#include "Source/Model/QNBSettingsStore.h"
#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/VirtualScreen.h"

#include <memory>

/// A user with the pane, a session bus and a screen, who lets the helper run in the background.
class RunningFixture : public HelperFixture
{
protected:
    RunningFixture();

    /// What there is to be set, with two presets.
    QNBSettings settings() const;
    static QNBPresetRecordPtr record(const QVariantMap &stored);
    /// Stores the settings as the pane does.
    void store(const QNBSettings &settings) { store(settings, home_); }
    static void store(const QNBSettings &settings, const TemporaryHome &home);
    /// The same, and says so.
    void storeAndPost(const QNBSettings &settings);
    void post(const QString &notification);
    /// Remembers the target as the folder that was used last.
    void useTarget();

    /// The helper, once it is on the bus. The log is written to its standard error.
    std::unique_ptr<ChildProcess> start();
    std::unique_ptr<ChildProcess> startIn(const QProcessEnvironment &environment);
    QProcessEnvironment environment() const;
    /// That of another user at the same screen, who has no bus.
    QProcessEnvironment environmentOf(const TemporaryHome &otherHome) const;
    bool isOnBus() const;
    /// What it says of itself.
    QNBHelperState state() const;
    /// Has it create a preset in the target; false, with its reason in \a error, if it refuses.
    bool order(const QString &preset, QString *error = nullptr);
    /// Asks it to end, and expects it to do so in good order.
    static void expectEndOf(ChildProcess &helper);

    PrivateBus bus_;
    VirtualScreen screen_;
};
