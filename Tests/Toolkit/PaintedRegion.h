// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPaintEvent>
#include <QRegion>
#include <QWidget>

/// Notes down what is painted of a widget.
class PaintedRegion final : public QObject
{
public:
    explicit PaintedRegion(QWidget &widget) { widget.installEventFilter(this); }

    QRegion region;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};
