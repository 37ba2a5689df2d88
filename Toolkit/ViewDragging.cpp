// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/ViewDragging.h"

#include "Toolkit/DragData.h"
#include "Toolkit/DragSession.h"

#include <QAbstractItemView>
#include <QCursor>
#include <QDropEvent>
#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::array actionsOfOperations{
    std::pair(DragOperation::Move, Qt::MoveAction),
    std::pair(DragOperation::Copy, Qt::CopyAction),
    std::pair(DragOperation::Link, Qt::LinkAction),
    std::pair(DragOperation::Generic, Qt::MoveAction),
};

Qt::DropActions actionsOf(DragOperations operations)
{
    Qt::DropActions actions = Qt::IgnoreAction;
    for (const auto &[operation, action] : actionsOfOperations)
        actions |= operations.testFlag(operation) ? action : Qt::IgnoreAction;
    return actions;
}

DragOperations operationsOf(Qt::DropActions actions)
{
    DragOperations operations = DragOperation::None;
    for (const auto &[operation, action] : actionsOfOperations)
        operations |= actions.testFlag(action) ? operation : DragOperation::None;
    return operations;
}

/// The keys by which a user asks for one operation, the same in every program of the desktop.
DragOperations operationsAskedFor(Qt::KeyboardModifiers modifiers)
{
    const bool control = modifiers.testFlag(Qt::ControlModifier);
    const bool shift = modifiers.testFlag(Qt::ShiftModifier);
    if (control && shift)
        return DragOperation::Link;
    if (control)
        return DragOperation::Copy;
    return shift ? DragOperation::Move | DragOperation::Generic : DragOperations(DragOperation::Every);
}

/// The row at \a index as far as it shows something, so that the picture of it hides little of the place that
/// it is dragged over.
QRect contentOfRow(const QAbstractItemView &view, const QModelIndex &index)
{
    QRect content;
    for (int column = 0; column < index.model()->columnCount(index.parent()); ++column) {
        const QModelIndex cell = index.siblingAtColumn(column);
        QRect rect = view.visualRect(cell);
        const int unused = std::max(0, rect.width() - view.sizeHintForIndex(cell).width());
        rect.adjust(view.isRightToLeft() ? unused : 0, 0, view.isRightToLeft() ? 0 : -unused, 0);
        content |= rect;
    }
    return content & view.viewport()->rect();
}

} // namespace

ViewDragging::ViewDragging(QAbstractItemView &view)
    : view_(view)
    , indicator_(view)
{
    view.setDragDropMode(QAbstractItemView::DragDrop);
    // Ours knows about levels and refusals.
    view.setDropIndicatorShown(false);
}

ViewDragging::~ViewDragging() = default;

void ViewDragging::setDraggingSourceOperationMask(DragOperations mask, bool forLocal)
{
    (forLocal ? localMask_ : otherMask_) = mask;
}

void ViewDragging::begin(const QModelIndex &index, std::unique_ptr<QMimeData> declared,
                         std::shared_ptr<PromisedFile> promised)
{
    QWidget &viewport = *view_.viewport();
    const QRect content = contentOfRow(view_, index);
    const QPoint mouse = viewport.mapFromGlobal(QCursor::pos());
    // The row may have been taken hold of beside what it shows.
    const QPoint hotSpot(std::clamp(mouse.x(), content.left(), content.right()),
                         std::clamp(mouse.y(), content.top(), content.bottom()));
    const DragSession::Image image{viewport.grab(content), hotSpot - content.topLeft()};
    // One set of actions is offered to all programs: what the other ones may do, for our own views look at
    // the mask. Only where that is nothing they find nothing that they could take.
    const Qt::DropActions others = actionsOf(otherMask_);
    const Qt::DropActions offered = others == Qt::IgnoreAction ? actionsOf(localMask_) : others;
    const Qt::DropAction proposed = offered == Qt::CopyAction ? Qt::CopyAction : Qt::MoveAction;
    new DragSession(
        viewport,
        std::make_unique<DragData>(std::move(declared), localMask_, std::move(promised), delivered_), image,
        offered, proposed);
}

bool ViewDragging::isRegisteredFor(const QDropEvent &event) const
{
    const Pasteboard pasteboard(DragData::declaredBy(*event.mimeData()));
    return std::any_of(types_.begin(), types_.end(),
                       [&pasteboard](const QString &type) { return pasteboard.hasDataForType(type); });
}

DraggingInfo ViewDragging::infoFor(const QDropEvent &event) const
{
    const DragData *own = DragData::from(*event.mimeData());
    const DragOperations offered = own ? own->mask() : operationsOf(event.possibleActions());
    return {DragData::declaredBy(*event.mimeData()), offered & operationsAskedFor(event.modifiers())};
}

bool ViewDragging::answer(QDropEvent &event, DragOperations allowed) const
{
    const Qt::DropAction action = actionFor(event, allowed);
    if (action == Qt::IgnoreAction) {
        event.ignore();
        return false;
    }
    event.setDropAction(action);
    event.accept();
    return true;
}

Qt::DropAction ViewDragging::actionFor(const QDropEvent &event, DragOperations allowed) const
{
    if (allowed == DragOperation::None)
        return Qt::IgnoreAction;
    const DraggingInfo info = infoFor(event);
    if (info.draggingPasteboard().isFromThisProcess()) {
        const Qt::DropActions actions = actionsOf(allowed & info.draggingSourceOperationMask());
        for (const auto &[operation, action] : actionsOfOperations) {
            if (actions.testFlag(action))
                return action;
        }
        return Qt::IgnoreAction;
    }
    // What comes from another program stays there too, whatever it becomes here: told that it was moved, the
    // other program might remove it.
    for (const Qt::DropAction action : {Qt::CopyAction, Qt::LinkAction, Qt::MoveAction}) {
        if (event.possibleActions().testFlag(action))
            return action;
    }
    return Qt::IgnoreAction;
}

ViewDragging::Zone ViewDragging::zoneAt(int y, const QRect &row, double edgeShare)
{
    const double share = (y - row.top() + 0.5) / row.height();
    if (share < edgeShare)
        return Zone::Above;
    return share > 1 - edgeShare ? Zone::Below : Zone::On;
}
