// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace Creation {

/// The names of items are data: which of them can be names of files.
namespace ItemName {

/// In the file systems of this platform.
inline constexpr qsizetype mostBytes = 255;

/// Why \a name can be no file's; empty if it can.
QString problem(const QString &name, const QByteArray &bytes);

/// A path of \a components, the last one first, in one line for people. It begins with an ellipsis if \a
/// isCut, that is if there are more of them.
QString shownPath(const QList<QString> &components, bool isCut);
/// \a name in the same way, or its beginning.
QString shownName(const QString &name);

/// Nobody reads more characters of a path.
inline constexpr qsizetype mostShown = 1024;

} // namespace ItemName

} // namespace Creation
