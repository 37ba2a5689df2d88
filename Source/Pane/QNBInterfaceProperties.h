// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// What the interface description says of controls and menu items beyond their own properties.
namespace QNBInterfaceProperty {

/// The name of what a menu item does.
inline constexpr char action[] = "action";
/// An integer that tells items with the same action, or checkboxes of one kind, apart.
inline constexpr char tag[] = "tag";
/// The text of a menu item that shows a folder, for as long as there is nothing in it.
inline constexpr char textWhenEmpty[] = "textWhenEmpty";

/// The action of items that only hold something, and the tags by which it is known when they make sense: what
/// is for files, or for any item.
inline const QString dummyAction = QStringLiteral("dummyAction");
inline constexpr int fileOnlyTag = 1000;
inline constexpr int anyItemTag = 1100;

} // namespace QNBInterfaceProperty
