// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QColor>
#include <QIcon>
#include <QIconEngine>

/// Another icon, tinted anew for each size and scale that is asked for.
class TintedIconEngine final : public QIconEngine
{
public:
    TintedIconEngine(QIcon source, const QColor &tint);

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override;
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
    QIconEngine *clone() const override;

private:
    /// \a size in points.
    QPixmap tinted(const QSize &size, qreal scale, QIcon::Mode mode, QIcon::State state) const;

    QIcon source_;
    QColor tint_;
};
