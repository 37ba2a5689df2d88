// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TableView.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/EditingDelegate.h"
#include "Toolkit/EmptyState.h"
#include "Toolkit/RestingSelection.h"
#include "Toolkit/SelectionStart.h"
#include "Toolkit/TableViewModel.h"

#include <QHeaderView>
#include <QKeyEvent>

void TableViewDelegate::tableViewSetObjectValue(TableView &tableView, const QVariant &value,
                                                const TableColumn &column, int row)
{
    if (ArrayController *controller = tableView.controller())
        controller->setValueForKey(value, column.key, row);
}

TableView::TableView(QWidget *parent)
    : QTreeView(parent)
    , model_(new TableViewModel(*this))
    , editing_(new EditingDelegate(this))
{
    setModel(model_);
    setItemDelegate(editing_);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setHeaderHidden(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    header()->setMinimumSectionSize(0);
}

void TableView::setColumns(const QList<TableColumn> &columns)
{
    columns_ = columns;
    model_->columnsChanged();
    for (int column = 0; column + 1 < columns_.size(); ++column) {
        header()->setSectionResizeMode(column, QHeaderView::Fixed);
        header()->resizeSection(column, columns_.at(column).width);
    }
}

void TableView::setDelegate(TableViewDelegate *delegate)
{
    delegate_ = delegate;
    viewport()->update();
}

void TableView::setController(ArrayController *controller)
{
    if (controller_)
        controller_->disconnect(this);
    controller_ = controller;
    rowsAreChanging_ = true;
    if (controller) {
        const auto rowsWillChange = [this] { rowsAreChanging_ = true; };
        connect(controller, &ArrayController::contentWillChange, this, rowsWillChange);
        connect(controller, &ArrayController::objectWillBeInserted, this, rowsWillChange);
        connect(controller, &ArrayController::objectWillBeRemoved, this, rowsWillChange);
    }
    // The model takes part in each change between the two halves of the view.
    model_->setController(controller);
    if (controller) {
        connect(controller, &ArrayController::contentChanged, this, &TableView::showSelection);
        connect(controller, &ArrayController::objectInserted, this, &TableView::showSelection);
        connect(controller, &ArrayController::objectRemoved, this, &TableView::showSelection);
        connect(controller, &ArrayController::selectionChanged, this, &TableView::showSelection);
    }
    showSelection();
}

ArrayController *TableView::controller() const
{
    return controller_;
}

int TableView::selectedRow() const
{
    return controller_ ? controller_->selectionIndex() : ArrayController::noIndex;
}

void TableView::editColumn(const QString &identifier, int row)
{
    for (int column = 0; column < columns_.size(); ++column) {
        if (columns_.at(column).identifier != identifier)
            continue;
        const QModelIndex index = model_->index(row, column);
        scrollTo(index);
        QTreeView::edit(index);
    }
}

void TableView::endEditing()
{
    editing_->endEditing();
}

bool TableView::isEditing() const
{
    return editing_->isEditing();
}

void TableView::setPlaceholderText(const QString &text)
{
    placeholderText_ = text;
    viewport()->update();
}

void TableView::keyPressEvent(QKeyEvent *event)
{
    // An editor leaves these keys over, which move a row where nothing is typed: here they would end the
    // edit.
    if (isEditing() && event->modifiers().testFlag(Qt::AltModifier)) {
        event->ignore();
        return;
    }
    const QModelIndex first = SelectionStart::rowForKey(*this, *event);
    if (first.isValid() && controller_)
        controller_->setSelectionIndex(first.row());
    else
        QTreeView::keyPressEvent(event);
}

void TableView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    dragging_.indicator().paint();
    EmptyState::paint(*this, placeholderText_);
}

void TableView::initViewItemOption(QStyleOptionViewItem *option) const
{
    QTreeView::initViewItemOption(option);
    RestingSelection::apply(*option, *this);
}

void TableView::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (rowsAreChanging_ || !controller_)
        return;
    const QModelIndexList rows = selectionModel()->selectedRows();
    controller_->setSelectionIndex(rows.isEmpty() ? ArrayController::noIndex : rows.constFirst().row());
}

bool TableView::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    if (trigger != EditKeyPressed || !index.isValid() || firstEditableColumn() < 0)
        return QTreeView::edit(index, trigger, event);
    // The edit key works on the row, whichever of its cells was clicked last. The view has a current row
    // though none is selected, but nobody sees which.
    return selectionModel()->isSelected(index) &&
           QTreeView::edit(index.siblingAtColumn(firstEditableColumn()), trigger, event);
}

int TableView::firstEditableColumn() const
{
    for (int column = 0; column < columns_.size(); ++column) {
        if (columns_.at(column).isEditable)
            return column;
    }
    return -1;
}

void TableView::showSelection()
{
    rowsAreChanging_ = true;
    const QModelIndex index = model_->index(selectedRow(), std::max(0, firstEditableColumn()));
    if (!index.isValid())
        selectionModel()->clear();
    else if (index.row() != currentIndex().row() || !selectionModel()->isSelected(index))
        setCurrentIndex(index);
    rowsAreChanging_ = false;
}
