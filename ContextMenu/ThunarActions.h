// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <optional>

/// The file of Thunar's custom actions, in which only the actions of ours are replaced: everything else, down
/// to the last blank, stays as it is. Ours are those whose identifier begins with "quenby-".
namespace ThunarActions {

inline const QString identifierPrefix = QStringLiteral("quenby-");

/// A file without actions.
QByteArray emptyFile();

/// \a file with \a actions, complete elements, in place of ours, or behind all others if there are none yet.
/// None if the file is none that Thunar would read, with the reason in \a error.
std::optional<QByteArray> withActions(const QByteArray &file, const QByteArrayList &actions, QString *error);

} // namespace ThunarActions
