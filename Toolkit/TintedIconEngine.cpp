// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TintedIconEngine.h"

#include <QLibraryInfo>
#include <QPainter>
#include <QPixmapCache>
#include <QVersionNumber>

#include <utility>

namespace {

/// Whether the library asks for scaled icons by their size in points, as it does since its version 6.8, or in
/// pixels. It need not be the version that this was built with.
bool sizesAreInPoints()
{
    static const bool result = QLibraryInfo::version() >= QVersionNumber(6, 8);
    return result;
}

} // namespace

TintedIconEngine::TintedIconEngine(QIcon source, const QColor &tint)
    : source_(std::move(source))
    , tint_(tint)
{
}

void TintedIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state)
{
    painter->drawPixmap(rect, tinted(rect.size(), painter->device()->devicePixelRatio(), mode, state));
}

QPixmap TintedIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    return tinted(size, 1.0, mode, state);
}

QPixmap TintedIconEngine::scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale)
{
    return tinted(sizesAreInPoints() ? size : (QSizeF(size) / scale).toSize(), scale, mode, state);
}

QSize TintedIconEngine::actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    return source_.actualSize(size, mode, state);
}

QList<QSize> TintedIconEngine::availableSizes(QIcon::Mode mode, QIcon::State state)
{
    return source_.availableSizes(mode, state);
}

QIconEngine *TintedIconEngine::clone() const
{
    return new TintedIconEngine(*this);
}

QPixmap TintedIconEngine::tinted(const QSize &size, qreal scale, QIcon::Mode mode, QIcon::State state) const
{
    const QString key = QStringLiteral("TintedIconEngine-%1-%2-%3x%4-%5-%6-%7")
                            .arg(QString::number(source_.cacheKey()), QString::number(tint_.rgba()),
                                 QString::number(size.width()), QString::number(size.height()),
                                 QString::number(scale), QString::number(mode), QString::number(state));
    QPixmap result;
    if (QPixmapCache::find(key, &result))
        return result;
    result = source_.pixmap(size, scale, mode, state);
    if (!result.isNull()) {
        QPainter painter(&result);
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        painter.fillRect(QRectF({}, result.deviceIndependentSize()), tint_);
    }
    QPixmapCache::insert(key, result);
    return result;
}
