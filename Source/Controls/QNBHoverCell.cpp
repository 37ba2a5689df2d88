// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBHoverCell.h"

#include "Source/Controls/QColor+HexInitializer.h"
#include "Source/Controls/QNBHoverButton.h"
#include "Toolkit/DarkGround.h"

#include <QHash>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr QColor ground(253, 253, 253);
const QColor lightHighlight = QColor::fromRgbF(0.9F, 0.9F, 0.9F);
const QColor darkHighlight = QColor::fromRgbF(1.0F, 1.0F, 1.0F, 0.3F);
constexpr QRect squareInFrame(4, 3, 10, 10);
constexpr qreal cornerRadius = 1.0;
constexpr QRect imageInFrame(5, 5, 8, 8);
constexpr qreal imageOpacity = 0.8;
constexpr qreal disabledOpacity = 0.4;

// The shadow's offset of -1 is given for a y axis that points up: it falls one point below the square, as if
// lit from above. The blur radius is twice the standard deviation of the bell curve that blurs.
constexpr qreal shadowBlurRadius = 1.25;
constexpr qreal shadowDrop = 1.0;
constexpr qreal shadowAlpha = 0.75;
constexpr int shadowReach = 3;

/// How dark the blurred image of a bar from \a from to \a to is at \a position, 0 to 1.
qreal blurredBar(qreal position, qreal from, qreal to)
{
    constexpr qreal scale = std::numbers::sqrt2 * shadowBlurRadius / 2;
    return (std::erf((position - from) / scale) - std::erf((position - to) / scale)) / 2;
}

/// The profile of a shadow along one axis, pixel by pixel from \a origin on.
std::vector<qreal> shadowProfile(int pixels, qreal ratio, qreal origin, qreal from, qreal to)
{
    std::vector<qreal> profile;
    profile.reserve(static_cast<std::size_t>(pixels));
    for (int pixel = 0; pixel < pixels; ++pixel)
        profile.push_back(blurredBar(origin + (pixel + 0.5) / ratio, from, to));
    return profile;
}

/// A blurred rectangle is the product of two blurred bars; made at the resolution of the painter's device.
void drawShadow(const QRect &square, QPainter &painter)
{
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QRect area =
        square.adjusted(-shadowReach, -shadowReach, shadowReach, shadowReach + qRound(shadowDrop));
    QImage shadow(area.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    shadow.setDevicePixelRatio(ratio);
    const std::vector<qreal> across =
        shadowProfile(shadow.width(), ratio, area.left(), square.left(), square.left() + square.width());
    const qreal top = square.top() + shadowDrop;
    const std::vector<qreal> down =
        shadowProfile(shadow.height(), ratio, area.top(), top, top + square.height());
    for (int y = 0; y < shadow.height(); ++y) {
        for (int x = 0; x < shadow.width(); ++x) {
            const qreal darkness =
                across[static_cast<std::size_t>(x)] * down[static_cast<std::size_t>(y)] * shadowAlpha;
            shadow.setPixel(x, y, qRgba(0, 0, 0, qRound(255 * darkness)));
        }
    }
    painter.drawImage(QRectF(area), shadow);
}

QHash<QString, QNBHoverCell::Gel> makeGels()
{
    const auto gel = [](const QString &dark, const QString &light) {
        return QNBHoverCell::Gel(colorFromHexRGB(dark), colorFromHexRGB(light));
    };
    return {
        {QStringLiteral("gray"), gel(QStringLiteral("9A9A9A"), QStringLiteral("C4C4C4"))},
        {QStringLiteral("purple"), gel(QStringLiteral("B87BD1"), QStringLiteral("DEB1E6"))},
        {QStringLiteral("blue"), gel(QStringLiteral("2A93FF"), QStringLiteral("8DC6FF"))},
        {QStringLiteral("green"), gel(QStringLiteral("A5CE35"), QStringLiteral("CCE686"))},
        {QStringLiteral("yellow"), gel(QStringLiteral("F2D434"), QStringLiteral("FDEF86"))},
        {QStringLiteral("orange"), gel(QStringLiteral("FF9A30"), QStringLiteral("FFC37C"))},
        {QStringLiteral("red"), gel(QStringLiteral("FF4E45"), QStringLiteral("FF8F88"))},
    };
}

} // namespace

QNBHoverCell::QNBHoverCell(QNBHoverButton &controlView)
    : controlView_(controlView)
{
}

QString QNBHoverCell::title() const
{
    return controlView_.title();
}

void QNBHoverCell::mouseEntered()
{
    isHovered_ = true;
    controlView_.setNeedsDisplay();
    sendHoverAction();
}

void QNBHoverCell::mouseMoved()
{
    mouseEntered();
}

void QNBHoverCell::mouseDragged()
{
    mouseEntered();
}

void QNBHoverCell::mouseExited()
{
    isHovered_ = false;
    sendHoverAction();
    controlView_.setNeedsDisplay();
}

void QNBHoverCell::focusChanged()
{
    sendHoverAction();
}

void QNBHoverCell::setState(Qt::CheckState state)
{
    if (state == Qt::Unchecked)
        isHovered_ = false;
    state_ = state;
}

std::optional<QNBHoverCell::Gel> QNBHoverCell::colorForGel(const QString &colorName)
{
    static const QHash<QString, Gel> gels = makeGels();
    const auto gel = gels.constFind(colorName.toLower());
    return gel == gels.constEnd() ? std::nullopt : std::optional(*gel);
}

// An angle of 270 degrees points up here, where y grows downwards: the dark end is the lower one.
QLinearGradient QNBHoverCell::gradient(const Gel &gel, const QRectF &square)
{
    QLinearGradient result(square.bottomLeft(), square.topLeft());
    result.setColorAt(0, gel.first);
    result.setColorAt(1, gel.second);
    return result;
}

void QNBHoverCell::drawInteriorWithFrame(const QRect &frame, QPainter &painter) const
{
    // On a dark ground, that of the button is what shows.
    const QPalette &palette = controlView_.palette();
    const bool isDark = isDarkGround(palette.color(QPalette::Base));
    if (!isDark)
        painter.fillRect(frame, ground);
    if (isHovered_ || state_ == Qt::Checked)
        painter.fillRect(frame, isDark ? darkHighlight : lightHighlight);

    const qreal opacity = controlView_.isEnabled() ? 1.0 : disabledOpacity;
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setOpacity(opacity);
    const QIcon image = controlView_.icon();
    if (image.isNull()) {
        drawSwatch(squareInFrame.translated(frame.topLeft()), painter);
    } else {
        painter.setOpacity(opacity * imageOpacity);
        QPixmap pixmap = image.pixmap(imageInFrame.size(), painter.device()->devicePixelRatioF());
        if (isDark && image.isMask()) {
            QPainter tint(&pixmap);
            tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
            tint.fillRect(imageInFrame.translated(-imageInFrame.topLeft()), palette.color(QPalette::Text));
        }
        painter.drawPixmap(imageInFrame.translated(frame.topLeft()), pixmap, pixmap.rect());
    }
    painter.restore();
}

void QNBHoverCell::sendHoverAction()
{
    if (controlView_.delegate() && hoverAction_)
        (controlView_.delegate()->*hoverAction_)(*this);
}

void QNBHoverCell::drawSwatch(const QRect &square, QPainter &painter) const
{
    drawShadow(square, painter);
    painter.fillRect(square, Qt::white);
    const std::optional<Gel> gel = colorForGel(title());
    if (!gel)
        return;
    // The gradient stays within its square, and so does its shadow: nothing of that is seen.
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient(*gel, QRectF(square)));
    painter.drawRoundedRect(square, cornerRadius, cornerRadius);
}
