// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/Screen.h"

#include <QPoint>
#include <QStringList>

#include <chrono>

/// A person with a keyboard and a mouse in front of a screen. What they do reaches the window with the
/// keyboard, or the one below the pointer, in the order in which it was done.
class DesktopUser
{
public:
    /// A drag is given up after \a patience.
    DesktopUser(const Screen &screen, std::chrono::milliseconds patience)
        : screen_(screen)
        , patience_(patience)
    {
    }

    /// Presses keys, as xdotool names them, one after the other.
    void presses(const QStringList &keys) const;
    void presses(const QString &key) const { presses(QStringList(key)); }
    /// Types \a text, which every keyboard has the letters of.
    void types(const QString &text) const;
    void clicks(QPoint place) const;
    void rightClicks(QPoint place) const;
    /// Drags what is at \a from, in a window of \a dragging, to \a to, and drops it there once it has come
    /// along with the mouse. False if it does not come; the drag is given up then.
    bool drags(QPoint from, QPoint to, ChildProcess &dragging) const;

private:
    void does(const QStringList &arguments) const;

    const Screen &screen_;
    const std::chrono::milliseconds patience_;
};
