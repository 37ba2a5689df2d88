// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "HierarchyFixture.h"

#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QLineEdit>
#include <QTest>

HierarchyFixture::RowSignals::RowSignals(const OutlineView &outline)
{
    const QAbstractItemModel *model = outline.model();
    QObject::connect(model, &QAbstractItemModel::rowsInserted, &context_,
                     [this](const QModelIndex &, int first, int last) {
                         for (int row = first; row <= last; ++row)
                             told_ << QStringLiteral("+%1").arg(row);
                     });
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, &context_,
                     [this](const QModelIndex &, int first, int last) {
                         for (int row = first; row <= last; ++row)
                             told_ << QStringLiteral("-%1").arg(row);
                     });
    QObject::connect(model, &QAbstractItemModel::modelReset, &context_,
                     [this] { told_ << QStringLiteral("reset"); });
    QObject::connect(model, &QAbstractItemModel::dataChanged, &context_, [this] { ++changes_; });
}

QNBHierarchyItemPtr HierarchyFixture::treeOf(const QStringList &paths)
{
    const auto make = [](const QString &name, bool isFolder) {
        return QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr));
    };
    QHash<QString, QNBHierarchyItemPtr> folders{{QString(), make({}, true)}};
    for (const QString &path : paths) {
        const bool isFolder = path.endsWith(u'/');
        const QString whole = isFolder ? path.chopped(1) : path;
        const qsizetype slash = whole.lastIndexOf(u'/');
        const QNBHierarchyItemPtr made = make(whole.mid(slash + 1), isFolder);
        folders.value(whole.left(std::max<qsizetype>(slash, 0)))->addChild(made);
        if (isFolder)
            folders.insert(whole, made);
    }
    return folders.value({});
}

void HierarchyFixture::openTree(const QStringList &paths)
{
    const QNBPresetRecordPtr record = preset(QStringLiteral("A"));
    record->setFileHierarchy(treeOf(paths));
    store({record});
    openPane();
    outline().setFocus();
}

QNBPresetRecordPtr HierarchyFixture::shownPreset() const
{
    return std::static_pointer_cast<QNBPresetRecord>(controller().selectedObjects().constFirst());
}

QNBHierarchyItemPtr HierarchyFixture::item(const QString &path) const
{
    QNBHierarchyItemPtr found = root();
    for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
        const auto &children = found->children();
        const auto child =
            std::find_if(children.begin(), children.end(),
                         [&name](const QNBHierarchyItemPtr &one) { return one->filename() == name; });
        if (child == children.end())
            return nullptr;
        found = *child;
    }
    return found;
}

void HierarchyFixture::select(const QString &path) const
{
    outline().selectRow(row(path));
    ASSERT_EQ(outline().itemAtRow(outline().selectedRow()), item(path));
}

QString HierarchyFixture::selectedName() const
{
    const auto selected =
        std::static_pointer_cast<QNBHierarchyItem>(outline().itemAtRow(outline().selectedRow()));
    return selected ? selected->filename() : QString();
}

QStringList HierarchyFixture::names(const QString &path) const
{
    QStringList result;
    for (const QNBHierarchyItemPtr &child : item(path)->children())
        result << child->filename();
    return result;
}

void HierarchyFixture::typeName(const QString &name) const
{
    ASSERT_TRUE(editor());
    editor()->selectAll();
    QTest::keyClick(editor(), Qt::Key_Delete);
    QTest::keyClicks(editor(), name);
    outline().endEditing();
}

QLineEdit *HierarchyFixture::editor() const
{
    return outline().isEditing() ? outline().viewport()->findChild<QLineEdit *>() : nullptr;
}

QString HierarchyFixture::lastStep() const
{
    const QAction &undo = action("_undoAction");
    return undo.isEnabled() ? undo.text().mid(QStringLiteral("&Undo ").size()) : QString();
}

void HierarchyFixture::expectUndoAndRedo(const QVariantMap &before, int steps) const
{
    const QVariantMap after = tree();
    const QStringList rows = outlineRows();
    for (int step = 0; step < steps; ++step) {
        EXPECT_NE(tree(), before) << "after taking back " << step;
        pane->undo();
    }
    EXPECT_EQ(tree(), before);
    for (int step = 0; step < steps; ++step)
        pane->redo();
    EXPECT_EQ(tree(), after);
    EXPECT_EQ(outlineRows(), rows);
}

QAction &HierarchyFixture::action(const char *name) const
{
    return *outlet<QAction>(QString::fromLatin1(name));
}
