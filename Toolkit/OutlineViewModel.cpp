// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineViewModel.h"

#include "Platform/LineText.h"
#include "Toolkit/OutlineView.h"

#include <iterator>
#include <utility>

OutlineViewModel::OutlineViewModel(OutlineView &view)
    : QAbstractItemModel(&view)
    , view_(view)
{
}

OutlineViewModel::~OutlineViewModel()
{
    forgetBelow(root_);
}

void OutlineViewModel::setDataSource(OutlineViewDataSource *dataSource)
{
    beginResetModel();
    dataSource_ = dataSource;
    forgetBelow(root_);
    endResetModel();
}

QModelIndex OutlineViewModel::indexOfItem(const OutlineItem &item) const
{
    load(root_);
    const Node *node = nodes_.value(item.get());
    return node ? indexOfNode(*node) : QModelIndex();
}

OutlineItem OutlineViewModel::itemAtIndex(const QModelIndex &index) const
{
    return nodeAt(index).item;
}

bool OutlineViewModel::isOtherTree() const
{
    if (!root_.isLoaded || root_.count() == 0)
        return true;
    const int count = asksCount(root_);
    for (int at = 0; at < count; ++at) {
        const Node *node = nodes_.value(asksChild(root_, at).get());
        if (node && node->parent == &root_)
            return false;
    }
    return true;
}

void OutlineViewModel::reset()
{
    beginResetModel();
    forgetBelow(root_);
    endResetModel();
}

/// Makes a change, and announces the node's own row if its disclosure triangle comes or goes with it.
template <class Change>
void OutlineViewModel::change(Node &node, const Change &change)
{
    const bool hadChildren = node.hasChildren();
    node.isExpandable = asksExpandable(node.item);
    change();
    const QModelIndex index = indexOfNode(node);
    if (node.hasChildren() != hadChildren && index.isValid())
        Q_EMIT dataChanged(index, index);
}

void OutlineViewModel::synchronise(const QModelIndex &parent, bool recursively, const RowGoes &rowGoes)
{
    std::vector<Node *> pending{&nodeAt(parent)};
    while (!pending.empty()) {
        Node &node = *pending.back();
        pending.pop_back();
        change(node, [&] {
            if (node.isLoaded)
                synchroniseChildren(node, rowGoes);
        });
        if (!recursively)
            continue;
        for (int at = 0; at < node.count(); ++at)
            pending.push_back(&node.child(at));
    }
}

void OutlineViewModel::insertChild(int at, const QModelIndex &parent, const RowGoes &rowGoes)
{
    Node &node = nodeAt(parent);
    change(node, [&] {
        if (!node.isLoaded)
            return;
        const bool isAsTold = at >= 0 && at <= node.count() && asksCount(node) == node.count() + 1;
        const Node *known = isAsTold ? nodes_.value(asksChild(node, at).get()) : nullptr;
        if (isAsTold && (!known || known->parent != &node))
            insertChildren(node, at, at);
        else
            synchroniseChildren(node, rowGoes);
    });
}

void OutlineViewModel::removeChild(int at, const QModelIndex &parent, const RowGoes &rowGoes)
{
    Node &node = nodeAt(parent);
    change(node, [&] {
        if (!node.isLoaded)
            return;
        const int last = node.count() - 1;
        const bool isAsTold = at >= 0 && at <= last && asksCount(node) == last &&
                              (at == 0 || asksChild(node, at - 1) == node.child(at - 1).item) &&
                              (at == last || asksChild(node, at) == node.child(at + 1).item);
        if (isAsTold)
            removeChildren(node, at, at, rowGoes);
        else
            synchroniseChildren(node, rowGoes);
    });
}

void OutlineViewModel::announceChange(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    Node &node = nodeAt(index);
    node.isExpandable = asksExpandable(node.item);
    Q_EMIT dataChanged(index, index);
}

QModelIndex OutlineViewModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column != 0 || parent.column() > 0)
        return {};
    Node &node = nodeAt(parent);
    load(node);
    return row < node.count() ? createIndex(row, column, &node.child(row)) : QModelIndex();
}

QModelIndex OutlineViewModel::parent(const QModelIndex &index) const
{
    return index.isValid() ? indexOfNode(*nodeAt(index).parent) : QModelIndex();
}

int OutlineViewModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    Node &node = nodeAt(parent);
    load(node);
    return node.count();
}

int OutlineViewModel::columnCount(const QModelIndex &) const
{
    return 1;
}

bool OutlineViewModel::hasChildren(const QModelIndex &parent) const
{
    const Node &node = nodeAt(parent);
    load(root_);
    return node.hasChildren();
}

QVariant OutlineViewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return lineText(index.data(Qt::EditRole).toString());
    case Qt::EditRole:
        return dataSource_->outlineViewObjectValueForTableColumn(view_, index.column(), nodeAt(index).item);
    case Qt::DecorationRole: {
        ViewCell cell;
        dataSource_->outlineViewWillDisplayCell(view_, cell, index.column(), nodeAt(index).item);
        return cell.image.isNull() ? QVariant() : QVariant(cell.image);
    }
    default:
        return {};
    }
}

bool OutlineViewModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    dataSource_->outlineViewSetObjectValue(view_, value, index.column(), nodeAt(index).item);
    announceChange(index);
    return true;
}

Qt::ItemFlags OutlineViewModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (!nodeAt(index).hasChildren())
        flags |= Qt::ItemNeverHasChildren;
    if (dataSource_->outlineViewShouldEditTableColumn(view_, index.column(), nodeAt(index).item))
        flags |= Qt::ItemIsEditable;
    return flags;
}

OutlineViewModel::Node &OutlineViewModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? *static_cast<Node *>(index.internalPointer()) : root_;
}

QModelIndex OutlineViewModel::indexOfNode(const Node &node) const
{
    return &node == &root_ ? QModelIndex() : createIndex(node.row, 0, &node);
}

bool OutlineViewModel::asksExpandable(const OutlineItem &item) const
{
    return dataSource_ && dataSource_->outlineViewIsItemExpandable(view_, item);
}

int OutlineViewModel::asksCount(const Node &node) const
{
    return dataSource_ && (node.isExpandable || &node == &root_)
               ? dataSource_->outlineViewNumberOfChildrenOfItem(view_, node.item)
               : 0;
}

OutlineItem OutlineViewModel::asksChild(const Node &node, int at) const
{
    return dataSource_->outlineViewChildOfItem(view_, at, node.item);
}

void OutlineViewModel::load(Node &node) const
{
    if (node.isLoaded)
        return;
    node.isLoaded = true;
    const int count = asksCount(node);
    if (count == 0)
        return;
    node.children = std::make_unique<Children>();
    node.children->reserve(static_cast<std::size_t>(count));
    nodes_.reserve(nodes_.size() + count);
    for (int at = 0; at < count; ++at)
        node.children->push_back(makeNode(asksChild(node, at), node, at));
}

std::unique_ptr<OutlineViewModel::Node> OutlineViewModel::makeNode(OutlineItem item, Node &parent,
                                                                   int row) const
{
    auto node = std::make_unique<Node>();
    node->isExpandable = asksExpandable(item);
    node->item = std::move(item);
    node->parent = &parent;
    node->row = row;
    nodes_.insert(node->item.get(), node.get());
    return node;
}

void OutlineViewModel::synchroniseChildren(Node &node, const RowGoes &rowGoes)
{
    const int before = node.count();
    const int now = asksCount(node);
    const int common = std::min(before, now);
    int first = 0;
    while (first < common && node.child(first).item == asksChild(node, first))
        ++first;
    int unchangedBehind = 0;
    while (unchangedBehind < common - first &&
           node.child(before - 1 - unchangedBehind).item == asksChild(node, now - 1 - unchangedBehind))
        ++unchangedBehind;

    if (first < before - unchangedBehind)
        removeChildren(node, first, before - unchangedBehind - 1, rowGoes);
    if (first < now - unchangedBehind)
        insertChildren(node, first, now - unchangedBehind - 1);
}

void OutlineViewModel::insertChildren(Node &node, int first, int last)
{
    Children added;
    for (int row = first; row <= last; ++row)
        added.push_back(makeNode(asksChild(node, row), node, row));
    beginInsertRows(indexOfNode(node), first, last);
    if (!node.children)
        node.children = std::make_unique<Children>();
    node.children->insert(node.children->begin() + first, std::make_move_iterator(added.begin()),
                          std::make_move_iterator(added.end()));
    for (int row = last + 1; row < node.count(); ++row)
        node.child(row).row = row;
    endInsertRows();
}

void OutlineViewModel::removeChildren(Node &node, int first, int last, const RowGoes &rowGoes)
{
    std::vector<const Node *> pending;
    for (int row = first; row <= last; ++row)
        pending.push_back(&node.child(row));
    while (!pending.empty()) {
        const Node *gone = pending.back();
        pending.pop_back();
        rowGoes(indexOfNode(*gone));
        for (int at = 0; at < gone->count(); ++at)
            pending.push_back(&gone->child(at));
    }

    beginRemoveRows(indexOfNode(node), first, last);
    for (int row = first; row <= last; ++row) {
        forgetBelow(node.child(row));
        forget(node.child(row));
    }
    node.children->erase(node.children->begin() + first, node.children->begin() + last + 1);
    for (int row = first; row < node.count(); ++row)
        node.child(row).row = row;
    endRemoveRows();
}

void OutlineViewModel::forget(const Node &node)
{
    // An item that moved has a new node already.
    const auto known = nodes_.constFind(node.item.get());
    if (known != nodes_.constEnd() && *known == &node)
        nodes_.erase(known);
}

void OutlineViewModel::forgetBelow(Node &node)
{
    // Taken apart level by level, so that the depth of a tree needs no stack.
    Children pending;
    const auto takeChildren = [&pending](Node &from) {
        if (from.children)
            std::move(from.children->begin(), from.children->end(), std::back_inserter(pending));
        from.children.reset();
    };
    if (&node == &root_)
        nodes_.clear();
    takeChildren(node);
    node.isLoaded = false;
    while (!pending.empty()) {
        const std::unique_ptr<Node> gone = std::move(pending.back());
        pending.pop_back();
        forget(*gone);
        takeChildren(*gone);
    }
}
