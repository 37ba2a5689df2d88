// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QRect>
#include <QSize>
#include <memory>

QT_BEGIN_NAMESPACE
class QIcon;
class QPainter;
class QStyleOptionViewItem;
class QWidget;
QT_END_NAMESPACE

/// Draws and edits the text of rows, one at a time, as the style draws and edits texts. A view has one cell
/// for all of its rows; the options say which row it is.
class TextFieldCell
{
public:
    TextFieldCell() = default;
    virtual ~TextFieldCell() = default;
    TextFieldCell &operator=(const TextFieldCell &) = delete;

    virtual std::unique_ptr<TextFieldCell> copy() const;

    bool isEditable() const { return isEditable_; }
    void setEditable(bool isEditable) { isEditable_ = isEditable; }

    /// The icon of the row that is drawn, measured or edited next, null for none, and how large it is. A cell
    /// for texts alone has no use for it.
    virtual void setImage(const QIcon & /*image*/, const QSize & /*size*/) {}

    virtual QSize cellSize(const QStyleOptionViewItem &option) const;
    virtual void drawWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                               QPainter &painter) const;
    /// Places \a editor where the text stands.
    virtual void editWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                               QWidget &editor) const;
    /// The same, and selects \a length characters of the editor's text.
    virtual void selectWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option, QWidget &editor,
                                 int start, int length) const;

protected:
    TextFieldCell(const TextFieldCell &) = default;

private:
    bool isEditable_ = false;
};
