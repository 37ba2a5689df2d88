// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/OutlineViewModel.h"

#include "Toolkit/OutlineView.h"

#include <QSet>
#include <algorithm>
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
    if (!root_.isLoaded || root_.children.empty())
        return true;
    QSet<const void *> shown;
    for (const auto &child : root_.children)
        shown.insert(child->item.get());
    const std::vector<OutlineItem> items = childrenOf({});
    return std::none_of(items.begin(), items.end(),
                        [&shown](const OutlineItem &item) { return shown.contains(item.get()); });
}

void OutlineViewModel::reset()
{
    beginResetModel();
    forgetBelow(root_);
    endResetModel();
}

void OutlineViewModel::synchronise(const QModelIndex &parent, bool recursively,
                                   const std::function<void(const QModelIndex &)> &rowGoes)
{
    std::vector<Node *> pending{&nodeAt(parent)};
    while (!pending.empty()) {
        Node &node = *pending.back();
        pending.pop_back();
        if (!node.isLoaded)
            continue;
        synchroniseChildren(node, rowGoes);
        if (!recursively)
            continue;
        for (const auto &child : node.children) {
            if (child->isLoaded)
                pending.push_back(child.get());
        }
    }
}

void OutlineViewModel::announceChange(const QModelIndex &index)
{
    if (index.isValid())
        Q_EMIT dataChanged(index, index.siblingAtColumn(columnCount() - 1));
}

QModelIndex OutlineViewModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, nodeAt(parent).children[static_cast<std::size_t>(row)].get());
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
    return static_cast<int>(node.children.size());
}

int OutlineViewModel::columnCount(const QModelIndex &) const
{
    return 1;
}

bool OutlineViewModel::hasChildren(const QModelIndex &parent) const
{
    const Node &node = nodeAt(parent);
    return node.isLoaded ? !node.children.empty() : isExpandable(node);
}

QVariant OutlineViewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
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
    if (!hasChildren(index))
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

std::vector<OutlineItem> OutlineViewModel::childrenOf(const OutlineItem &item) const
{
    std::vector<OutlineItem> items;
    if (!dataSource_ || (item && !dataSource_->outlineViewIsItemExpandable(view_, item)))
        return items;
    const int count = dataSource_->outlineViewNumberOfChildrenOfItem(view_, item);
    items.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index)
        items.push_back(dataSource_->outlineViewChildOfItem(view_, index, item));
    return items;
}

bool OutlineViewModel::isExpandable(const Node &node) const
{
    if (!dataSource_)
        return false;
    return node.item ? dataSource_->outlineViewIsItemExpandable(view_, node.item)
                     : dataSource_->outlineViewNumberOfChildrenOfItem(view_, node.item) > 0;
}

void OutlineViewModel::load(Node &node) const
{
    if (node.isLoaded)
        return;
    node.isLoaded = true;
    const std::vector<OutlineItem> items = childrenOf(node.item);
    node.children.reserve(items.size());
    for (const OutlineItem &item : items)
        node.children.push_back(makeNode(item, node, static_cast<int>(node.children.size())));
}

std::unique_ptr<OutlineViewModel::Node> OutlineViewModel::makeNode(const OutlineItem &item, Node &parent,
                                                                   int row) const
{
    auto node = std::make_unique<Node>();
    node->item = item;
    node->parent = &parent;
    node->row = row;
    nodes_.insert(item.get(), node.get());
    return node;
}

void OutlineViewModel::synchroniseChildren(Node &node,
                                           const std::function<void(const QModelIndex &)> &rowGoes)
{
    const std::vector<OutlineItem> items = childrenOf(node.item);
    auto &children = node.children;
    const auto isSame = [](const std::unique_ptr<Node> &child, const OutlineItem &item) {
        return child->item == item;
    };
    const auto [firstGone, firstNew] =
        std::mismatch(children.begin(), children.end(), items.begin(), items.end(), isSame);
    const auto prefix = firstGone - children.begin();
    std::ptrdiff_t suffix = 0;
    while (children.end() - firstGone > suffix && items.end() - firstNew > suffix &&
           isSame(*(children.end() - 1 - suffix), *(items.end() - 1 - suffix)))
        ++suffix;

    const int first = static_cast<int>(prefix);
    const int lastGone = static_cast<int>(children.end() - children.begin() - suffix) - 1;
    if (lastGone >= first) {
        for (int row = first; row <= lastGone; ++row) {
            std::vector<const Node *> pending{children[static_cast<std::size_t>(row)].get()};
            while (!pending.empty()) {
                const Node *gone = pending.back();
                pending.pop_back();
                rowGoes(indexOfNode(*gone));
                for (const auto &child : gone->children)
                    pending.push_back(child.get());
            }
        }
        removeChildren(node, first, lastGone);
    }
    const int lastNew = static_cast<int>(items.end() - items.begin() - suffix) - 1;
    if (lastNew < first)
        return;
    std::vector<std::unique_ptr<Node>> added;
    for (int row = first; row <= lastNew; ++row)
        added.push_back(makeNode(items[static_cast<std::size_t>(row)], node, row));
    beginInsertRows(indexOfNode(node), first, lastNew);
    children.insert(children.begin() + first, std::make_move_iterator(added.begin()),
                    std::make_move_iterator(added.end()));
    for (std::size_t row = static_cast<std::size_t>(lastNew) + 1; row < children.size(); ++row)
        children[row]->row = static_cast<int>(row);
    endInsertRows();
}

void OutlineViewModel::removeChildren(Node &node, int first, int last)
{
    beginRemoveRows(indexOfNode(node), first, last);
    auto &children = node.children;
    for (int row = first; row <= last; ++row) {
        Node &gone = *children[static_cast<std::size_t>(row)];
        forgetBelow(gone);
        forget(gone);
    }
    children.erase(children.begin() + first, children.begin() + last + 1);
    for (std::size_t row = static_cast<std::size_t>(first); row < children.size(); ++row)
        children[row]->row = static_cast<int>(row);
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
    std::vector<std::unique_ptr<Node>> pending = std::exchange(node.children, {});
    node.isLoaded = false;
    if (&node == &root_)
        nodes_.clear();
    while (!pending.empty()) {
        const std::unique_ptr<Node> gone = std::move(pending.back());
        pending.pop_back();
        forget(*gone);
        std::move(gone->children.begin(), gone->children.end(), std::back_inserter(pending));
    }
}
