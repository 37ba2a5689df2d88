// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/KeyCodes.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

/// A key combination that is heard whoever has the keyboard, by one of the desktop's ways. Lets go of it when
/// it goes itself.
class HotKey
{
public:
    /// They are called from the event loop, or from grab().
    struct Handlers
    {
        /// \a activationToken is the desktop's leave to open a window, see ActivationToken; it may be empty.
        std::function<void(const QByteArray &activationToken)> pressed;
        /// At most once, before the next two: the desktop asks the user.
        std::function<void()> asking;
        /// From now on it is heard; \a keys is what the desktop calls it if it may be another than the one
        /// that was asked for. Again after it was lost, and when \a keys are others.
        std::function<void(const QString &keys)> granted;
        /// For now it is no longer heard, with the reason for the log: not with this keyboard, or not until
        /// the user gives it again.
        std::function<void(const QString &reason)> lost;
        /// It will not be heard, or no longer, with the reason for the log. The hot key may be destroyed by
        /// it.
        std::function<void(const QString &reason)> refused;
        /// Of the portal: the same in its place where the user has decided so, and is not to be asked again.
        std::function<void(const QString &reason)> denied;
        /// The same in its place where the desktop has no such way at all.
        std::function<void(const QString &reason)> missing;
        /// Of the portal: the same in its place where the program that was asked has ended, or is silent.
        std::function<void(const QString &reason)> gone;
    };

    HotKey() = default;
    virtual ~HotKey() = default;
    HotKey(const HotKey &) = delete;
    HotKey &operator=(const HotKey &) = delete;

    /// Of the way, for the log.
    virtual QString name() const = 0;
    /// Once. There has to be a key with its code.
    virtual void grab(const KeyCombo &combo) = 0;
    /// The keyboard is another one, or its layouts are.
    virtual void keyboardChanged() {}
};
