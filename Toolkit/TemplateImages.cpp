// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TemplateImages.h"

#include <QIconEngine>
#include <QPainter>

namespace {

class CrossEngine final : public QIconEngine
{
public:
    explicit CrossEngine(const QColor &color)
        : color_(color)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode, QIcon::State) override
    {
        const qreal lineWidth = rect.width() / 6.0;
        const QRectF cross = QRectF(rect).adjusted(lineWidth, lineWidth, -lineWidth, -lineWidth);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(color_, lineWidth, Qt::SolidLine, Qt::RoundCap));
        painter->drawLine(cross.topLeft(), cross.bottomRight());
        painter->drawLine(cross.topRight(), cross.bottomLeft());
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({}, size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new CrossEngine(*this); }

private:
    QColor color_;
};

} // namespace

QIcon TemplateImages::stopProgress(const QColor &color)
{
    return QIcon(new CrossEngine(color));
}
