// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace NameOwner {

/// Asks \a bus which program has \a name, and gives the name that is that program's own to \a then, from the
/// event loop; an empty one if none has. Not told once \a context is gone.
///
/// Who connects to a signal by the program's own name hears of no other program, and need not wait for the
/// bus: for any other name the library asks by itself, and waits for the answer.
void ask(const QDBusConnection &bus, const QString &name, QObject *context,
         const std::function<void(const QString &owner)> &then);

} // namespace NameOwner
