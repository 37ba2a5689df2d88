// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/StandardTree.h"

#include <QHeaderView>
#include <QStyle>

/// That of the pane's outline.
static constexpr QSize viewSize(456, 299);

StandardTree::StandardTree(const QNBPresetRecordPtr &preset)
    : folderIcon_(view_.style()->standardIcon(QStyle::SP_DirIcon))
    , fileIcon_(view_.style()->standardIcon(QStyle::SP_FileIcon))
    , otherIcon_(view_.style()->standardIcon(QStyle::SP_DriveHDIcon))
{
    std::vector<std::pair<const QNBHierarchyItem *, QStandardItem *>> pending{
        {preset->fileHierarchy().get(), model_.invisibleRootItem()}};
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        QList<QStandardItem *> rows;
        for (const QNBHierarchyItemPtr &child : from->children()) {
            rows.append(new QStandardItem(child->isDirectory() ? folderIcon_ : fileIcon_, child->filename()));
            if (child->numberOfChildren() > 0)
                pending.emplace_back(child.get(), rows.constLast());
        }
        to->appendRows(rows);
    }
    edited_ = model_.invisibleRootItem();
    for (const int index : pathToMiddle(*preset->fileHierarchy()))
        edited_ = edited_->child(index);

    view_.setHeaderHidden(true);
    view_.setUniformRowHeights(true);
    view_.setModel(&model_);
    view_.resize(viewSize);
    view_.show();
}

void StandardTree::hideRows()
{
    view_.collapseAll();
    view_.setModel(nullptr);
    view_.setModel(&model_);
}

void StandardTree::showExpanded()
{
    view_.expandAll();
    view_.setCurrentIndex(edited_->index());
}

void StandardTree::restore()
{
    takeBack_();
    view_.setCurrentIndex(edited_->index());
}

static QStandardItem &parentOf(const QStandardItem &item)
{
    return item.parent() ? *item.parent() : *item.model()->invisibleRootItem();
}

void StandardTree::insert()
{
    auto *item = new QStandardItem(fileIcon_, QStringLiteral("Untitled"));
    parentOf(*edited_).insertRow(edited_->row() + 1, item);
    view_.setCurrentIndex(item->index());
    takeBack_ = [item] { parentOf(*item).removeRow(item->row()); };
}

void StandardTree::rename(const QString &name)
{
    takeBack_ = [this, before = edited_->text()] { edited_->setText(before); };
    edited_->setText(name);
}

void StandardTree::color()
{
    takeBack_ = [this] { edited_->setIcon(fileIcon_); };
    edited_->setIcon(otherIcon_);
}

void StandardTree::remove()
{
    QStandardItem &parent = parentOf(*edited_);
    const int row = edited_->row();
    const QList<QStandardItem *> taken = parent.takeRow(row);
    takeBack_ = [&parent, row, taken] { parent.insertRow(row, taken); };
}

void StandardTree::move()
{
    QStandardItem &parent = parentOf(*edited_);
    const int row = edited_->row();
    model_.insertRow(0, parent.takeRow(row));
    view_.setCurrentIndex(edited_->index());
    takeBack_ = [this, &parent, row] { parent.insertRow(row, model_.takeRow(0)); };
}
