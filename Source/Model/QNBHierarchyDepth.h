// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyList.h"
#include "Source/Model/QNBHierarchyItem.h"

/// How deep the tree of a preset may be: a deeper one could neither be stored nor read.
namespace QNBHierarchyDepth {

/// A stored item is a dictionary, and its children stand in an array.
inline constexpr int levelsPerItem = 2;
/// The domain, the list of presets, the record; and the root, which is a dictionary of its own.
inline constexpr int levelsDownToRoot = 4;
/// The root has depth 0.
inline constexpr int deepest = (PropertyList::Limits::depth - levelsDownToRoot) / levelsPerItem;

/// How many parents an item has.
int ofItem(const QNBHierarchyItem &item);
/// How many levels of items there are below an item; 0 if it has no children.
int belowItem(const QNBHierarchyItem &item);

} // namespace QNBHierarchyDepth
