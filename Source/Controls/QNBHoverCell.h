// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QColor>
#include <QLinearGradient>
#include <QRect>
#include <optional>
#include <utility>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

class QNBHoverButton;
class QNBHoverCell;

/// Told when the pointer comes to a colour button, moves over it or leaves it, and when the keyboard comes or
/// goes.
class QNBHoverButtonDelegate
{
public:
    virtual ~QNBHoverButtonDelegate() = default;
    virtual void colorLabelButtonHovered(QNBHoverCell &sender) = 0;
};

/// The face of a colour button: a swatch of the colour that the button's title names, or the button's image
/// if it has one. Lit while the pointer is over the button and while the button is on. Under a light palette
/// it brings a light ground of its own; under a dark one it stands on that of the button, and an image that
/// is a mask gets the colour of texts.
class QNBHoverCell
{
public:
    using HoverAction = void (QNBHoverButtonDelegate::*)(QNBHoverCell &);
    /// The darker and the lighter colour of a swatch.
    using Gel = std::pair<QColor, QColor>;

    /// The size for which the swatch stands in the middle.
    static constexpr QSize size{18, 16};

    explicit QNBHoverCell(QNBHoverButton &controlView);

    QNBHoverButton &controlView() const { return controlView_; }
    /// The button's.
    QString title() const;

    /// What the button's delegate is sent; null for nothing.
    HoverAction hoverAction() const { return hoverAction_; }
    void setHoverAction(HoverAction action) { hoverAction_ = action; }
    bool isHovered() const { return isHovered_; }
    void setIsHovered(bool isHovered) { isHovered_ = isHovered; }

    /// Whether the button tells of the pointer's coming and going.
    bool showsBorderOnlyWhileMouseInside() const { return true; }
    void mouseEntered();
    void mouseMoved();
    /// Moved over the button with a mouse button down.
    void mouseDragged();
    void mouseExited();
    /// The button has the keyboard now, or has lost it.
    void focusChanged();

    Qt::CheckState state() const { return state_; }
    /// Off, until the pointer moves again, also means not hovered.
    void setState(Qt::CheckState state);

    /// None for a name that is no label colour; upper and lower case are the same.
    static std::optional<Gel> colorForGel(const QString &colorName);
    /// Dark below and light above.
    static QLinearGradient gradient(const Gel &gel, const QRectF &square);

    /// The button has none.
    void drawBezelWithFrame(const QRect &, QPainter &) const {}
    void drawInteriorWithFrame(const QRect &frame, QPainter &painter) const;

private:
    void sendHoverAction();
    void drawSwatch(const QRect &square, QPainter &painter) const;

    QNBHoverButton &controlView_;
    HoverAction hoverAction_ = nullptr;
    bool isHovered_ = false;
    Qt::CheckState state_ = Qt::Unchecked;
};
