// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <optional>

/// One step of an item through its tree, for those who move it by key or from a menu.
enum class QNBItemStep {
    /// Before the sibling above.
    Up,
    /// After the sibling below.
    Down,
    /// Into the folder directly above, as its last child.
    IntoFolderAbove,
    /// Directly after the folder that it is in.
    OutOfFolder
};

/// Where something is dropped, in a tree as it is before.
struct QNBDropPlace
{
    QNBHierarchyItemPtr parent;
    int childIndex = 0;
};

/// Where an item has to be dropped to take that step; none if there is nowhere to go.
std::optional<QNBDropPlace> QNBPlaceForStep(const QNBHierarchyItem &item, QNBItemStep step);
