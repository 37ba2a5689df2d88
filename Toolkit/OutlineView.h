// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineViewDataSource.h"
#include "Toolkit/ViewDragging.h"

#include <QBasicTimer>
#include <QTreeView>
#include <vector>

class EditingDelegate;
class OutlineViewModel;
class TextFieldCell;

/// A tree of items that a data source serves, one column, single selection, drags from and to it. Rows that
/// do not fit are scrolled to sideways.
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

    /// What draws, measures and edits the rows; null, as at first, leaves them to the style.
    void setDataCell(std::unique_ptr<TextFieldCell> cell);
    TextFieldCell *dataCell() const;

    /// Makes the rows agree with the data source again. What is expanded stays so by item, what is selected
    /// by row. When nothing of the top level is left it is another tree: all rows are collapsed, none is
    /// selected.
    void reloadData();
    /// The same for one item's row and, with \a reloadChildren, for its list of children (not for theirs).
    void reloadItem(const OutlineItem &item, bool reloadChildren);
    /// The same for the rows of many items, not for their children.
    void reloadItems(const std::vector<OutlineItem> &items);

    /// The child at \a index of \a inParent came into the data source's tree, or left it, just now. Keeps
    /// what reloadItem() keeps, and looks at no other child: this is what to call after an edit, however many
    /// siblings there are.
    void insertItemAtIndex(int index, const OutlineItem &inParent);
    void removeItemAtIndex(int index, const OutlineItem &inParent);
    /// Between these, rows may come and go by any of the calls above, and items be expanded; the view lays
    /// itself out, and sees to what is selected, once at the end. Do not ask it for rows meanwhile. They
    /// nest.
    void beginUpdates();
    void endUpdates();

    void expandItem(const OutlineItem &item, bool expandChildren = false);
    /// An item that is closed over the selected one, by whomever, is selected in its place.
    void collapseItem(const OutlineItem &item);
    bool isItemExpanded(const OutlineItem &item) const;

    /// Which rows are expanded at an item and below it, for when the item comes back or a copy takes its
    /// place. Means something as long as what is below the item stays the same; empty if none is expanded.
    using Expansion = std::vector<bool>;
    Expansion expansionOf(const OutlineItem &item) const;
    /// Expands these rows at \a item and below it, which is a child of \a inParent and was just inserted.
    void setExpansionOf(const OutlineItem &item, const OutlineItem &inParent, const Expansion &expansion);

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

    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;

    /// Only drags that bring one of these types may be dropped.
    void registerForDraggedTypes(const QStringList &types) { dragging_.registerForDraggedTypes(types); }
    /// What may be done with a dragged item: in this process (everything at first), in others (nothing).
    void setDraggingSourceOperationMask(DragOperations mask, bool forLocal)
    {
        dragging_.setDraggingSourceOperationMask(mask, forLocal);
    }

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void initViewItemOption(QStyleOptionViewItem *option) const override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                 const QModelIndex &index) const override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    void rowsInserted(const QModelIndex &parent, int start, int end) override;
    void rowsAboutToBeRemoved(const QModelIndex &parent, int start, int end) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    QModelIndex indexAtRow(int row) const;
    int rowOfIndex(const QModelIndex &index) const;
    int heightOfRows() const;
    void notifySelection();
    void selectInsteadOfHiddenRow(const QModelIndex &collapsed);
    void noteIfExpanded(const QModelIndex &index);
    void expandWithChildren(const QModelIndex &index);
    void appendChildren(std::vector<QModelIndex> &pending, const QModelIndex &parent) const;
    void fitColumn();
    void measureRowsAnew();
    int indentationOf(const QModelIndex &index) const;
    void reveal(const QModelIndex &index, int width);

    struct DropPlace
    {
        OutlineItem item;
        int childIndex;
        QRect indicator;
    };
    DropPlace dropPlaceAt(const QPoint &point) const;
    DropPlace dropPlaceOn(const QModelIndex &index) const;
    DropPlace dropPlaceAmong(const QModelIndex &parent, int childIndex, int y) const;
    DropPlace dropPlaceBelow(const QModelIndex &index, int x) const;
    int distanceFromStart(int x) const;
    int indentationOfChildren(const QModelIndex &parent) const;
    QRect fromIndentation(int indentation, int y, int height) const;
    DragOperations validate(const QDropEvent &event, const DropPlace &place);
    void openSoon(const QModelIndex &index);
    void stopDropping();

    OutlineViewModel *model_;
    EditingDelegate *editing_;
    OutlineViewDataSource *dataSource_ = nullptr;
    ViewDragging dragging_{*this};
    /// A folder that opens when a drag stays on it.
    QPersistentModelIndex opening_;
    QBasicTimer openingTimer_;
    QString placeholderText_;
    /// Of the rows that were painted, with its indentation.
    mutable int widestRow_ = 0;

    /// How many beginUpdates() are open.
    int updates_ = 0;
    int selectedRowBefore_ = noRow;
    OutlineItem selectedItemBefore_;
    /// Of the rows that went since beginUpdates(); parents before children.
    std::vector<OutlineItem> expandedBefore_;
    /// What is selected right now is told when it is settled.
    bool isSettlingSelection_ = false;
};
