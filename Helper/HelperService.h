// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

/// The running helper as other programs find it on the session bus.
namespace HelperService {

inline const QString name = QStringLiteral("org.quenby.QNBHelper");
inline const QString path = QStringLiteral("/org/quenby/QNBHelper");
inline const QString interfaceName = name;
/// The preset as the command line names it, then the folders.
inline const QString createMethod = QStringLiteral("Create");

enum class Answer {
    /// It has taken the order, and will tell the user the result.
    Taken,
    /// Nothing happened.
    NotRunning,
    /// Nothing happened: it knows no such preset, or more than one, or cannot read the presets.
    NotUnderstood,
    /// It may or may not have taken the order.
    Failed,
};

/// Asks the helper on the bus at \a busAddress; waits for its answer for a bounded time.
Answer create(const QString &preset, const QStringList &folders, const QString &busAddress, QString *error);

} // namespace HelperService
