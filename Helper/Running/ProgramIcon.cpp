// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ProgramIcon.h"

#include <QPainter>
#include <QPixmap>

#include <array>

namespace {

constexpr std::array imageSizes = {16, 22, 24, 32, 48, 64};
constexpr QColor boardColor(0x3d, 0x4f, 0x7c);
constexpr QColor branchColor(0xc9, 0xd4, 0xf0);
constexpr QColor rootColor(0xff, 0xd2, 0x7a);
constexpr QColor itemColor(0x8f, 0xd0, 0xff);

QPixmap image(int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 32.0, size / 32.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(boardColor);
    painter.drawRoundedRect(QRectF(1, 1, 30, 30), 6, 6);
    painter.setBrush(branchColor);
    painter.drawRect(QRectF(8, 12, 2, 13));
    painter.drawRect(QRectF(8, 16, 8, 2));
    painter.drawRect(QRectF(8, 23, 8, 2));
    painter.setBrush(rootColor);
    painter.drawRoundedRect(QRectF(5, 5, 12, 8), 2, 2);
    painter.setBrush(itemColor);
    painter.drawRoundedRect(QRectF(15, 14, 12, 6), 2, 2);
    painter.drawRoundedRect(QRectF(15, 21, 12, 6), 2, 2);
    return pixmap;
}

} // namespace

QIcon programIcon()
{
    QIcon icon;
    for (const int size : imageSizes)
        icon.addPixmap(image(size));
    return icon;
}
