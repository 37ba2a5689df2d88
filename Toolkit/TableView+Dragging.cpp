// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A table as the source and as the place of drags.

#include "Toolkit/TableView.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/PromisedFile.h"

#include <QDropEvent>
#include <QMimeData>

namespace {

/// Most drops go between rows.
constexpr double edgeShare = 0.4;

} // namespace

void TableView::startDrag(Qt::DropActions)
{
    const int row = selectedRow();
    if (!delegate_ || row == ArrayController::noIndex)
        return;
    auto declared = std::make_unique<QMimeData>();
    Pasteboard pasteboard(*declared);
    if (!delegate_->tableViewWriteRowsWithIndexesToPasteboard(*this, {row}, pasteboard))
        return;
    std::shared_ptr<PromisedFile> promised = promiseOf(row, pasteboard);
    dragging_.begin(model()->index(row, 0), std::move(declared), std::move(promised));
}

void TableView::dragEnterEvent(QDragEnterEvent *event)
{
    // What is under the mouse is told by the first move, which follows at once.
    event->setAccepted(dragging_.isRegisteredFor(*event));
}

void TableView::dragMoveEvent(QDragMoveEvent *event)
{
    // Scrolls near the edges, and refuses.
    QTreeView::dragMoveEvent(event);
    const DropPlace place = dropPlaceAt(event->position().toPoint());
    if (dragging_.answer(*event, validate(*event, place)))
        dragging_.indicator().show(place.indicator);
    else
        dragging_.indicator().hide();
}

void TableView::dragLeaveEvent(QDragLeaveEvent *event)
{
    dragging_.indicator().hide();
    QTreeView::dragLeaveEvent(event);
}

void TableView::dropEvent(QDropEvent *event)
{
    dragging_.indicator().hide();
    stopAutoScroll();
    const DropPlace place = dropPlaceAt(event->position().toPoint());
    if (!dragging_.answer(*event, validate(*event, place)))
        return;
    if (!delegate_->tableViewAcceptDrop(*this, dragging_.infoFor(*event), place.row, place.operation))
        event->ignore();
}

TableView::DropPlace TableView::dropPlaceAt(const QPoint &point) const
{
    const int width = viewport()->width();
    const QModelIndex index = indexAt({width / 2, point.y()});
    const QRect cell = visualRect(index);
    const QRect row(0, cell.top(), width, cell.height());
    switch (index.isValid() ? ViewDragging::zoneAt(point.y(), row, edgeShare) : ViewDragging::Zone::Below) {
    case ViewDragging::Zone::On:
        return {index.row(), TableDropOperation::On, row};
    case ViewDragging::Zone::Above:
        return {index.row(), TableDropOperation::Above, QRect(0, row.top(), width, 0)};
    case ViewDragging::Zone::Below:
        break;
    }
    const int count = model()->rowCount();
    const int end = index.isValid() ? index.row() + 1 : count;
    const QModelIndex last = model()->index(end - 1, 0);
    return {end, TableDropOperation::Above,
            QRect(0, last.isValid() ? visualRect(last).bottom() + 1 : 0, width, 0)};
}

DragOperations TableView::validate(const QDropEvent &event, const DropPlace &place)
{
    if (!delegate_ || !dragging_.isRegisteredFor(event))
        return DragOperation::None;
    return delegate_->tableViewValidateDrop(*this, dragging_.infoFor(event), place.row, place.operation);
}

std::shared_ptr<PromisedFile> TableView::promiseOf(int row, const Pasteboard &pasteboard)
{
    const QVariantList extensions = pasteboard.propertyListForType(PasteboardType::filesPromise).toList();
    if (extensions.isEmpty())
        return {};
    QString name = delegate_->tableViewProbableNameOfPromisedFile(*this, row);
    if (name.isEmpty()) {
        const QModelIndex cell = model()->index(row, std::max(0, firstEditableColumn()));
        name = cell.data(Qt::EditRole).toString() + u'.' + extensions.constFirst().toString();
    }
    // By the time of the drop the view may be gone, and the record stand elsewhere.
    return std::make_shared<PromisedFile>(
        name, [view = QPointer(this),
               record = std::weak_ptr(controller_->arrangedObjects().at(row))](const QUrl &folder) {
            return view ? view->writePromisedFile(record.lock(), folder) : QString();
        });
}

QString TableView::writePromisedFile(const std::shared_ptr<KeyValueCoding> &record, const QUrl &folder)
{
    const qsizetype row = controller_ && record ? controller_->arrangedObjects().indexOf(record) : -1;
    if (!delegate_ || row < 0)
        return {};
    return delegate_
        ->tableViewNamesOfPromisedFilesDroppedAtDestination(*this, folder, {static_cast<int>(row)})
        .value(0);
}
