// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineView.h"

#include "Toolkit/EditingDelegate.h"
#include "Toolkit/EmptyState.h"
#include "Toolkit/OutlineViewModel.h"
#include "Toolkit/TextFieldCell.h"

#include <QHeaderView>

OutlineView::OutlineView(QWidget *parent)
    : QTreeView(parent)
    , model_(new OutlineViewModel(*this))
    , editing_(new EditingDelegate(this))
{
    setModel(model_);
    setItemDelegate(editing_);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
}

void OutlineView::setDataSource(OutlineViewDataSource *dataSource)
{
    dataSource_ = dataSource;
    model_->setDataSource(dataSource);
}

void OutlineView::setDataCell(std::unique_ptr<TextFieldCell> cell)
{
    editing_->setDataCell(std::move(cell));
    scheduleDelayedItemsLayout();
}

TextFieldCell *OutlineView::dataCell() const
{
    return editing_->dataCell();
}

void OutlineView::reloadData()
{
    if (!model_->isOtherTree()) {
        synchronise({}, true);
        return;
    }
    const bool hadSelection = selectionModel()->hasSelection();
    model_->reset();
    if (hadSelection)
        notifySelection();
}

void OutlineView::reloadItem(const OutlineItem &item, bool reloadChildren)
{
    const QModelIndex index = model_->indexOfItem(item);
    if (item && !index.isValid())
        return;
    model_->announceChange(index);
    if (reloadChildren)
        synchronise(index, false);
}

void OutlineView::expandItem(const OutlineItem &item, bool expandChildren)
{
    const QModelIndex index = model_->indexOfItem(item);
    if (!item && expandChildren)
        expandAll();
    else if (index.isValid() && expandChildren)
        expandRecursively(index);
    else if (index.isValid())
        expand(index);
}

void OutlineView::collapseItem(const OutlineItem &item)
{
    collapse(model_->indexOfItem(item));
}

bool OutlineView::isItemExpanded(const OutlineItem &item) const
{
    return isExpanded(model_->indexOfItem(item));
}

int OutlineView::numberOfRows() const
{
    QModelIndex last;
    for (int count = model_->rowCount(); count > 0; count = isExpanded(last) ? model_->rowCount(last) : 0)
        last = model_->index(count - 1, 0, last);
    return last.isValid() ? rowOfIndex(last) + 1 : 0;
}

int OutlineView::rowForItem(const OutlineItem &item) const
{
    return rowOfIndex(model_->indexOfItem(item));
}

OutlineItem OutlineView::itemAtRow(int row) const
{
    return model_->itemAtIndex(indexAtRow(row));
}

int OutlineView::selectedRow() const
{
    const QModelIndexList selected = selectionModel()->selectedRows();
    return selected.isEmpty() ? noRow : rowOfIndex(selected.constFirst());
}

void OutlineView::selectRow(int row)
{
    const QModelIndex index = indexAtRow(row);
    if (index.isValid())
        setCurrentIndex(index);
    else
        selectionModel()->clear();
}

void OutlineView::editRow(int row)
{
    const QModelIndex index = indexAtRow(row);
    if (!index.isValid())
        return;
    scrollTo(index);
    if (!edit(index, AllEditTriggers, nullptr))
        return;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    editing_->selectText(option, index);
}

void OutlineView::endEditing()
{
    editing_->endEditing();
}

bool OutlineView::isEditing() const
{
    return editing_->isEditing();
}

void OutlineView::setPlaceholderText(const QString &text)
{
    placeholderText_ = text;
    viewport()->update();
}

void OutlineView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    dragging_.indicator().paint();
    EmptyState::paint(*this, placeholderText_);
}

void OutlineView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (!rowsAreChanging_)
        notifySelection();
}

QModelIndex OutlineView::indexAtRow(int row) const
{
    if (row < 0 || model_->rowCount() == 0)
        return {};
    const_cast<OutlineView *>(this)->executeDelayedItemsLayout();
    return indexAt({0, row * heightOfRows() - verticalOffset()});
}

int OutlineView::rowOfIndex(const QModelIndex &index) const
{
    const_cast<OutlineView *>(this)->executeDelayedItemsLayout();
    const QRect rect = visualRect(index);
    return rect.height() > 0 ? (rect.y() + verticalOffset()) / heightOfRows() : noRow;
}

int OutlineView::heightOfRows() const
{
    return std::max(1, rowHeight(model_->index(0, 0)));
}

void OutlineView::notifySelection()
{
    if (dataSource_)
        dataSource_->outlineViewSelectionDidChange(*this);
}

void OutlineView::synchronise(const QModelIndex &parent, bool recursively)
{
    const int row = selectedRow();
    const OutlineItem selected = itemAtRow(row);

    rowsAreChanging_ = true;
    // One layout at the end, instead of one for every difference.
    scheduleDelayedItemsLayout();
    std::vector<OutlineItem> expandedBefore;
    model_->synchronise(parent, recursively, [this, &expandedBefore](const QModelIndex &index) {
        if (isExpanded(index))
            expandedBefore.push_back(model_->itemAtIndex(index));
    });
    // Those that are still there stand elsewhere now; parents come before children.
    for (const OutlineItem &item : expandedBefore) {
        const QModelIndex index = model_->indexOfItem(item);
        if (index.isValid() && model_->rowCount(index) > 0)
            expand(index);
    }
    scheduleDelayedItemsLayout();
    selectRow(row);
    rowsAreChanging_ = false;

    if (itemAtRow(selectedRow()) != selected)
        notifySelection();
}
