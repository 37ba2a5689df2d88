// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/KeyCodes.h"
#include "Shared/Source/QNBHelperState.h"
#include "Tests/Helper/Running/RunningFixture.h"

#include <memory>

/// A user at a screen whose helper hears of a hot key, and shows the launcher when it is pressed. It is not
/// in the tray.
class HotKeyFixture : public RunningFixture
{
protected:
    using HotKeyState = QNBHelperState::HotKey;

    static constexpr QNBKeyCombo controlAltP{KeyCodes::commandFlag | KeyCodes::optionFlag, 35};
    static constexpr QNBKeyCombo controlF12{KeyCodes::commandFlag, 111};
    static inline const QString typedControlAltP = QStringLiteral("ctrl+alt+p");
    static inline const QString typedControlF12 = QStringLiteral("ctrl+F12");

    HotKeyFixture() { useTarget(); }

    QNBSettings with(const QNBKeyCombo &combo) const;
    /// Another user's helper, which has the hot key.
    std::unique_ptr<ChildProcess> startOther(const QNBKeyCombo &combo);
    /// The windows are on an X screen all the same, as those of older programs are there.
    std::unique_ptr<ChildProcess> startInWaylandSession();
    bool waitForState(HotKeyState expected) const;
    /// The only window that it shows then.
    bool hasLauncher(const ChildProcess &helper) const { return !screen_.windowsOf(helper.pid()).isEmpty(); }
    /// Once what is typed goes there.
    bool waitForLauncher(const ChildProcess &helper) const;
    static bool waitForLog(ChildProcess &helper, const QByteArray &text, qsizetype times = 1);
    static bool waitUntilHeard(ChildProcess &helper, qsizetype times = 1);

private:
    const TemporaryHome otherHome_;
};
