// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <chrono>

/// What can be learnt about a message bus without the risk of waiting for it.
///
/// Libraries connect to a bus with waits of half a minute, in threads that the process waits for when it
/// ends. So a bus is asked here first, in bounded time, and is left alone if it does not answer. Programs use
/// it through SessionBus.
namespace BusProbe {

/// The address of a bus that does not exist, on which every connection attempt fails at once.
inline const QString noBusAddress = QStringLiteral("disabled:");

/// The variable that carries the session bus's address.
inline constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";

/// The session bus's address by the environment, with the runtime folder's `bus` as the default; never one
/// that would start a bus.
QString address();

enum class Answer {
    Yes,
    /// Nobody listens there, or refuses us; known at once.
    Nobody,
    /// Somebody took the connection, or might, and said nothing in time.
    Silence,
};

/// Connects, authenticates and says hello; at most \a timeout altogether. Only Unix sockets are tried.
Answer ask(const QString &address, std::chrono::milliseconds timeout);

/// To be called before an application is made. If the session bus does not answer within \a timeout, Qt is
/// given a connection to it that is closed: its own parts (accessibility, menus, tray, theme) would wait half
/// a minute for the bus at the first window, and some would start one where there is none. They do without it
/// as long as the process lives, and nothing else does. Whether the bus has answered.
bool keepLibraryFromWaiting(std::chrono::milliseconds timeout);

/// Whether Qt's own parts have the bus, or can have it: not after keepLibraryFromWaiting() has said no, nor
/// after the bus has gone once.
bool libraryHasBus();

} // namespace BusProbe
