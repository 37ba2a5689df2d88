// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <array>
#include <optional>

/// The rules of editing permissions with nine checkboxes: read, write and execute, for owner, group and
/// others.
namespace QNBPermissions {

inline constexpr quint32 read = 4;
inline constexpr quint32 write = 2;
inline constexpr quint32 execute = 1;

/// In the order of the checkboxes: for each of the classes in QNBHierarchyItem::permissionKeys.
inline constexpr std::array<quint32, 3> bits{read, write, execute};
inline constexpr std::size_t numberOfBoxes = 9;
using Boxes = std::array<bool, numberOfBoxes>;

/// What one checkbox stands for.
struct Box
{
    QString key;
    quint32 bit = 0;
};

/// Reads a checkbox's tag, a decimal number: the place of its first digit is the class (hundreds for the
/// owner, tens for the group), the digit the bit. Nothing for 0.
std::optional<Box> boxForTag(int tag);

/// The digit under \a key; 0 if there is none.
quint32 digit(const QVariantMap &permissions, const QString &key);

/// \a permissions after a click that left \a box on or off. Other bits of the digit stay as far as they fit
/// into four.
QVariantMap afterClick(QVariantMap permissions, const Box &box, bool isOn);

Boxes boxesForPermissions(const QVariantMap &permissions);
QVariantMap permissionsForBoxes(const Boxes &boxes);

/// \a item and all below it, in the order in which they are given new permissions: the files of a folder,
/// then the folder itself, then the folders in it from the last to the first, each with all below it.
QNBHierarchyItem::Children itemsToApplyTo(const QNBHierarchyItemPtr &item);

} // namespace QNBPermissions
