// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetRecord.h"

#include <QUndoCommand>
#include <vector>

/// Shows what edits of a preset's tree did. Told right after each change, be it made, taken back or made
/// again.
class QNBEditObserver
{
public:
    virtual ~QNBEditObserver() = default;

    /// An edit of this preset is about to be taken back or made again: the user should see it happen.
    virtual void presetWillBeEditedAgain(const QNBPresetRecordPtr &preset) = 0;
    /// Around changes that belong together: what there is to be seen can wait until all are made.
    virtual void changesWillBegin() = 0;
    virtual void changesDidEnd() = 0;
    virtual void childWasInserted(const QNBHierarchyItemPtr &parent, std::size_t index) = 0;
    virtual void childWasRemoved(const QNBHierarchyItemPtr &parent, std::size_t index) = 0;
    /// Names, labels or other attributes of these items are others now.
    virtual void itemsDidChange(const QNBHierarchyItem::Children &items) = 0;

    /// Which folders stand open at \a item, which is in the tree, and below it; in a form of the observer's,
    /// empty for none. Whoever takes the item out of the tree asks for it, and hands it back when the item,
    /// or a copy of it, came in again.
    using Expansion = std::vector<bool>;
    virtual Expansion expansionOf(const QNBHierarchyItemPtr &item) const = 0;
    virtual void setExpansionOf(const QNBHierarchyItemPtr &item, const Expansion &expansion) = 0;
    /// An edit was taken back or made again; \a item is what it was about, null if that is gone.
    virtual void itemWasEditedAgain(const QNBHierarchyItemPtr &item) = 0;
};

/// One step of the history: an edit of one preset's tree.
///
/// Commands hold on to the very items that they put into the tree and take out of it, so that an item keeps
/// its identity through undo and redo, and that later commands go on meaning the same items.
class QNBEditCommand : public QUndoCommand
{
public:
    void undo() final;
    void redo() final;

protected:
    /// \a text names the step in the menu. The observer has to outlive the command.
    QNBEditCommand(QNBEditObserver &observer, QNBPresetRecordPtr preset, const QString &text);

    virtual void apply() = 0;
    virtual void revert() = 0;
    /// What to show after the edit, or after taking it back: an item of the tree as it is then, or null.
    virtual QNBHierarchyItemPtr itemAfterApplying() const = 0;
    virtual QNBHierarchyItemPtr itemAfterReverting() const = 0;

    QNBEditObserver &observer() const { return observer_; }
    /// The changes that every edit of the structure is made of; they tell the observer.
    void insert(const QNBHierarchyItemPtr &item, const QNBHierarchyItemPtr &parent,
                const QNBHierarchyItemPtr &afterSibling) const;
    void remove(const QNBHierarchyItemPtr &item, const QNBHierarchyItemPtr &parent) const;
    /// The child before \a item; null if it is the first.
    static QNBHierarchyItemPtr siblingBefore(const QNBHierarchyItem &item, const QNBHierarchyItem &parent);

private:
    QNBEditObserver &observer_;
    QNBPresetRecordPtr preset_;
    bool wasMade_ = false;
};
