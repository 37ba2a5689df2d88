// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Names that anybody may have chosen, as people see them in menus and lists.
namespace ShownName {

/// The longest that is shown of a name, in characters.
inline constexpr qsizetype longest = 80;

/// \a name as a line that shows every character, shortened in its middle if it is long.
QString ofName(const QString &name);

/// The same of the path \a folder as people write it, the home folder being "~".
QString ofFolder(const QString &folder);

} // namespace ShownName
