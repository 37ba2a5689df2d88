// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <xcb/xcb.h>

/// A tray on an X screen, as the System Tray Protocol Specification has it: takes what asks to be docked, and
/// shows nothing.
class ScreenTray
{
public:
    explicit ScreenTray(const QString &display);
    ~ScreenTray();
    ScreenTray(const ScreenTray &) = delete;
    ScreenTray &operator=(const ScreenTray &) = delete;

    /// Tells every client that it is there; so does the constructor.
    void announce();
    /// Whether something has asked to be docked by now.
    bool hasIcon();

private:
    xcb_atom_t atom(const QByteArray &name) const;

    xcb_connection_t *connection_;
    xcb_window_t root_ = XCB_NONE;
    xcb_window_t window_ = XCB_NONE;
    xcb_atom_t opcodeAtom_ = XCB_ATOM_NONE;
    bool hasIcon_ = false;
};
