// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QRect>

class QAbstractItemView;

/// Shows in a view where what is dragged would land, in the style's own way: a line between rows, a frame
/// around a row. Nothing is shown while dropping is refused.
class DropIndicator
{
public:
    explicit DropIndicator(QAbstractItemView &view);

    /// In the viewport's coordinates; a rectangle without height is a line.
    void show(const QRect &place);
    void hide();
    /// Null while hidden.
    QRect place() const { return place_; }
    /// Called by the view when the rows are painted.
    void paint() const;

private:
    QAbstractItemView &view_;
    QRect place_;
    /// Ends the connections before the view is half gone.
    QObject connections_;
};
