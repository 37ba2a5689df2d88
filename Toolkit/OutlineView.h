// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineViewDataSource.h"

#include <QTreeView>

class EditingDelegate;
class OutlineViewModel;

/// A tree of items that a data source serves, one column, single selection.
///
/// Items are asked for only where rows are expanded, all rows have one height, and nothing here walks a whole
/// tree but what expands or reloads the whole of it: 100,000 rows are no burden.
class OutlineView : public QTreeView
{
public:
    static constexpr int noRow = -1;

    explicit OutlineView(QWidget *parent = nullptr);

    /// Not owned; null empties the view. Has to outlive the view or be replaced.
    void setDataSource(OutlineViewDataSource *dataSource);
    OutlineViewDataSource *dataSource() const { return dataSource_; }

    /// Makes the rows agree with the data source again. What is expanded stays so by item, what is selected
    /// by row. When nothing of the top level is left it is another tree: all rows are collapsed, none is
    /// selected.
    void reloadData();
    /// The same for one item's row and, with \a reloadChildren, for its list of children (not for theirs).
    void reloadItem(const OutlineItem &item, bool reloadChildren);

    void expandItem(const OutlineItem &item, bool expandChildren = false);
    void collapseItem(const OutlineItem &item);
    bool isItemExpanded(const OutlineItem &item) const;

    int numberOfRows() const;
    /// Rows are counted as they stand on screen; noRow for an item without one.
    int rowForItem(const OutlineItem &item) const;
    /// Null if there is no such row.
    OutlineItem itemAtRow(int row) const;
    int selectedRow() const;
    /// Selects that row alone; nothing if there is no such row.
    void selectRow(int row);

    /// Starts editing with the whole text selected; nothing if the row is not there or not to be edited.
    void editRow(int row);
    /// Keeps what was typed so far.
    void endEditing();
    bool isEditing() const;
    /// Shown while there are no rows.
    void setPlaceholderText(const QString &text);
    QString placeholderText() const { return placeholderText_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    QModelIndex indexAtRow(int row) const;
    int rowOfIndex(const QModelIndex &index) const;
    int heightOfRows() const;
    void notifySelection();
    void synchronise(const QModelIndex &parent, bool recursively);

    OutlineViewModel *model_;
    EditingDelegate *editing_;
    OutlineViewDataSource *dataSource_ = nullptr;
    QString placeholderText_;
    /// Rows come or go: what the view does to its selection meanwhile is not told to anybody.
    bool rowsAreChanging_ = false;
};
