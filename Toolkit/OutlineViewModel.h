// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineViewDataSource.h"

#include <QAbstractItemModel>
#include <QHash>
#include <functional>
#include <memory>
#include <vector>

/// The rows of an OutlineView: stores nothing but which item stands where, as far as the view has asked, and
/// forwards the rest to the data source.
class OutlineViewModel final : public QAbstractItemModel
{
public:
    explicit OutlineViewModel(OutlineView &view);
    ~OutlineViewModel() override;

    void setDataSource(OutlineViewDataSource *dataSource);

    /// The index of the item's row; invalid for the root and for items below the top level that
    /// have not been asked for.
    QModelIndex indexOfItem(const OutlineItem &item) const;
    OutlineItem itemAtIndex(const QModelIndex &index) const;

    /// Whether the data source's top level has no item in common with the rows shown.
    bool isOtherTree() const;
    /// Forgets all rows and asks anew.
    void reset();
    /// Makes the rows below \a parent agree with the data source again, signalling just the differences.
    /// \a rowGoes is told of each row that is about to be removed, those below it included.
    void synchronise(const QModelIndex &parent, bool recursively,
                     const std::function<void(const QModelIndex &)> &rowGoes);
    void announceChange(const QModelIndex &index);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    using QObject::parent;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Node
    {
        OutlineItem item;
        Node *parent = nullptr;
        int row = 0;
        bool isLoaded = false;
        std::vector<std::unique_ptr<Node>> children;
    };

    Node &nodeAt(const QModelIndex &index) const;
    QModelIndex indexOfNode(const Node &node) const;
    std::vector<OutlineItem> childrenOf(const OutlineItem &item) const;
    bool isExpandable(const Node &node) const;
    void load(Node &node) const;
    std::unique_ptr<Node> makeNode(const OutlineItem &item, Node &parent, int row) const;
    void synchroniseChildren(Node &node, const std::function<void(const QModelIndex &)> &rowGoes);
    void removeChildren(Node &node, int first, int last);
    void forget(const Node &node);
    void forgetBelow(Node &node);

    OutlineView &view_;
    OutlineViewDataSource *dataSource_ = nullptr;
    mutable Node root_;
    mutable QHash<const void *, Node *> nodes_;
};
