// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <xcb/xcb.h>

/// The library's connection to the X server.
namespace XConnection {

/// How the library calls events of X.
inline const QByteArray eventType = QByteArrayLiteral("xcb_generic_event_t");
/// Of an event's type: it was sent by a client.
inline constexpr quint8 sentMask = 0x80;

/// Null where the windows are not on an X screen.
xcb_connection_t *get();
int screenNumber();
xcb_window_t rootWindow();
/// Waits for the server. 0 on failure.
xcb_atom_t atom(const QByteArray &name);

} // namespace XConnection
