// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// The pasteboard's type for a dragged preset: the keyed archive of its index. Private to the pane.
inline const QString QNBRowIndexDragType = QStringLiteral("QNBRowIndexDragType");

/// The column of the list that shows where to take hold of a preset, and the image that it shows.
inline const QString QNBDragHandleColumn = QStringLiteral("drag_handle");
inline const QString QNBDragHandleImage = QStringLiteral("DragHandle");
