// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineViewDataSource.h"

#include <QList>
#include <QString>
#include <memory>
#include <vector>

/// A tree of named nodes, as a data source that counts what it is asked.
class FakeTree : public OutlineViewDataSource
{
public:
    struct Node
    {
        QString name;
        std::vector<std::shared_ptr<Node>> children;

        std::shared_ptr<Node> add(const QString &childName)
        {
            children.push_back(std::make_shared<Node>(Node{childName, {}}));
            return children.back();
        }
    };
    using NodePtr = std::shared_ptr<Node>;

    int outlineViewNumberOfChildrenOfItem(OutlineView &, const OutlineItem &item) override
    {
        return static_cast<int>(nodeOf(item).children.size());
    }
    bool outlineViewIsItemExpandable(OutlineView &, const OutlineItem &item) override
    {
        return !nodeOf(item).children.empty();
    }
    OutlineItem outlineViewChildOfItem(OutlineView &, int index, const OutlineItem &item) override
    {
        ++childrenAskedFor;
        return nodeOf(item).children.at(static_cast<std::size_t>(index));
    }
    QVariant outlineViewObjectValueForTableColumn(OutlineView &, int, const OutlineItem &item) override
    {
        ++valuesAskedFor;
        return nodeOf(item).name;
    }
    void outlineViewSetObjectValue(OutlineView &, const QVariant &value, int,
                                   const OutlineItem &item) override
    {
        static_cast<Node *>(item.get())->name = value.toString();
    }
    bool outlineViewShouldEditTableColumn(OutlineView &, int, const OutlineItem &) override
    {
        return isEditable;
    }
    void outlineViewWillDisplayCell(OutlineView &, ViewCell &cell, int, const OutlineItem &) override
    {
        cell.image = image;
    }
    void outlineViewSelectionDidChange(OutlineView &) override { ++selectionChanges; }
    void outlineViewDeleteRowRequested(OutlineView &, int row) override { rowsToDelete.append(row); }

    NodePtr root = std::make_shared<Node>();
    bool isEditable = false;
    /// Every row's.
    QIcon image;
    int childrenAskedFor = 0;
    int valuesAskedFor = 0;
    int selectionChanges = 0;
    QList<int> rowsToDelete;

private:
    const Node &nodeOf(const OutlineItem &item) const
    {
        return item ? *static_cast<const Node *>(item.get()) : *root;
    }
};
