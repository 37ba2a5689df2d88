// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/DraggingInfo.h"
#include "Toolkit/ViewCell.h"

#include <QList>
#include <QVariant>
#include <memory>

class OutlineView;

/// One item of an outline: known to the data source, opaque to the view, which holds on to the items that it
/// shows until it is reloaded. Null stands for the root, which has no row of its own.
using OutlineItem = std::shared_ptr<void>;

/// What an OutlineView asks of the code that it works for. The view asks for children only where a row is
/// expanded, and only again when it is reloaded.
class OutlineViewDataSource
{
public:
    virtual ~OutlineViewDataSource() = default;

    virtual int outlineViewNumberOfChildrenOfItem(OutlineView &outlineView, const OutlineItem &item) = 0;
    /// An item that is not expandable shows no children, whatever their number.
    virtual bool outlineViewIsItemExpandable(OutlineView &outlineView, const OutlineItem &item) = 0;
    virtual OutlineItem outlineViewChildOfItem(OutlineView &outlineView, int index,
                                               const OutlineItem &item) = 0;
    virtual QVariant outlineViewObjectValueForTableColumn(OutlineView &outlineView, int column,
                                                          const OutlineItem &item) = 0;
    /// The user typed \a value for an item that may be edited.
    virtual void outlineViewSetObjectValue(OutlineView &, const QVariant & /*value*/, int /*column*/,
                                           const OutlineItem &)
    {
    }
    virtual bool outlineViewShouldEditTableColumn(OutlineView &, int /*column*/, const OutlineItem &)
    {
        return false;
    }
    virtual void outlineViewWillDisplayCell(OutlineView &, ViewCell &, int /*column*/, const OutlineItem &) {}
    virtual void outlineViewSelectionDidChange(OutlineView &) {}
    /// The user pressed the key that deletes, with \a row selected.
    virtual void outlineViewDeleteRowRequested(OutlineView &, int /*row*/) {}

    /// Writes what is dragged when \a items are; false if they cannot be dragged.
    virtual bool outlineViewWriteItemsToPasteboard(OutlineView &, const QList<OutlineItem> & /*items*/,
                                                   Pasteboard &)
    {
        return false;
    }
    /// What dropping there would do; DragOperation::None refuses. Asked again for every step of the drag.
    /// \a childIndex is where among the children of \a proposedItem, or dropOnItem for the item itself.
    virtual DragOperations outlineViewValidateDrop(OutlineView &, const DraggingInfo &,
                                                   const OutlineItem & /*proposedItem*/, int /*childIndex*/)
    {
        return DragOperation::None;
    }
    /// Whether the drop was taken. Items are added, moved and removed by whoever answers, never by the view.
    virtual bool outlineViewAcceptDrop(OutlineView &, const DraggingInfo &, const OutlineItem & /*item*/,
                                       int /*childIndex*/)
    {
        return false;
    }

    static constexpr int dropOnItem = -1;
};
