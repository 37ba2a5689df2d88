// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Names that anybody may have chosen, as the texts of menu entries.
namespace MenuText {

/// Who reads the marks of access keys in a text.
enum class Reader {
    /// The library: "&" marks, "&&" is one.
    Library,
    /// A tray to which the library sends the text: "_" marks there, "__" is one. Of the text that it is given
    /// the library turns the first "&" into "_" unless it stands last, and leaves every other as it is.
    Tray,
};

/// The text that is read as ShownName::ofName() of \a name.
QString forName(const QString &name, Reader reader);

} // namespace MenuText
