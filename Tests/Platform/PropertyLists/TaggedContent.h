// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <optional>

/// What an archive holds, as data/archives/README.md writes it beside the archives.
namespace TaggedContent {

/// The value that a `.json` describes; none if it is no such description.
std::optional<QVariant> fromJson(const QByteArray &json);

/// A text that is equal for two values exactly if they are equal in type and value all the way down, for
/// comparing (QVariant holds 1, 1.0 and true to be equal) and for reading in a failure.
QString canonical(const QVariant &value);

} // namespace TaggedContent
