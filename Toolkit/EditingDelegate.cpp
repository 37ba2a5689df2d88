// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/EditingDelegate.h"

#include <QGuiApplication>
#include <QInputMethod>

void EditingDelegate::endEditing()
{
    if (!editor_)
        return;
    QGuiApplication::inputMethod()->commit();
    Q_EMIT commitData(editor_);
    Q_EMIT closeEditor(editor_, NoHint);
    editor_ = nullptr;
}

QSize EditingDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    constexpr int air = 6;
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    return size.expandedTo({0, option.fontMetrics.height() + air});
}

QWidget *EditingDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                       const QModelIndex &index) const
{
    editor_ = QStyledItemDelegate::createEditor(parent, option, index);
    return editor_;
}

void EditingDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor_ == editor)
        editor_ = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}
