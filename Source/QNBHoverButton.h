// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QVariant>
#include <optional>
#include <utility>

class QNBHoverButton;

/// Told when the pointer comes to a colour button or leaves it.
class QNBHoverButtonDelegate
{
public:
    virtual ~QNBHoverButtonDelegate() = default;
    virtual void colorLabelButtonHovered(QNBHoverButton &sender) = 0;
};

/// One of the colour-label buttons: a swatch of the colour that its title names, or its icon if it has one.
/// Lit while the pointer is over it and while it is on.
class QNBHoverButton final : public QAbstractButton
{
public:
    using HoverAction = void (QNBHoverButtonDelegate::*)(QNBHoverButton &);

    explicit QNBHoverButton(QWidget *parent = nullptr);

    QString title() const { return title_; }
    /// Also what the button is called for assistive technology; the empty title stands for "no label".
    void setTitle(const QString &title);

    /// What the delegate is sent; null for nothing.
    void setHoverAction(HoverAction action) { hoverAction_ = action; }
    QNBHoverButtonDelegate *delegate() const { return delegate_; }
    /// Not owned.
    void setDelegate(QNBHoverButtonDelegate *delegate) { delegate_ = delegate; }

    bool isHovered() const { return isHovered_; }
    Qt::CheckState state() const { return isChecked() ? Qt::Checked : Qt::Unchecked; }
    /// Off, until the pointer moves again, also means not hovered.
    void setState(Qt::CheckState state);
    /// 0 is off, everything else on.
    void setStateWithNumber(const QVariant &number);

    /// The darker and the lighter colour of a label's swatch; none for a name that is no label colour.
    static std::optional<std::pair<QColor, QColor>> colorForGel(const QString &colorName);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    /// Only the owner decides which button of the row is on.
    void nextCheckState() override {}

private:
    void setHovered(bool isHovered);

    QString title_;
    QNBHoverButtonDelegate *delegate_ = nullptr;
    HoverAction hoverAction_ = nullptr;
    bool isHovered_ = false;
};
