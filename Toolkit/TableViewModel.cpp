// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/TableViewModel.h"

#include "Platform/LineText.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/TableView.h"

TableViewModel::TableViewModel(TableView &view)
    : QAbstractTableModel(&view)
    , view_(view)
{
}

void TableViewModel::setController(ArrayController *controller)
{
    beginResetModel();
    if (controller_)
        controller_->disconnect(this);
    controller_ = controller;
    endResetModel();
    if (!controller)
        return;
    connect(controller, &ArrayController::contentWillChange, this, [this] { beginResetModel(); });
    connect(controller, &ArrayController::contentChanged, this, [this] { endResetModel(); });
    connect(controller, &ArrayController::objectWillBeInserted, this,
            [this](int row) { beginInsertRows({}, row, row); });
    connect(controller, &ArrayController::objectInserted, this, [this] { endInsertRows(); });
    connect(controller, &ArrayController::objectWillBeRemoved, this,
            [this](int row) { beginRemoveRows({}, row, row); });
    connect(controller, &ArrayController::objectRemoved, this, [this] { endRemoveRows(); });
    // A cell's note may depend on the other records.
    connect(controller, &ArrayController::objectChanged, this, [this](int, const QString &key) {
        for (int column = 0; column < view_.columns().size(); ++column) {
            if (view_.columns().at(column).key == key)
                Q_EMIT dataChanged(index(0, column), index(rowCount() - 1, column));
        }
    });
}

void TableViewModel::columnsChanged()
{
    beginResetModel();
    endResetModel();
}

int TableViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !controller_ ? 0 : static_cast<int>(controller_->arrangedObjects().size());
}

int TableViewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(view_.columns().size());
}

QVariant TableViewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const TableColumn &column = view_.columns().at(index.column());
    if (role == Qt::DecorationRole) {
        const QIcon image = displayedCell(index).image;
        return image.isNull() ? QVariant() : QVariant(image);
    }
    if (role == Qt::AccessibleDescriptionRole)
        return displayedCell(index).toolTip;
    if (role == Qt::AccessibleTextRole && !column.accessibleName.isEmpty())
        return column.accessibleName.arg(firstText(index.row()));
    if ((role == Qt::DisplayRole || role == Qt::EditRole) && !column.key.isEmpty()) {
        const QString text =
            controller_->arrangedObjects().at(index.row())->valueForKey(column.key).toString();
        if (role == Qt::EditRole)
            return text;
        const QString note = displayedCell(index).note;
        return note.isEmpty() ? lineText(text) : lineText(text) + u' ' + note;
    }
    return {};
}

ViewCell TableViewModel::displayedCell(const QModelIndex &index) const
{
    ViewCell cell;
    if (view_.delegate())
        view_.delegate()->tableViewWillDisplayCell(view_, cell, view_.columns().at(index.column()),
                                                   index.row());
    return cell;
}

QString TableViewModel::firstText(int row) const
{
    for (int column = 0; column < columnCount(); ++column) {
        if (!view_.columns().at(column).key.isEmpty())
            return index(row, column).data().toString();
    }
    return {};
}

bool TableViewModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    // An unchanged text leaves the attribute as it is, whatever type it has.
    if (value.toString() == index.data(Qt::EditRole).toString())
        return false;
    const TableColumn &column = view_.columns().at(index.column());
    QVariant accepted = value;
    if (view_.delegate() && !view_.delegate()->tableViewValidateValue(view_, accepted, column, index.row()))
        return false;
    if (view_.delegate())
        view_.delegate()->tableViewSetObjectValue(view_, accepted, column, index.row());
    else
        controller_->setValueForKey(accepted, column.key, index.row());
    return true;
}

Qt::ItemFlags TableViewModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    if (view_.columns().at(index.column()).isEditable)
        flags |= Qt::ItemIsEditable;
    return flags;
}
