// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBHoverButton.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <algorithm>
#include <array>

namespace {

struct Gel
{
    QLatin1StringView name;
    QRgb dark;
    QRgb light;
    const char *spokenName;
};

constexpr std::array gels = std::to_array<Gel>({
    {QLatin1StringView("gray"), 0xff9a9a9a, 0xffc4c4c4, QT_TRANSLATE_NOOP("QNBHoverButton", "Gray")},
    {QLatin1StringView("purple"), 0xffb87bd1, 0xffdeb1e6, QT_TRANSLATE_NOOP("QNBHoverButton", "Purple")},
    {QLatin1StringView("blue"), 0xff2a93ff, 0xff8dc6ff, QT_TRANSLATE_NOOP("QNBHoverButton", "Blue")},
    {QLatin1StringView("green"), 0xffa5ce35, 0xffcce686, QT_TRANSLATE_NOOP("QNBHoverButton", "Green")},
    {QLatin1StringView("yellow"), 0xfff2d434, 0xfffdef86, QT_TRANSLATE_NOOP("QNBHoverButton", "Yellow")},
    {QLatin1StringView("orange"), 0xffff9a30, 0xffffc37c, QT_TRANSLATE_NOOP("QNBHoverButton", "Orange")},
    {QLatin1StringView("red"), 0xffff4e45, 0xffff8f88, QT_TRANSLATE_NOOP("QNBHoverButton", "Red")},
});

constexpr int swatchSize = 14;
constexpr int swatchMargin = 5;

const Gel *gelNamed(const QString &name)
{
    const auto gel = std::find_if(gels.begin(), gels.end(), [lower = name.toLower()](const Gel &candidate) {
        return candidate.name == lower;
    });
    return gel == gels.end() ? nullptr : &*gel;
}

} // namespace

QNBHoverButton::QNBHoverButton(QWidget *parent)
    : QAbstractButton(parent)
{
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setTitle({});
}

void QNBHoverButton::setTitle(const QString &title)
{
    title_ = title;
    const Gel *gel = gelNamed(title);
    const QString name = gel               ? QCoreApplication::translate("QNBHoverButton", gel->spokenName)
                         : title.isEmpty() ? QCoreApplication::translate("QNBHoverButton", "No label")
                                           : title;
    setAccessibleName(name);
    setToolTip(name);
    update();
}

void QNBHoverButton::setState(Qt::CheckState state)
{
    if (state == Qt::Unchecked)
        isHovered_ = false;
    setChecked(state == Qt::Checked);
    update();
}

void QNBHoverButton::setStateWithNumber(const QVariant &number)
{
    setState(number.toInt() == 0 ? Qt::Unchecked : Qt::Checked);
}

std::optional<std::pair<QColor, QColor>> QNBHoverButton::colorForGel(const QString &colorName)
{
    const Gel *gel = gelNamed(colorName);
    if (!gel)
        return {};
    return std::pair(QColor::fromRgb(gel->dark), QColor::fromRgb(gel->light));
}

QSize QNBHoverButton::sizeHint() const
{
    constexpr int side = swatchSize + 2 * swatchMargin;
    return {side, side};
}

bool QNBHoverButton::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::MouseMove:
        setHovered(true);
        break;
    case QEvent::Leave:
        setHovered(false);
        break;
    default:
        break;
    }
    return QAbstractButton::event(event);
}

void QNBHoverButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isHovered_ || isChecked() || hasFocus()) {
        QColor highlight = palette().color(QPalette::Highlight);
        highlight.setAlphaF(isChecked() ? 0.5F : 0.3F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(highlight);
        painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 3, 3);
    }
    QRectF swatch(0, 0, swatchSize, swatchSize);
    swatch.moveCenter(QRectF(rect()).center());
    if (!icon().isNull()) {
        icon().paint(&painter, swatch.toRect(), Qt::AlignCenter,
                     isEnabled() ? QIcon::Normal : QIcon::Disabled);
    } else if (const auto gel = colorForGel(title_)) {
        QLinearGradient gradient(swatch.topLeft(), swatch.bottomLeft());
        gradient.setColorAt(0, gel->first);
        gradient.setColorAt(1, gel->second);
        painter.setPen(QPen(gel->first.darker(130), 1));
        painter.setBrush(gradient);
        painter.drawRoundedRect(swatch.adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void QNBHoverButton::setHovered(bool isHovered)
{
    isHovered_ = isHovered;
    update();
    if (delegate_ && hoverAction_)
        (delegate_->*hoverAction_)(*this);
}
