// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Editing/QNBEditCommand.h"

#include <utility>
#include <vector>

/// One text attribute of an item: its name, its colour label, its content file.
class QNBSetItemTextCommand final : public QNBEditCommand
{
public:
    struct Attribute
    {
        const QString &(QNBHierarchyItem::*get)() const;
        void (QNBHierarchyItem::*set)(const QString &);
    };
    static constexpr Attribute filename{&QNBHierarchyItem::filename, &QNBHierarchyItem::setFilename};
    static constexpr Attribute colorName{&QNBHierarchyItem::colorName, &QNBHierarchyItem::setColorName};
    static constexpr Attribute contentFilename{&QNBHierarchyItem::contentFilename,
                                               &QNBHierarchyItem::setContentFilename};

    QNBSetItemTextCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, QNBHierarchyItemPtr item,
                          const Attribute &attribute, const QString &value, const QString &text);

private:
    void apply() override { set(newValue_); }
    void revert() override { set(oldValue_); }
    QNBHierarchyItemPtr itemAfterApplying() const override { return item_; }
    QNBHierarchyItemPtr itemAfterReverting() const override { return item_; }
    void set(const QString &value) const;

    QNBHierarchyItemPtr item_;
    Attribute attribute_;
    QString oldValue_;
    QString newValue_;
};

/// The permissions of one item or, all the same, of many. No row shows them: the observer is not told of each
/// item, only what was edited when that is taken back or made again.
class QNBSetPermissionsCommand final : public QNBEditCommand
{
public:
    /// \a chosen is the item that the user had selected; \a items are given the permissions in their order.
    QNBSetPermissionsCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, QNBHierarchyItemPtr chosen,
                             QNBHierarchyItem::Children items, QVariantMap permissions, const QString &text);

private:
    void apply() override;
    void revert() override;
    QNBHierarchyItemPtr itemAfterApplying() const override { return chosen_; }
    QNBHierarchyItemPtr itemAfterReverting() const override { return chosen_; }

    QNBHierarchyItemPtr chosen_;
    QNBHierarchyItem::Children items_;
    /// Runs of items with the same permissions: how many, and which.
    std::vector<std::pair<std::size_t, QVariantMap>> oldPermissions_;
    QVariantMap newPermissions_;
};
