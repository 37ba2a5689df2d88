// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Benchmarks/EditedTree.h"
#include "Source/Model/QNBPresetRecord.h"

#include <QStandardItemModel>
#include <QTreeView>
#include <functional>

/// The measure: the same rows in Qt's own item model and tree view.
class StandardTree final : public EditedTree
{
public:
    explicit StandardTree(const QNBPresetRecordPtr &preset);

    QTreeView &view() override { return view_; }
    void insert() override;
    void rename(const QString &name) override;
    void color() override;
    void remove() override;
    void move() override;
    void restore() override;
    void hideRows() override;
    void showExpanded() override;

private:
    QStandardItemModel model_;
    QTreeView view_;
    QIcon folderIcon_;
    QIcon fileIcon_;
    QIcon otherIcon_;
    QStandardItem *edited_ = nullptr;
    std::function<void()> takeBack_;
};
