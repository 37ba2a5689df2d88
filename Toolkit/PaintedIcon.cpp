// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PaintedIcon.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>
#include <utility>

namespace {

class PaintedIconEngine final : public QIconEngine
{
public:
    explicit PaintedIconEngine(std::function<void(QPainter &, const QRectF &)> paint)
        : paint_(std::move(paint))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal scale = painter->device()->devicePixelRatio();
        painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state));
    }

    /// \a size in pixels.
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        if (size.isEmpty())
            return {};
        const QPalette palette = QApplication::palette();
        const QString key =
            QStringLiteral("PaintedIcon-%1-%2x%3-%4-%5")
                .arg(QString::number(number_), QString::number(size.width()), QString::number(size.height()),
                     QString::number(mode), QString::number(palette.cacheKey()));
        QPixmap pixmap;
        if (QPixmapCache::find(key, &pixmap))
            return pixmap;
        pixmap = painted(size);
        if (mode != QIcon::Normal) {
            QStyleOption option;
            option.palette = palette;
            pixmap = QApplication::style()->generatedIconPixmap(mode, pixmap, &option);
        }
        QPixmapCache::insert(key, pixmap);
        return pixmap;
    }

    QIconEngine *clone() const override { return new PaintedIconEngine(*this); }

private:
    QPixmap painted(const QSize &size) const
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        const int side = std::min(size.width(), size.height());
        QRectF square(0, 0, side, side);
        square.moveCenter(QRectF(pixmap.rect()).center());
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::NoBrush);
        paint_(painter, square);
        return pixmap;
    }

    static int nextNumber()
    {
        static int number = 0;
        return ++number;
    }

    std::function<void(QPainter &, const QRectF &)> paint_;
    /// That of this icon and its copies, among all painted ones.
    int number_ = nextNumber();
};

} // namespace

QIcon paintedIcon(std::function<void(QPainter &, const QRectF &)> paint)
{
    return QIcon(new PaintedIconEngine(std::move(paint)));
}
