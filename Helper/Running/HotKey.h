// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/KeyCodes.h"

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
        std::function<void()> pressed;
        /// At most once: from now on it is heard.
        std::function<void()> granted;
        /// At most once: it will not be heard, with the reason for the log. The hot key may be destroyed by
        /// it.
        std::function<void(const QString &reason)> refused;
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
