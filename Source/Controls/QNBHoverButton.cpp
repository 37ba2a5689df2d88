// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QNBHoverButton.h"

#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <array>

namespace {

struct SpokenName
{
    QLatin1StringView title;
    const char *name;
};

constexpr std::array spokenNames = std::to_array<SpokenName>({
    {QLatin1StringView(""), QT_TRANSLATE_NOOP("QNBHoverButton", "No label")},
    {QLatin1StringView("gray"), QT_TRANSLATE_NOOP("QNBHoverButton", "Gray")},
    {QLatin1StringView("purple"), QT_TRANSLATE_NOOP("QNBHoverButton", "Purple")},
    {QLatin1StringView("blue"), QT_TRANSLATE_NOOP("QNBHoverButton", "Blue")},
    {QLatin1StringView("green"), QT_TRANSLATE_NOOP("QNBHoverButton", "Green")},
    {QLatin1StringView("yellow"), QT_TRANSLATE_NOOP("QNBHoverButton", "Yellow")},
    {QLatin1StringView("orange"), QT_TRANSLATE_NOOP("QNBHoverButton", "Orange")},
    {QLatin1StringView("red"), QT_TRANSLATE_NOOP("QNBHoverButton", "Red")},
});

/// The focus ring is as wide and stands around the cell, of which it hides nothing.
constexpr int focusRingWidth = 2;

QString spokenName(const QString &title)
{
    const auto known = std::find_if(spokenNames.begin(), spokenNames.end(), [&title](const SpokenName &name) {
        return title.compare(name.title, Qt::CaseInsensitive) == 0;
    });
    return known == spokenNames.end() ? title : QCoreApplication::translate("QNBHoverButton", known->name);
}

} // namespace

QNBHoverButton::QNBHoverButton(QWidget *parent)
    : QAbstractButton(parent)
{
    setCheckable(true);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setTitle({});
}

void QNBHoverButton::setTitle(const QString &title)
{
    title_ = title;
    const QString name = spokenName(title);
    setAccessibleName(name);
    setToolTip(PlainText::toolTip(name));
    setNeedsDisplay();
}

void QNBHoverButton::setState(Qt::CheckState state)
{
    cell_.setState(state);
    setChecked(state == Qt::Checked);
    setNeedsDisplay();
}

void QNBHoverButton::setStateWithNumber(const QVariant &number)
{
    setState(number.toInt() == 0 ? Qt::Unchecked : Qt::Checked);
}

QSize QNBHoverButton::sizeHint() const
{
    return CellClass::size + QSize(2 * focusRingWidth, 2 * focusRingWidth);
}

bool QNBHoverButton::event(QEvent *event)
{
    if (cell_.showsBorderOnlyWhileMouseInside() && isEnabled()) {
        if (event->type() == QEvent::Enter)
            cell_.mouseEntered();
        else if (event->type() == QEvent::MouseMove)
            mouseMoved(static_cast<QMouseEvent &>(*event));
    }
    // What is hidden or disabled under the pointer is not always told when the pointer goes.
    const bool isLost = event->type() == QEvent::Hide || event->type() == QEvent::EnabledChange;
    if ((event->type() == QEvent::Leave && isEnabled()) || (isLost && isHovered()))
        cell_.mouseExited();
    return QAbstractButton::event(event);
}

void QNBHoverButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    cell_.drawBezelWithFrame(cellFrame(), painter);
    cell_.drawInteriorWithFrame(cellFrame(), painter);
    if (!isFocusedByKeyboard())
        return;
    constexpr int width = focusRingWidth;
    QPainterPath ring;
    ring.addRoundedRect(cellFrame().adjusted(-width, -width, width, width), width, width);
    ring.addRect(cellFrame());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(ring, palette().color(QPalette::Highlight));
}

void QNBHoverButton::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void QNBHoverButton::focusInEvent(QFocusEvent *event)
{
    // When its window has the keyboard again, what was seen before is seen again.
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
        cameByKeyboard_ = reason != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
    cell_.focusChanged();
}

void QNBHoverButton::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    cell_.focusChanged();
}

/// The mouse is the button's, wherever it goes, while it is held down.
void QNBHoverButton::mouseMoved(const QMouseEvent &event)
{
    const bool isInside = rect().contains(event.position().toPoint());
    if (event.buttons() == Qt::NoButton)
        cell_.mouseMoved();
    else if (isInside)
        cell_.mouseDragged();
    else if (isHovered())
        cell_.mouseExited();
}

QRect QNBHoverButton::cellFrame() const
{
    QRect frame({}, CellClass::size);
    frame.moveCenter(rect().center());
    return frame;
}
