// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/DraggingInfo.h"
#include "Toolkit/DropIndicator.h"
#include "Toolkit/PromisedFile.h"

#include <QStringList>
#include <functional>
#include <memory>

class QAbstractItemView;
class QDropEvent;
class QModelIndex;

/// What a table and an outline have in common as the source and as the place of drags.
class ViewDragging
{
public:
    /// Where on a row the mouse is.
    enum class Zone { Above, On, Below };

    explicit ViewDragging(QAbstractItemView &view);
    ~ViewDragging();

    /// Drags of other types are refused without asking anybody.
    void registerForDraggedTypes(const QStringList &types) { types_ = types; }
    /// What may be done with what is dragged out of the view, in this process or in another one.
    void setDraggingSourceOperationMask(DragOperations mask, bool forLocal);

    /// The row at \a index begins to be dragged with what was declared for it.
    void begin(const QModelIndex &index, std::unique_ptr<QMimeData> declared,
               std::shared_ptr<PromisedFile> promised = {});

    bool isRegisteredFor(const QDropEvent &event) const;
    DraggingInfo infoFor(const QDropEvent &event) const;
    /// Tells the source of the drag what would be, or was, done of \a allowed; false if it is refused.
    bool answer(QDropEvent &event, DragOperations allowed) const;

    /// \a edgeShare of the height of \a row is above it, as much is below.
    static Zone zoneAt(int y, const QRect &row, double edgeShare);

    DropIndicator &indicator() { return indicator_; }

private:
    Qt::DropAction actionFor(const QDropEvent &event, DragOperations allowed) const;

    QAbstractItemView &view_;
    DropIndicator indicator_;
    QStringList types_;
    DragOperations localMask_ = DragOperation::Every;
    DragOperations otherMask_ = DragOperation::None;
    /// Other programs may still be copying these. Drags that were not dropped there leave nothing here.
    const std::shared_ptr<PromisedFiles> delivered_ = std::make_shared<PromisedFiles>();
};
