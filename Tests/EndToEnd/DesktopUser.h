// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/VirtualScreen.h"

#include <QPoint>
#include <QStringList>

#include <functional>

/// A person with a keyboard and a mouse in front of a screen. What they do reaches the window with the
/// keyboard, or the one below the pointer, in the order in which it was done.
class DesktopUser
{
public:
    explicit DesktopUser(const VirtualScreen &screen)
        : screen_(screen)
    {
    }

    /// Presses keys, as xdotool names them, one after the other.
    void presses(const QStringList &keys) const;
    void presses(const QString &key) const { presses(QStringList(key)); }
    /// Types \a text, which every keyboard has the letters of.
    void types(const QString &text) const;
    void clicks(QPoint place) const;
    void rightClicks(QPoint place) const;
    /// Moves the pointer with the button held, and lets go once \a isReady: whoever the drag is over has seen
    /// it. False if that does not come; the drag is cancelled then.
    bool drags(QPoint from, QPoint to, const std::function<bool()> &isReady) const;

private:
    void does(const QStringList &arguments) const { screen_.ask(QStringLiteral("xdotool"), arguments); }

    const VirtualScreen &screen_;
};
