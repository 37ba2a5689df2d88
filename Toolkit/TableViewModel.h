// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/ViewCell.h"

#include <QAbstractTableModel>
#include <QPointer>

class ArrayController;
class TableView;

/// The rows of a TableView: stores nothing, forwards to the array controller and the view's delegate.
class TableViewModel final : public QAbstractTableModel
{
public:
    explicit TableViewModel(TableView &view);

    void setController(ArrayController *controller);
    /// The view's columns were replaced; there is no controller yet.
    void columnsChanged();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    QString firstText(int row) const;
    /// As the delegate decides.
    ViewCell displayedCell(const QModelIndex &index) const;

    TableView &view_;
    QPointer<ArrayController> controller_;
};
