// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Editing/QNBEditCommand.h"

/// A new item comes into the tree.
class QNBInsertItemCommand final : public QNBEditCommand
{
public:
    /// Directly after \a afterSibling, or first if that is null.
    QNBInsertItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, QNBHierarchyItemPtr item,
                         QNBHierarchyItemPtr parent, QNBHierarchyItemPtr afterSibling, const QString &text);

private:
    void apply() override { insert(item_, parent_, afterSibling_); }
    void revert() override { remove(item_, parent_); }
    QNBHierarchyItemPtr itemAfterApplying() const override { return item_; }
    QNBHierarchyItemPtr itemAfterReverting() const override;

    QNBHierarchyItemPtr item_;
    QNBHierarchyItemPtr parent_;
    QNBHierarchyItemPtr afterSibling_;
};

/// An item leaves the tree, with all below it.
class QNBRemoveItemCommand final : public QNBEditCommand
{
public:
    QNBRemoveItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, QNBHierarchyItemPtr item,
                         QNBHierarchyItemPtr parent, const QString &text);

private:
    void apply() override;
    void revert() override;
    QNBHierarchyItemPtr itemAfterApplying() const override;
    QNBHierarchyItemPtr itemAfterReverting() const override { return item_; }

    QNBHierarchyItemPtr item_;
    QNBHierarchyItemPtr parent_;
    QNBHierarchyItemPtr siblingBefore_;
    /// As the item left.
    QNBEditObserver::Expansion expansion_;
};

/// A copy of an item, with the same identifiers, comes into the tree, and then the item leaves it.
class QNBMoveItemCommand final : public QNBEditCommand
{
public:
    struct Place
    {
        QNBHierarchyItemPtr parent;
        /// As the tree is before the move; may be the item itself. Null for the first place.
        QNBHierarchyItemPtr afterSibling;
    };

    QNBMoveItemCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, QNBHierarchyItemPtr item,
                       QNBHierarchyItemPtr parent, QNBHierarchyItemPtr copy, Place to, const QString &text);

private:
    void apply() override;
    void revert() override;
    QNBHierarchyItemPtr itemAfterApplying() const override { return copy_; }
    QNBHierarchyItemPtr itemAfterReverting() const override { return item_; }

    QNBHierarchyItemPtr item_;
    QNBHierarchyItemPtr parent_;
    QNBHierarchyItemPtr copy_;
    Place to_;
    /// As the tree is just before the item leaves it; may be the copy.
    QNBHierarchyItemPtr siblingBefore_;
};
