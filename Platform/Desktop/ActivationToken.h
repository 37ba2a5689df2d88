// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

/// The desktop's leave to bring one window to the front, which it gives to the programs that it starts.
namespace ActivationToken {

inline constexpr char variable[] = "XDG_ACTIVATION_TOKEN";
/// The same of older desktops.
inline constexpr char startupVariable[] = "DESKTOP_STARTUP_ID";

/// The one of this process, to be passed on to the process that shows the window in its place; empty if there
/// is none. What shows windows may take it out of the environment.
inline QByteArray ofThisProcess()
{
    const QByteArray token = qgetenv(variable);
    return token.isEmpty() ? qgetenv(startupVariable) : token;
}

} // namespace ActivationToken
