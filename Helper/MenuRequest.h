// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QStringList>

class SessionBus;

/// The running helper's menu, wanted by a program that has none.
namespace MenuRequest {

/// Has the running helper show the presets of now, to be created in \a folders, absolute paths. Starts the
/// helper if none runs, and waits for it for a bounded time. Fails, with the reason for people, where there
/// is no session bus, or no display.
Result<> send(SessionBus &bus, const QStringList &folders);

} // namespace MenuRequest
