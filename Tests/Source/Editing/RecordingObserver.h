// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Editing/QNBEditCommand.h"

#include <QStringList>
#include <utility>

/// Notes what it is told, in order.
class RecordingObserver final : public QNBEditObserver
{
public:
    void presetWillBeEditedAgain(const QNBPresetRecordPtr &) override { told_ << QStringLiteral("preset"); }
    void changesWillBegin() override { told_ << QStringLiteral("begin"); }
    void changesDidEnd() override { told_ << QStringLiteral("end"); }
    void childWasInserted(const QNBHierarchyItemPtr &parent, std::size_t index) override
    {
        told_ << QStringLiteral("inserted %1 in %2").arg(index).arg(parent->filename());
    }
    void childWasRemoved(const QNBHierarchyItemPtr &parent, std::size_t index) override
    {
        told_ << QStringLiteral("removed %1 in %2").arg(index).arg(parent->filename());
    }
    void itemsDidChange(const QNBHierarchyItem::Children &items) override
    {
        for (const QNBHierarchyItemPtr &item : items)
            told_ << QStringLiteral("changed %1").arg(item->filename());
    }
    Expansion expansionOf(const QNBHierarchyItemPtr &) const override { return {}; }
    void setExpansionOf(const QNBHierarchyItemPtr &, const Expansion &) override {}
    void itemWasEditedAgain(const QNBHierarchyItemPtr &item) override
    {
        told_ << QStringLiteral("show %1").arg(item->filename());
    }

    /// What was told since the last time.
    QStringList take() { return std::exchange(told_, {}); }

private:
    QStringList told_;
};
