// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineView.h"

#include "Toolkit/EditingDelegate.h"
#include "Toolkit/EmptyState.h"
#include "Toolkit/OutlineViewModel.h"
#include "Toolkit/RestingSelection.h"
#include "Toolkit/SelectionStart.h"
#include "Toolkit/TextFieldCell.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>
#include <utility>

namespace {

/// Behind the text of the widest row.
constexpr int airBehindText = 8;
/// What is left of a row for its name while that is edited, at least; in characters of average width.
constexpr int roomForTyping = 30;

} // namespace

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

    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(0);
    connect(model_, &QAbstractItemModel::rowsRemoved, this, &OutlineView::measureRowsAnew);
    connect(model_, &QAbstractItemModel::modelReset, this, [this] {
        horizontalScrollBar()->setValue(0);
        measureRowsAnew();
    });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        selectInsteadOfHiddenRow(index);
        measureRowsAnew();
    });
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
    if (model_->isOtherTree()) {
        const bool hadSelection = selectionModel()->hasSelection();
        model_->reset();
        if (hadSelection)
            notifySelection();
        return;
    }
    beginUpdates();
    model_->synchronise({}, true, [this](const QModelIndex &index) { noteIfExpanded(index); });
    endUpdates();
    // The values may be others, too.
    viewport()->update();
}

void OutlineView::reloadItem(const OutlineItem &item, bool reloadChildren)
{
    const QModelIndex index = model_->indexOfItem(item);
    if (item && !index.isValid())
        return;
    model_->announceChange(index);
    if (!reloadChildren)
        return;
    beginUpdates();
    model_->synchronise(index, false, [this](const QModelIndex &gone) { noteIfExpanded(gone); });
    endUpdates();
}

void OutlineView::reloadItems(const std::vector<OutlineItem> &items)
{
    // The view searches all its rows for each that changed, unless it is about to lay them out anyway.
    if (items.size() > 1)
        scheduleDelayedItemsLayout();
    for (const OutlineItem &item : items)
        model_->announceChange(model_->indexOfItem(item));
}

void OutlineView::insertItemAtIndex(int index, const OutlineItem &inParent)
{
    const QModelIndex parent = model_->indexOfItem(inParent);
    if (inParent && !parent.isValid())
        return;
    beginUpdates();
    model_->insertChild(index, parent, [this](const QModelIndex &gone) { noteIfExpanded(gone); });
    endUpdates();
}

void OutlineView::removeItemAtIndex(int index, const OutlineItem &inParent)
{
    const QModelIndex parent = model_->indexOfItem(inParent);
    if (inParent && !parent.isValid())
        return;
    beginUpdates();
    model_->removeChild(index, parent, [this](const QModelIndex &gone) { noteIfExpanded(gone); });
    endUpdates();
}

void OutlineView::beginUpdates()
{
    if (updates_++ > 0)
        return;
    selectedRowBefore_ = selectedRow();
    selectedItemBefore_ = itemAtRow(selectedRowBefore_);
}

void OutlineView::endUpdates()
{
    if (--updates_ > 0)
        return;
    // Those that are still there stand elsewhere now.
    for (const OutlineItem &item : std::exchange(expandedBefore_, {})) {
        const QModelIndex index = model_->indexOfItem(item);
        if (!model_->hasChildren(index))
            continue;
        // One layout at the end, instead of one for every row.
        scheduleDelayedItemsLayout();
        expand(index);
    }
    isSettlingSelection_ = true;
    selectRow(selectedRowBefore_);
    isSettlingSelection_ = false;
    if (itemAtRow(selectedRow()) != std::exchange(selectedItemBefore_, nullptr))
        notifySelection();
}

void OutlineView::expandItem(const OutlineItem &item, bool expandChildren)
{
    const QModelIndex index = model_->indexOfItem(item);
    // One layout at the end, instead of one for every item.
    if (updates_ > 0)
        scheduleDelayedItemsLayout();
    if (!item && expandChildren)
        expandAll();
    else if (index.isValid() && expandChildren)
        expandWithChildren(index);
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

// A row that can be expanded takes two bits, parents before children: whether it is expanded, and whether its
// children follow. Below rows that nobody has asked for nothing is expanded.
OutlineView::Expansion OutlineView::expansionOf(const OutlineItem &item) const
{
    Expansion expansion;
    bool isAnyExpanded = false;
    std::vector<QModelIndex> pending{model_->indexOfItem(item)};
    while (!pending.empty()) {
        const QModelIndex index = pending.back();
        pending.pop_back();
        if (!index.isValid() || !model_->hasChildren(index))
            continue;
        expansion.push_back(isExpanded(index));
        expansion.push_back(model_->isLoaded(index));
        isAnyExpanded |= isExpanded(index);
        if (model_->isLoaded(index))
            appendChildren(pending, index);
    }
    return isAnyExpanded ? expansion : Expansion();
}

void OutlineView::setExpansionOf(const OutlineItem &item, const OutlineItem &inParent,
                                 const Expansion &expansion)
{
    if (expansion.empty())
        return;
    // A row below one that was never expanded is not known before it is asked for.
    static_cast<void>(model_->rowCount(model_->indexOfItem(inParent)));
    // One layout at the end, instead of one for every row.
    scheduleDelayedItemsLayout();
    std::vector<QModelIndex> pending{model_->indexOfItem(item)};
    for (auto row = expansion.cbegin(); !pending.empty() && row != expansion.cend();) {
        const QModelIndex index = pending.back();
        pending.pop_back();
        if (!index.isValid() || !model_->hasChildren(index))
            continue;
        if (*row++)
            expand(index);
        if (*row++)
            appendChildren(pending, index);
    }
}

/// So that the first of them comes next.
void OutlineView::appendChildren(std::vector<QModelIndex> &pending, const QModelIndex &parent) const
{
    for (int row = model_->rowCount(parent) - 1; row >= 0; --row)
        pending.push_back(model_->index(row, 0, parent));
}

int OutlineView::numberOfRows() const
{
    const QModelIndex last = SelectionStart::lastRow(*this);
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
    if (widestRow_ > header()->sectionSize(0))
        QMetaObject::invokeMethod(this, &OutlineView::fitColumn, Qt::QueuedConnection);
}

void OutlineView::initViewItemOption(QStyleOptionViewItem *option) const
{
    QTreeView::initViewItemOption(option);
    RestingSelection::apply(*option, *this);
}

void OutlineView::drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const
{
    QTreeView::drawRow(painter, option, index);
    widestRow_ = std::max(widestRow_, indentationOf(index) + sizeHintForIndex(index).width() + airBehindText);
}

void OutlineView::resizeEvent(QResizeEvent *event)
{
    fitColumn();
    QTreeView::resizeEvent(event);
}

void OutlineView::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex first = SelectionStart::rowForKey(*this, *event);
    if (first.isValid())
        setCurrentIndex(first);
    else
        QTreeView::keyPressEvent(event);
}

bool OutlineView::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    // The view has a current row though none is selected, but nobody sees which.
    if (trigger == EditKeyPressed && !selectionModel()->isSelected(index))
        return false;
    if (!QTreeView::edit(index, trigger, event))
        return false;
    reveal(index,
           std::max(sizeHintForIndex(index).width(), roomForTyping * fontMetrics().averageCharWidth()));
    updateEditorGeometries();
    return true;
}

void OutlineView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    {
        // The column may be wider than the view, which is no reason to go back to its beginning.
        const int before = horizontalScrollBar()->value();
        const QSignalBlocker blocker(horizontalScrollBar());
        QTreeView::scrollTo(index, hint);
        horizontalScrollBar()->setValue(before);
    }
    if (index.isValid())
        reveal(index, sizeHintForIndex(index).width());
}

void OutlineView::rowsInserted(const QModelIndex &parent, int start, int end)
{
    // An item that is expanded, but had nothing to show, was laid out like one that is not.
    if (isExpanded(parent))
        scheduleDelayedItemsLayout();
    QTreeView::rowsInserted(parent, start, end);
}

void OutlineView::rowsAboutToBeRemoved(const QModelIndex &parent, int start, int end)
{
    // Otherwise the view looks for another row to select, and lays itself out to show that.
    if (updates_ > 0)
        selectionModel()->clear();
    QTreeView::rowsAboutToBeRemoved(parent, start, end);
}

void OutlineView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    if (updates_ == 0)
        QTreeView::currentChanged(current, previous);
}

void OutlineView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    if (updates_ > 0)
        return;
    QTreeView::selectionChanged(selected, deselected);
    // Where rows begin at the right, the base class forgets what lies before their cells.
    if (isRightToLeft())
        viewport()->update();
    if (!isSettlingSelection_)
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
    return rect.height() > 0 ? (rect.y() + verticalOffset()) / rect.height() : noRow;
}

int OutlineView::heightOfRows() const
{
    // All are the same; the view searches its rows for the one asked for, and has that of the current one at
    // hand.
    const int height = rowHeight(currentIndex());
    return std::max(1, height > 0 ? height : rowHeight(model_->index(0, 0)));
}

void OutlineView::notifySelection()
{
    if (dataSource_)
        dataSource_->outlineViewSelectionDidChange(*this);
}

/// What is selected has to be seen: keys and menus work on it.
void OutlineView::selectInsteadOfHiddenRow(const QModelIndex &collapsed)
{
    QModelIndex parent = selectionModel()->selectedRows().value(0).parent();
    while (parent.isValid() && parent != collapsed)
        parent = parent.parent();
    if (parent.isValid())
        setCurrentIndex(collapsed);
}

void OutlineView::noteIfExpanded(const QModelIndex &index)
{
    if (isExpanded(index))
        expandedBefore_.push_back(model_->itemAtIndex(index));
}

void OutlineView::expandWithChildren(const QModelIndex &index)
{
    if (!model_->hasChildren(index))
        return;
    // One layout when all are expanded, instead of one for each.
    scheduleDelayedItemsLayout();
    std::vector<QModelIndex> pending{index};
    while (!pending.empty()) {
        const QModelIndex parent = pending.back();
        pending.pop_back();
        expand(parent);
        const int count = model_->rowCount(parent);
        for (int row = 0; row < count; ++row) {
            const QModelIndex child = model_->index(row, 0, parent);
            if (model_->hasChildren(child))
                pending.push_back(child);
        }
    }
}

/// To the width of the view, or of the widest row.
void OutlineView::fitColumn()
{
    header()->resizeSection(0, std::max(viewport()->width(), widestRow_));
}

/// The widest row may be gone. What is looked at stays where it is.
void OutlineView::measureRowsAnew()
{
    const int scrolled = horizontalScrollBar()->value();
    widestRow_ = scrolled > 0 ? scrolled + viewport()->width() : 0;
    fitColumn();
}

int OutlineView::indentationOf(const QModelIndex &index) const
{
    return header()->sectionSize(0) - visualRect(index).width();
}

/// Scrolls sideways as far as it takes to see \a width of a row, and what opens and closes it; its beginning
/// if there is not room for all.
void OutlineView::reveal(const QModelIndex &index, int width)
{
    const int start = indentationOf(index);
    const int end = start + width + airBehindText;
    if (end > header()->sectionSize(0)) {
        widestRow_ = std::max(widestRow_, end);
        fitColumn();
        updateGeometries();
    }
    QScrollBar &bar = *horizontalScrollBar();
    bar.setValue(
        std::min(std::max(bar.value(), end - viewport()->width()), std::max(0, start - indentation())));
}
