// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// The keyboards of a Wayland display. A program is told of a layout that is switched only while it has the
/// keyboard, but of all layouts at any time.
namespace WaylandKeymap {

/// The keymap that the display gives to its programs, as text; empty if there is no such display, or no
/// keyboard. The display is the socket \a name, by default the one of the environment. Waits for it.
QByteArray text(const QString &name = {});

} // namespace WaylandKeymap
