// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayList>
#include <QProcessEnvironment>

/// The environment that programs get which this one starts: its own, without what a bus said to this program
/// alone when that was started for its name.
namespace ChildEnvironment {

/// Set by a bus for what it starts.
inline constexpr char busAddressVariable[] = "DBUS_STARTER_ADDRESS";
inline constexpr char busTypeVariable[] = "DBUS_STARTER_BUS_TYPE";

/// As assignments, for posix_spawn().
QByteArrayList assignments();
/// The same for QProcess.
QProcessEnvironment variables();

} // namespace ChildEnvironment
