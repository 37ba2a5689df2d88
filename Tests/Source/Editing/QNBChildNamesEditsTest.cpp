// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBAttributeCommands.h"
#include "Source/Editing/QNBStructureCommands.h"
#include "Source/Model/QNBChildNames.h"
#include "Source/Model/QNBUniqueName.h"
#include "Tests/Source/Editing/RecordingObserver.h"

#include <QUndoStack>
#include <array>
#include <gtest/gtest.h>
#include <random>

namespace {

/// Two large folders with an index of names, edited by the commands of the history.
class QNBChildNamesEdits : public ::testing::Test
{
protected:
    QNBChildNamesEdits()
    {
        for (const QNBHierarchyItemPtr &folder : folders) {
            root->addChild(folder);
            for (int number = 0; number < filesInEach; ++number)
                folder->addChild(item(QStringLiteral("%1.txt").arg(number), false));
            folder->indexChildNames();
        }
        record->setFileHierarchy(root);
    }

    static QNBHierarchyItemPtr item(const QString &name, bool isFolder)
    {
        return QNBHierarchyItem::initWithDictionary(
            QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr));
    }

    std::size_t below(std::size_t bound) { return random_() % bound; }
    QNBHierarchyItemPtr anyChild(const QNBHierarchyItem &folder)
    {
        return folder.children()[below(folder.numberOfChildren())];
    }
    QString anyName()
    {
        return (below(2) ? QStringLiteral("%1.txt") : QStringLiteral("Name-%1.TXT")).arg(below(700));
    }

    void edit()
    {
        const QNBHierarchyItemPtr folder = folders[below(folders.size())];
        const QNBHierarchyItemPtr child = anyChild(*folder);
        switch (below(8)) {
        case 0:
        case 1:
            history.push(new QNBSetItemTextCommand(observer, record, child, QNBSetItemTextCommand::filename,
                                                   uniqueNameForFilename(anyName(), *folder, child.get()),
                                                   {}));
            break;
        case 2: {
            const QNBHierarchyItemPtr added = item({}, false);
            added->setFilename(uniqueNameForFilename(anyName(), *folder, added.get()));
            history.push(new QNBInsertItemCommand(observer, record, added, folder, child, {}));
            break;
        }
        case 3:
            history.push(new QNBRemoveItemCommand(observer, record, child, folder, {}));
            break;
        case 4:
            move(child, folder, folders[below(folders.size())]);
            break;
        case 5:
            history.redo();
            break;
        default:
            history.undo();
            break;
        }
    }

    void move(const QNBHierarchyItemPtr &source, const QNBHierarchyItemPtr &from,
              const QNBHierarchyItemPtr &target)
    {
        const QNBHierarchyItemPtr copy =
            QNBHierarchyItem::initWithDictionary(source->toDictionaryWithUID(true));
        copy->setFilename(uniqueNameForFilename(copy->filename(), *target, copy.get()));
        history.push(new QNBMoveItemCommand(observer, record, source, from, copy,
                                            {.parent = target, .afterSibling = anyChild(*target)}, {}));
    }

    /// Asks for a name that is there or was there or never was, as a new item would, or one that is there.
    void expectTheNameOfAPass(const QNBHierarchyItem &folder)
    {
        const QNBHierarchyItemPtr other = anyChild(folder);
        const QString base = below(2) ? anyName() : other->filename();
        const QNBHierarchyItem *forItem = below(2) ? other.get() : nullptr;
        QNBUniqueNameSearch search(base, {});
        for (const QNBHierarchyItemPtr &child : folder.children()) {
            if (child.get() != forItem)
                search.addTaken(child->filename());
        }
        ASSERT_EQ(uniqueNameForLevel(folder, base, forItem), search.uniqueName());
    }

    static constexpr int filesInEach = 600;

    const std::array<QNBHierarchyItemPtr, 2> folders{item(QStringLiteral("left"), true),
                                                     item(QStringLiteral("right"), true)};
    const QNBHierarchyItemPtr root = item({}, true);
    const QNBPresetRecordPtr record = std::make_shared<QNBPresetRecord>();
    RecordingObserver observer;
    QUndoStack history;

private:
    std::mt19937 random_{20'261'121};
};

} // namespace

TEST_F(QNBChildNamesEdits, AreThoseOfAPassAndStayThroughUndoAndRedo)
{
    const std::array<const QNBChildNames *, 2> indexes{folders[0]->childNames(), folders[1]->childNames()};
    const QVariantMap before = root->toDictionaryWithUID(true);
    const auto check = [&](int step) {
        observer.take();
        for (const QNBHierarchyItemPtr &folder : folders)
            ASSERT_NO_FATAL_FAILURE(expectTheNameOfAPass(*folder)) << "step " << step;
    };
    int step = 0;
    for (; step < 5'000; ++step) {
        edit();
        ASSERT_NO_FATAL_FAILURE(check(step));
    }
    EXPECT_GT(history.index(), 500);
    for (; history.canUndo(); ++step) {
        history.undo();
        ASSERT_NO_FATAL_FAILURE(check(step));
    }
    EXPECT_TRUE(root->toDictionaryWithUID(true) == before);
    for (; history.canRedo(); ++step) {
        history.redo();
        ASSERT_NO_FATAL_FAILURE(check(step));
    }
    EXPECT_EQ(folders[0]->childNames(), indexes[0]) << "no edit of a user drops it";
    EXPECT_EQ(folders[1]->childNames(), indexes[1]);
}
