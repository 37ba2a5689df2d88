// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Source/Controls/QNBHoverButton.h"
#include "Source/Model/QNBPresetFile.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/DraggingInfo.h"
#include "Toolkit/Pasteboard.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <random>

namespace {

/// Does what users do, at random but the same way each time, through the calls that the views make.
class RandomEdits : public PaneFixture
{
protected:
    void SetUp() override
    {
        store({preset(QStringLiteral("First"), {QStringLiteral("folder/"), QStringLiteral("file")}),
               preset(QStringLiteral("Second"), {QStringLiteral("other/")}),
               preset(QStringLiteral("Third"))});
        ASSERT_TRUE(QNBPresetFile::write(*preset(QStringLiteral("Imported"), {QStringLiteral("inside/")}),
                                         home.path(), &imported_));
        openPane();
        controller().setSelectionIndex(0);
    }

    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }

    void selectAnything()
    {
        // Now and then nothing.
        const int rows = outline().numberOfRows();
        outline().selectRow(rows == 0 || pick(20) == 0 ? OutlineView::noRow : pick(rows));
    }

    QNBHierarchyItem *itemAt(int row) const
    {
        return static_cast<QNBHierarchyItem *>(outline().itemAtRow(row).get());
    }

    QNBHierarchyItemPtr root() const
    {
        const auto selected = controller().selectedObjects();
        return selected.isEmpty()
                   ? nullptr
                   : std::static_pointer_cast<QNBPresetRecord>(selected.constFirst())->fileHierarchy();
    }

    void rename()
    {
        static const QStringList names{
            QStringLiteral("a.txt"),          QStringLiteral("A.TXT"),   QString(),
            QStringLiteral("archive.tar.gz"), QStringLiteral("Ünïcode"), QStringLiteral("Untitled"),
            QStringLiteral(".hidden")};
        if (const int row = outline().selectedRow(); row != OutlineView::noRow)
            pane->outlineViewSetObjectValue(outline(), names.at(pick(static_cast<int>(names.size()))), 0,
                                            outline().itemAtRow(row));
    }

    void drag()
    {
        const int rows = outline().numberOfRows();
        if (rows == 0)
            return;
        QMimeData data;
        Pasteboard pasteboard(data);
        ASSERT_TRUE(pane->outlineViewWriteItemsToPasteboard(outline(), {outline().itemAtRow(pick(rows))},
                                                            pasteboard));
        const int target = pick(rows + 1);
        const OutlineItem parent = target == rows ? OutlineItem() : outline().itemAtRow(target);
        const int count = pane->outlineViewNumberOfChildrenOfItem(outline(), parent);
        const int childIndex = pick(count + 2) - 1;
        const DraggingInfo info(data, DragOperation::Every);
        if (pane->outlineViewValidateDrop(outline(), info, parent, childIndex) == DragOperation::None)
            return;
        EXPECT_TRUE(pane->outlineViewAcceptDrop(outline(), info, parent, childIndex));
    }

    void color()
    {
        static const QStringList names{QStringLiteral("red"), QStringLiteral("gray"), QStringLiteral("green"),
                                       QStringLiteral("clearColor")};
        auto *button = outlet<QNBHoverButton>(
            QStringLiteral("_ui_%1Button").arg(names.at(pick(static_cast<int>(names.size())))));
        button->click();
    }

    void setPermission()
    {
        static const QStringList boxes{QStringLiteral("OwnerW"), QStringLiteral("GroupX"),
                                       QStringLiteral("OthersR")};
        outlet<QCheckBox>(QStringLiteral("_ui_perm%1").arg(boxes.at(pick(static_cast<int>(boxes.size())))))
            ->click();
    }

    void movePreset()
    {
        QMimeData data;
        Pasteboard pasteboard(data);
        const int count = static_cast<int>(controller().arrangedObjects().size());
        ASSERT_TRUE(pane->tableViewWriteRowsWithIndexesToPasteboard(list(), {pick(count)}, pasteboard));
        const DraggingInfo info(data, DragOperation::Every);
        pane->tableViewAcceptDrop(list(), info, pick(count + 1), TableDropOperation::Above);
    }

    void removePreset()
    {
        // One stays, to be edited.
        if (controller().arrangedObjects().size() == 1 || controller().selectedObjects().isEmpty())
            return;
        alertAnswers << AlertPanel::Answer::Default;
        pane->removeSelectedPresetAfterConfirmation();
        EXPECT_TRUE(alertAnswers.isEmpty());
    }

    void importPreset()
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path(imported_))});
        const DraggingInfo info(data, DragOperation::Copy);
        const int count = static_cast<int>(controller().arrangedObjects().size());
        EXPECT_TRUE(pane->tableViewAcceptDrop(list(), info, pick(count + 1), TableDropOperation::Above));
    }

    void openOrCloseFolder()
    {
        if (const int rows = outline().numberOfRows(); rows > 0) {
            const OutlineItem item = outline().itemAtRow(pick(rows));
            pick(2) == 0 ? outline().expandItem(item) : outline().collapseItem(item);
        }
    }

    /// An editor that the next edit finds open has been typed into.
    void leaveEditorOpen() const
    {
        if (auto *editor = qobject_cast<QLineEdit *>(QApplication::focusWidget()))
            editor->insert(QStringLiteral("typed"));
    }

    void edit()
    {
        const int action = pick(110);
        if (action < 50)
            selectAnything();
        if (action < 12)
            pane->addFileToPresetHierarchy();
        else if (action < 22)
            pane->addDirectoryToPresetHierarchy();
        else if (action < 34)
            pane->deleteSelectedItemInPresetHierarchy();
        else if (action < 50)
            rename();
        else if (action < 66)
            drag();
        else if (action < 74)
            color();
        else if (action < 80)
            setPermission();
        else if (action < 83)
            outlet<QPushButton>(QStringLiteral("_ui_applyPermissionsRecursively"))->click();
        else if (action < 84)
            movePreset();
        else if (action < 86)
            controller().setSelectionIndex(pick(static_cast<int>(controller().arrangedObjects().size())));
        else if (action < 95)
            pane->undo();
        else if (action < 100)
            pane->redo();
        else if (action < 102)
            pane->addPreset();
        else if (action < 104)
            removePreset();
        else if (action < 105)
            importPreset();
        else
            openOrCloseFolder();
        if (pick(4) == 0) {
            leaveEditorOpen();
        } else {
            outline().endEditing();
            list().endEditing();
        }
    }

    /// Every preset, with identifiers, in the list's order.
    QVariantList everything() const
    {
        QVariantList presets;
        for (const ArrayController::Object &object : controller().arrangedObjects()) {
            const auto record = std::static_pointer_cast<QNBPresetRecord>(object);
            QVariantMap map = record->values();
            // A preset gets its empty tree when it is first looked at.
            if (const QNBHierarchyItemPtr tree = record->fileHierarchy();
                tree && tree->numberOfChildren() > 0)
                map.insert(QNBPresetKey::fileHierarchy, tree->toDictionaryWithUID(true));
            presets << map;
        }
        return presets;
    }

    /// Whether each row stands where the tree has its item, says its name, and no row lacks.
    void expectTheViewShowsTheTree() const
    {
        const QNBHierarchyItemPtr top = root();
        struct Place
        {
            const QNBHierarchyItem *item;
            QModelIndex index;
        };
        std::vector<Place> pending{{top.get(), {}}};
        const QAbstractItemModel &model = *outline().model();
        while (!pending.empty()) {
            const Place place = pending.back();
            pending.pop_back();
            const int shown = place.item == top.get() || place.item->isDirectory()
                                  ? static_cast<int>(place.item->numberOfChildren())
                                  : 0;
            ASSERT_EQ(model.rowCount(place.index), shown);
            for (int row = 0; row < shown; ++row) {
                const QNBHierarchyItemPtr child = place.item->childAtIndex(row);
                const QModelIndex index = model.index(row, 0, place.index);
                ASSERT_EQ(index.data().toString(), child->filename());
                ASSERT_EQ(outline().rowForItem(child) != OutlineView::noRow, isVisible(index));
                pending.push_back({child.get(), index});
            }
        }
    }

    bool isVisible(QModelIndex index) const
    {
        for (index = index.parent(); index.isValid(); index = index.parent()) {
            if (!outline().isExpanded(index))
                return false;
        }
        return true;
    }

    void expectNamesAreUniqueInEachFolder() const
    {
        std::vector<const QNBHierarchyItem *> pending{root().get()};
        while (!pending.empty()) {
            const QNBHierarchyItem *folder = pending.back();
            pending.pop_back();
            QSet<QString> names;
            for (const QNBHierarchyItemPtr &child : folder->children()) {
                const QString name = child->filename().toLower();
                ASSERT_FALSE(names.contains(name)) << qPrintable(name);
                names.insert(name);
                pending.push_back(child.get());
            }
        }
    }

    void undoAll()
    {
        while (outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled())
            pane->undo();
    }

    int redoAll()
    {
        int steps = 0;
        for (; outlet<QAction>(QStringLiteral("_redoAction"))->isEnabled(); ++steps)
            pane->redo();
        return steps;
    }

    std::mt19937 random_{20261121};
    QString imported_;
};

} // namespace

TEST_F(RandomEdits, TenThousandKeepViewNamesAndHistoryTrue)
{
    constexpr int edits = 10000;
    constexpr int betweenLooks = 50;
    const QVariantList before = everything();
    for (int count = 0; count < edits; ++count) {
        ASSERT_NO_FATAL_FAILURE(edit()) << count;
        if (count % betweenLooks != 0)
            continue;
        ASSERT_NO_FATAL_FAILURE(expectTheViewShowsTheTree()) << count;
        ASSERT_NO_FATAL_FAILURE(expectNamesAreUniqueInEachFolder()) << count;
    }
    outline().endEditing();
    list().endEditing();
    redoAll();
    const QVariantList after = everything();
    ASSERT_NE(after, before);

    undoAll();
    EXPECT_EQ(everything(), before);
    expectTheViewShowsTheTree();
    EXPECT_GT(redoAll(), 100);
    EXPECT_EQ(everything(), after);
    expectTheViewShowsTheTree();
}
