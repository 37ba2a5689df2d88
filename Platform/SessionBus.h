// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <chrono>

/// What can be learnt about a message bus without the risk of waiting for it.
///
/// Libraries connect to a bus with waits of half a minute, in threads that the process waits for when it
/// ends. So a bus is asked here first, in bounded time, and is left alone if it does not answer.
namespace SessionBus {

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

/// Takes a bus that does not answer within \a timeout out of the environment, before any library meets it:
/// some wait half a minute for it, and some start a bus where there is none. Whether a bus is left.
bool keepIfItAnswers(std::chrono::milliseconds timeout);

} // namespace SessionBus
