// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <QString>
#include <vector>

class QTreeView;

/// A tree on screen, fully expanded, in which one item can be edited: the first file at or below the middle
/// row, which is selected.
class EditedTree
{
public:
    EditedTree() = default;
    virtual ~EditedTree() = default;
    EditedTree(const EditedTree &) = delete;
    EditedTree &operator=(const EditedTree &) = delete;

    virtual QTreeView &view() = 0;
    /// A new item behind the edited one.
    virtual void insert() = 0;
    virtual void rename(const QString &name) = 0;
    /// Another colour label than it has.
    virtual void color() = 0;
    virtual void remove() = 0;
    /// To the first place of the top level.
    virtual void move() = 0;
    /// Takes the last edit back and selects the edited item again.
    virtual void restore() = 0;

    /// Shows none of the rows; nothing that showExpanded() does is done before.
    virtual void hideRows() = 0;
    /// Shows all of them.
    virtual void showExpanded() = 0;

    /// The indexes of children that lead from the root to the item to edit.
    static std::vector<int> pathToMiddle(const QNBHierarchyItem &root);
};
