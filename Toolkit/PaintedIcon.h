// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>

#include <functional>

QT_BEGIN_NAMESPACE
class QPainter;
class QRectF;
QT_END_NAMESPACE

/// An icon that \a paint draws within a square, once for each size and scale in which it is shown: crisp in
/// all of them, and at no cost before. The painter is antialiased, without pen and brush. Disabled and
/// selected it looks as the style wants it.
QIcon paintedIcon(std::function<void(QPainter &painter, const QRectF &rect)> paint);
