// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Names that anybody may have chosen, as the texts of menu entries.
namespace MenuText {

/// The longest that is shown of a name, in characters.
inline constexpr qsizetype longest = 80;

/// Who reads the marks of access keys in a text.
enum class Reader {
    /// The library: "&" marks, "&&" is one.
    Library,
    /// A tray to which the library sends the text: "_" marks there, "__" is one. Of the text that it is given
    /// the library turns the first "&" into "_" unless it stands last, and leaves every other as it is.
    Tray,
};

/// The text that is read as \a name, as a line that shows every character, shortened in its middle if it is
/// long.
QString forName(const QString &name, Reader reader);

/// The path \a folder as people write it, to be shown by forName().
QString shownFolder(const QString &folder);

} // namespace MenuText
