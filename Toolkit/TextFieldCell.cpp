// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TextFieldCell.h"

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>

namespace {

const QStyle &styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? *option.widget->style() : *QApplication::style();
}

/// The row without its icon.
QStyleOptionViewItem textOption(const QStyleOptionViewItem &option, const QRect &frame)
{
    QStyleOptionViewItem text(option);
    text.rect = frame;
    text.features.setFlag(QStyleOptionViewItem::HasDecoration, false);
    text.icon = {};
    text.decorationSize = {};
    return text;
}

} // namespace

std::unique_ptr<TextFieldCell> TextFieldCell::copy() const
{
    return std::unique_ptr<TextFieldCell>(new TextFieldCell(*this));
}

QSize TextFieldCell::cellSize(const QStyleOptionViewItem &option) const
{
    const QStyleOptionViewItem text = textOption(option, option.rect);
    return styleOf(option).sizeFromContents(QStyle::CT_ItemViewItem, &text, {}, option.widget);
}

void TextFieldCell::drawWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                                  QPainter &painter) const
{
    const QStyleOptionViewItem text = textOption(option, cellFrame);
    styleOf(option).drawControl(QStyle::CE_ItemViewItem, &text, &painter, option.widget);
}

void TextFieldCell::editWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                                  QWidget &editor) const
{
    QStyleOptionViewItem text = textOption(option, cellFrame);
    text.showDecorationSelected =
        editor.style()->styleHint(QStyle::SH_ItemView_ShowDecorationSelected, nullptr, &editor) != 0;
    editor.setGeometry(styleOf(option).subElementRect(QStyle::SE_ItemViewItemText, &text, option.widget));
}

void TextFieldCell::selectWithFrame(const QRect &cellFrame, const QStyleOptionViewItem &option,
                                    QWidget &editor, int start, int length) const
{
    editWithFrame(cellFrame, option, editor);
    if (auto *line = qobject_cast<QLineEdit *>(&editor))
        line->setSelection(start, length);
}
