// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/ViewCell.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QTreeView>

class ArrayController;
class EditingDelegate;
class TableView;
class TableViewModel;

/// One column of a TableView.
struct TableColumn
{
    QString identifier;
    /// The records' attribute that the column shows; none if empty.
    QString key = {};
    bool isEditable = false;
    /// In device-independent pixels; the last column takes what is left.
    int width = 0;
};

/// What a TableView asks of the code that it works for.
class TableViewDelegate
{
public:
    virtual ~TableViewDelegate() = default;
    virtual void tableViewWillDisplayCell(TableView &, ViewCell &, const TableColumn &, int /*row*/) {}
    /// Whether the text that the user typed may become the attribute's value; may change it first.
    virtual bool tableViewValidateValue(TableView &, QVariant & /*value*/, const TableColumn &, int /*row*/)
    {
        return true;
    }
};

/// A list of records with a single selection, which is the array controller's, and editing in place.
class TableView final : public QTreeView
{
public:
    explicit TableView(QWidget *parent = nullptr);

    void setColumns(const QList<TableColumn> &columns);
    const QList<TableColumn> &columns() const { return columns_; }
    /// Not owned, and may be null; has to outlive the view or be replaced.
    void setDelegate(TableViewDelegate *delegate);
    TableViewDelegate *delegate() const { return delegate_; }
    /// Not owned.
    void setController(ArrayController *controller);

    int selectedRow() const;
    /// Starts editing with the whole text selected.
    void editColumn(const QString &identifier, int row);
    /// Keeps what was typed so far.
    void endEditing();
    bool isEditing() const;
    /// Shown while there are no rows.
    void setPlaceholderText(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;

private:
    int firstEditableColumn() const;
    void showSelection();

    QList<TableColumn> columns_;
    TableViewDelegate *delegate_ = nullptr;
    QPointer<ArrayController> controller_;
    TableViewModel *model_;
    EditingDelegate *editing_;
    QString placeholderText_;
    /// Rows come or go: what the view does to its selection meanwhile is not the user's choice.
    bool rowsAreChanging_ = false;
};
