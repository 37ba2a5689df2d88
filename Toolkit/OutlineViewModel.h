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

    /// Whether the data source was asked for the children at \a index.
    bool isLoaded(const QModelIndex &index) const { return nodeAt(index).isLoaded; }

    /// Whether the data source's top level has no item in common with the rows shown.
    bool isOtherTree() const;
    /// Forgets all rows and asks anew.
    void reset();

    using RowGoes = std::function<void(const QModelIndex &)>;
    /// Makes the rows below \a parent agree with the data source again, signalling just the differences.
    /// \a rowGoes is told of each row that is about to be removed, those below it included.
    void synchronise(const QModelIndex &parent, bool recursively, const RowGoes &rowGoes);
    /// The data source's item at \a parent has one child more, or one less, than there are rows. Looks at no
    /// other child, unless that is not so after all.
    void insertChild(int at, const QModelIndex &parent, const RowGoes &rowGoes);
    void removeChild(int at, const QModelIndex &parent, const RowGoes &rowGoes);
    /// The item's values are others now; so may be whether it is expandable.
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
    struct Node;
    using Children = std::vector<std::unique_ptr<Node>>;
    struct Node
    {
        OutlineItem item;
        Node *parent = nullptr;
        /// Null if there are none.
        std::unique_ptr<Children> children;
        int row = 0;
        /// Whether the data source was asked for the children.
        bool isLoaded = false;
        /// As the data source said last.
        bool isExpandable = false;

        int count() const { return children ? static_cast<int>(children->size()) : 0; }
        Node &child(int at) const { return *(*children)[static_cast<std::size_t>(at)]; }
        bool hasChildren() const { return isLoaded ? count() > 0 : isExpandable; }
    };

    Node &nodeAt(const QModelIndex &index) const;
    QModelIndex indexOfNode(const Node &node) const;
    bool asksExpandable(const OutlineItem &item) const;
    int asksCount(const Node &node) const;
    OutlineItem asksChild(const Node &node, int at) const;
    void load(Node &node) const;
    std::unique_ptr<Node> makeNode(OutlineItem item, Node &parent, int row) const;
    template <class Change>
    void change(Node &node, const Change &change);
    void synchroniseChildren(Node &node, const RowGoes &rowGoes);
    void insertChildren(Node &node, int first, int last);
    void removeChildren(Node &node, int first, int last, const RowGoes &rowGoes);
    void forget(const Node &node);
    void forgetBelow(Node &node);

    OutlineView &view_;
    OutlineViewDataSource *dataSource_ = nullptr;
    mutable Node root_;
    mutable QHash<const void *, Node *> nodes_;
};
