// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// An outline as the source and as the place of drags.

#include "Toolkit/OutlineView.h"

#include "Toolkit/OutlineViewModel.h"

#include <QDropEvent>
#include <QMimeData>
#include <QTimerEvent>
#include <algorithm>

namespace {

/// Drops between rows and on them are as frequent.
constexpr double edgeShare = 0.25;
/// Long enough to pass over folders without opening them.
constexpr int openingDelayInMilliseconds = 700;

int depthOf(QModelIndex index)
{
    int depth = 0;
    while ((index = index.parent()).isValid())
        ++depth;
    return depth;
}

} // namespace

void OutlineView::startDrag(Qt::DropActions)
{
    const QModelIndex index = indexAtRow(selectedRow());
    if (!dataSource_ || !index.isValid())
        return;
    auto declared = std::make_unique<QMimeData>();
    Pasteboard pasteboard(*declared);
    if (dataSource_->outlineViewWriteItemsToPasteboard(*this, {model_->itemAtIndex(index)}, pasteboard))
        dragging_.begin(index, std::move(declared));
}

void OutlineView::dragEnterEvent(QDragEnterEvent *event)
{
    // What is under the mouse is told by the first move, which follows at once.
    event->setAccepted(dragging_.isRegisteredFor(*event));
}

void OutlineView::dragMoveEvent(QDragMoveEvent *event)
{
    // Scrolls near the edges, and refuses.
    QTreeView::dragMoveEvent(event);
    const QPoint point = event->position().toPoint();
    openSoon(indexAt(point));
    const DropPlace place = dropPlaceAt(point);
    if (dragging_.answer(*event, validate(*event, place)))
        dragging_.indicator().show(place.indicator);
    else
        dragging_.indicator().hide();
}

void OutlineView::dragLeaveEvent(QDragLeaveEvent *event)
{
    stopDropping();
    QTreeView::dragLeaveEvent(event);
}

void OutlineView::dropEvent(QDropEvent *event)
{
    stopDropping();
    stopAutoScroll();
    const DropPlace place = dropPlaceAt(event->position().toPoint());
    if (!dragging_.answer(*event, validate(*event, place)))
        return;
    if (!dataSource_->outlineViewAcceptDrop(*this, dragging_.infoFor(*event), place.item, place.childIndex))
        event->ignore();
}

void OutlineView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != openingTimer_.timerId()) {
        QTreeView::timerEvent(event);
        return;
    }
    openingTimer_.stop();
    expand(opening_);
}

OutlineView::DropPlace OutlineView::dropPlaceAt(const QPoint &point) const
{
    const int topLevelRows = model_->rowCount();
    if (topLevelRows == 0)
        return {{}, OutlineViewDataSource::dropOnItem, viewport()->rect()};
    const QModelIndex index = indexAt(point);
    if (!index.isValid())
        return dropPlaceAmong({}, topLevelRows, numberOfRows() * heightOfRows() - verticalOffset());
    const QRect row = visualRect(index);
    switch (ViewDragging::zoneAt(point.y(), row, edgeShare)) {
    case ViewDragging::Zone::Above:
        return dropPlaceAmong(index.parent(), index.row(), row.top());
    case ViewDragging::Zone::Below:
        return dropPlaceBelow(index, point.x());
    case ViewDragging::Zone::On:
        break;
    }
    return dropPlaceOn(index);
}

OutlineView::DropPlace OutlineView::dropPlaceOn(const QModelIndex &index) const
{
    const QRect row = visualRect(index);
    return {model_->itemAtIndex(index), OutlineViewDataSource::dropOnItem,
            fromIndentation(indentationOfChildren(index.parent()), row.top(), row.height())};
}

OutlineView::DropPlace OutlineView::dropPlaceAmong(const QModelIndex &parent, int childIndex, int y) const
{
    return {model_->itemAtIndex(parent), childIndex, fromIndentation(indentationOfChildren(parent), y, 0)};
}

// Below the last child of a folder there are as many places as folders end there: how far the mouse is
// indented tells which is meant.
OutlineView::DropPlace OutlineView::dropPlaceBelow(const QModelIndex &index, int x) const
{
    const int y = visualRect(index).bottom() + 1;
    if (isExpanded(index) && model_->rowCount(index) > 0)
        return dropPlaceAmong(index, 0, y);
    const QModelIndex below = indexBelow(index);
    const int outermost = below.isValid() ? depthOf(below) : 0;
    QModelIndex previous = index;
    for (int depth = depthOf(index); depth > outermost; --depth) {
        if (distanceFromStart(x) >= indentationOfChildren(previous.parent()))
            break;
        previous = previous.parent();
    }
    return dropPlaceAmong(previous.parent(), previous.row() + 1, y);
}

int OutlineView::distanceFromStart(int x) const
{
    return isRightToLeft() ? viewport()->width() - 1 - x : x;
}

int OutlineView::indentationOfChildren(const QModelIndex &parent) const
{
    const int depth = (parent.isValid() ? depthOf(parent) + 1 : 0) + (rootIsDecorated() ? 1 : 0);
    return depth * indentation() - horizontalOffset();
}

QRect OutlineView::fromIndentation(int indentation, int y, int height) const
{
    const int width = viewport()->width();
    const int x = isRightToLeft() ? 0 : indentation;
    // The line below the last row stays visible when the rows fill the view.
    const int top = height > 0 ? y : std::min(y, viewport()->height() - 1);
    return {x, top, width - indentation, height};
}

DragOperations OutlineView::validate(const QDropEvent &event, const DropPlace &place)
{
    if (!dataSource_ || !dragging_.isRegisteredFor(event))
        return DragOperation::None;
    return dataSource_->outlineViewValidateDrop(*this, dragging_.infoFor(event), place.item,
                                                place.childIndex);
}

void OutlineView::openSoon(const QModelIndex &index)
{
    if (opening_ == index)
        return;
    opening_ = index;
    if (index.isValid() && !isExpanded(index) && model_->hasChildren(index))
        openingTimer_.start(openingDelayInMilliseconds, this);
    else
        openingTimer_.stop();
}

void OutlineView::stopDropping()
{
    dragging_.indicator().hide();
    openingTimer_.stop();
    opening_ = QModelIndex();
}
