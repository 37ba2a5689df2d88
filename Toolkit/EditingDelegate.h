// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

/// An item delegate that can end the edit in progress from outside, keeping what was typed, and gives rows
/// some air.
class EditingDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool isEditing() const { return !editor_.isNull(); }
    /// Commits the text typed so far, an unfinished composition included, and closes the editor.
    void endEditing();

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

private:
    mutable QPointer<QWidget> editor_;
};
