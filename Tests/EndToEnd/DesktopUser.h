// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/VirtualScreen.h"

#include <QPoint>
#include <QStringList>

#include <optional>

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
    /// Drags what is at \a from to \a to, and drops it there, once what \a dragging shows below the pointer
    /// has come along. False if it does not come; the drag is given up then.
    bool drags(QPoint from, QPoint to, const ChildProcess &dragging) const;

private:
    /// How far from the pointer a window is.
    QPoint distanceToPointer(const QString &window) const;
    void does(const QStringList &arguments) const;

    const VirtualScreen &screen_;
};
