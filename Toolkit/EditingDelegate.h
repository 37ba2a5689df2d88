// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPointer>
#include <QStyledItemDelegate>
#include <memory>

class TextFieldCell;

/// An item delegate that can end the edit in progress from outside, keeping what was typed, and gives rows
/// some air. With a cell of the view's, that draws and measures the rows and places their editors. An icon
/// that is a mask is drawn in the colour of the row's text. A text that is not to be seen as a whole is the
/// row's tool tip. Texts of any length can be edited.
class EditingDelegate : public QStyledItemDelegate
{
public:
    explicit EditingDelegate(QObject *parent = nullptr);
    ~EditingDelegate() override;

    /// Null leaves the rows to the style.
    void setDataCell(std::unique_ptr<TextFieldCell> cell);
    TextFieldCell *dataCell() const { return cell_.get(); }

    /// Of a text that no window is wide enough for, its start: laying out 700,000 characters takes half a
    /// second, and a file may name an item so.
    QString displayText(const QVariant &value, const QLocale &locale) const override;

    bool isEditing() const { return !editor_.isNull(); }
    /// Commits the text typed so far, an unfinished composition included, and closes the editor.
    void endEditing();
    /// Selects the whole text of the edit in progress, which is the one of \a index.
    void selectText(const QStyleOptionViewItem &option, const QModelIndex &index) const;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    bool isSeenAsAWhole(const QAbstractItemView &view, const QStyleOptionViewItem &option,
                        const QModelIndex &index) const;
    QStyleOptionViewItem prepareCell(const QStyleOptionViewItem &option, const QModelIndex &index) const;

    std::unique_ptr<TextFieldCell> cell_;
    mutable QPointer<QWidget> editor_;
};
