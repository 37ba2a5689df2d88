// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>

#include <memory>
#include <xcb/xcb.h>

/// The keyboard of the X server as it is now: which of its modifiers stand for ours.
class X11Keyboard
{
public:
    X11Keyboard();
    ~X11Keyboard();
    X11Keyboard(const X11Keyboard &) = delete;
    X11Keyboard &operator=(const X11Keyboard &) = delete;

    quint16 modifierMask(Qt::KeyboardModifiers modifiers) const;
    /// The masks of every combination of the locks that must not matter, none of them first.
    QList<quint16> lockMasks() const;

private:
    class Symbols;

    /// Of the modifier that the key with this symbol is; \a usual if none is.
    quint16 maskOf(xcb_keysym_t symbol, quint16 usual) const;

    std::unique_ptr<Symbols> symbols_;
};
