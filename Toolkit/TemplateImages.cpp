// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TemplateImages.h"

#include "Toolkit/PaintedIcon.h"

#include <QPainter>

QIcon TemplateImages::stopProgress(const QColor &color)
{
    return paintedIcon([color](QPainter &painter, const QRectF &rect) {
        const qreal lineWidth = rect.width() / 6.0;
        const QRectF cross = rect.adjusted(lineWidth, lineWidth, -lineWidth, -lineWidth);
        painter.setPen(QPen(color, lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
    });
}
