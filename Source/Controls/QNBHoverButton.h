// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Controls/QNBHoverCell.h"

#include <QAbstractButton>
#include <QVariant>

/// One of the colour-label buttons. Its face, and what the pointer does to it, is the cell's.
///
/// The name of the colour is the button's tool tip and what assistive technology calls it, so that nobody has
/// to tell the colours apart. Who presses it with the keyboard sees that it has the focus by a ring.
class QNBHoverButton : public QAbstractButton
{
public:
    using CellClass = QNBHoverCell;
    using HoverAction = QNBHoverCell::HoverAction;

    explicit QNBHoverButton(QWidget *parent = nullptr);

    CellClass &cell() { return cell_; }
    const CellClass &cell() const { return cell_; }

    QString title() const { return title_; }
    /// The empty title stands for "no label".
    void setTitle(const QString &title);

    /// The cell's.
    void setHoverAction(HoverAction action) { cell_.setHoverAction(action); }
    QNBHoverButtonDelegate *delegate() const { return delegate_; }
    /// Not owned.
    void setDelegate(QNBHoverButtonDelegate *delegate) { delegate_ = delegate; }

    bool isHovered() const { return cell_.isHovered(); }
    /// Whether the keyboard is here, and not only because of a click.
    bool isFocusedByKeyboard() const { return hasFocus() && cameByKeyboard_; }
    Qt::CheckState state() const { return cell_.state(); }
    void setState(Qt::CheckState state);
    /// For whole lists of buttons; 0 is off, everything else on.
    void setStateWithNumber(const QVariant &number);

    /// Has the button drawn anew, soon.
    virtual void setNeedsDisplay() { update(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    /// Only the owner decides which button of the row is on.
    void nextCheckState() override {}

private:
    void mouseMoved(const QMouseEvent &event);
    QRect cellFrame() const;

    CellClass cell_{*this};
    QString title_;
    QNBHoverButtonDelegate *delegate_ = nullptr;
    bool cameByKeyboard_ = false;
};
