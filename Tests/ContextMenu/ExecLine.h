// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <optional>

/// Entries as they are read by the letter of the Desktop Entry Specification, apart from how ours are
/// written.
namespace ExecLine {

/// The raw value of \a key in the group \a group of \a entry; none if it is not there exactly once.
std::optional<QByteArray> value(const QByteArray &entry, const QByteArray &group, const QByteArray &key);

/// A value of the type string.
QByteArray string(const QByteArray &value);

/// What the value of "Exec" starts for the one file \a path; none if it breaks a rule.
std::optional<QByteArrayList> arguments(const QByteArray &value, const QByteArray &path);

} // namespace ExecLine
