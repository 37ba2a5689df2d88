// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/Pasteboard.h"

#include <QFlags>

/// What a drop may do with, or has done to, what was dragged.
enum class DragOperation : uint {
    None = 0,
    Copy = 1,
    Link = 2,
    /// Whatever the place of the drop makes of it.
    Generic = 4,
    Move = 16,
    Every = 0xffffffff,
};
Q_DECLARE_FLAGS(DragOperations, DragOperation)
Q_DECLARE_OPERATORS_FOR_FLAGS(DragOperations)

/// A drag that is over a view or was dropped on it. Valid only during the call that it is handed to.
class DraggingInfo
{
public:
    /// \a data is not owned.
    DraggingInfo(const QMimeData &data, DragOperations draggingSourceOperationMask)
        : draggingPasteboard_(data)
        , draggingSourceOperationMask_(draggingSourceOperationMask)
    {
    }

    const Pasteboard &draggingPasteboard() const { return draggingPasteboard_; }
    /// What the source allows, narrowed to what the user asks for by holding modifier keys.
    DragOperations draggingSourceOperationMask() const { return draggingSourceOperationMask_; }

private:
    Pasteboard draggingPasteboard_;
    DragOperations draggingSourceOperationMask_;
};
