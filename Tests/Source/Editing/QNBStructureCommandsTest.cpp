// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBStructureCommands.h"

#include "RecordingObserver.h"

#include <QUndoStack>
#include <gtest/gtest.h>

namespace {

QNBHierarchyItemPtr file(const QString &name)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, false, nullptr));
}

QNBHierarchyItemPtr folder(const QString &name, const QStringList &files = {})
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, true, nullptr));
    for (const QString &inside : files)
        item->addChild(file(inside));
    return item;
}

QStringList names(const QNBHierarchyItemPtr &parent)
{
    QStringList result;
    for (const QNBHierarchyItemPtr &child : parent->children())
        result << child->filename();
    return result;
}

class QNBStructureCommands : public ::testing::Test
{
protected:
    QNBStructureCommands()
    {
        root->addChild(left);
        root->addChild(right);
        record->setFileHierarchy(root);
    }

    QVariantMap tree() const { return root->toDictionaryWithUID(true); }

    const QNBHierarchyItemPtr left =
        folder(QStringLiteral("left"), {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    const QNBHierarchyItemPtr right = folder(QStringLiteral("right"), {QStringLiteral("d")});
    const QNBHierarchyItemPtr root = folder({});
    const QNBPresetRecordPtr record = std::make_shared<QNBPresetRecord>();
    RecordingObserver observer;
    QUndoStack history;
};

} // namespace

TEST_F(QNBStructureCommands, InsertPutsTheItemAfterItsSiblingAndTakesItOutAgain)
{
    const QVariantMap before = tree();
    const QNBHierarchyItemPtr item = file(QStringLiteral("new"));
    history.push(new QNBInsertItemCommand(observer, record, item, left, left->childAtIndex(1),
                                          QStringLiteral("New File")));
    EXPECT_EQ(names(left), (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("new"),
                                        QStringLiteral("c")}));
    EXPECT_EQ(item->parent(), left);
    EXPECT_EQ(observer.take(), QStringList{QStringLiteral("inserted 2 in left")});
    const QVariantMap after = tree();

    history.undo();
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(observer.take(), (QStringList{QStringLiteral("preset"), QStringLiteral("removed 2 in left"),
                                            QStringLiteral("show b")}));
    history.redo();
    EXPECT_EQ(tree(), after);
    EXPECT_EQ(left->childAtIndex(2), item);
    EXPECT_EQ(observer.take(), (QStringList{QStringLiteral("preset"), QStringLiteral("inserted 2 in left"),
                                            QStringLiteral("show new")}));
}

TEST_F(QNBStructureCommands, InsertWithoutSiblingComesFirst)
{
    const QNBHierarchyItemPtr item = file(QStringLiteral("new"));
    history.push(new QNBInsertItemCommand(observer, record, item, left, nullptr, QStringLiteral("New File")));
    EXPECT_EQ(left->childAtIndex(0), item);
    history.undo();
    EXPECT_EQ(observer.take().constLast(), QStringLiteral("show a"));
}

TEST_F(QNBStructureCommands, InsertIntoAnEmptyFolderShowsTheFolderWhenTakenBack)
{
    const QNBHierarchyItemPtr empty = folder(QStringLiteral("empty"));
    root->addChild(empty);
    history.push(new QNBInsertItemCommand(observer, record, file(QStringLiteral("new")), empty, nullptr,
                                          QStringLiteral("New File")));
    history.undo();
    EXPECT_EQ(observer.take().constLast(), QStringLiteral("show empty"));
}

TEST_F(QNBStructureCommands, RemoveTakenBackBringsTheVeryItemBackToItsPlace)
{
    const QVariantMap before = tree();
    for (std::int32_t index = 0; index < 3; ++index) {
        const QNBHierarchyItemPtr item = left->childAtIndex(index);
        history.push(new QNBRemoveItemCommand(observer, record, item, left, QStringLiteral("Delete")));
        EXPECT_EQ(left->numberOfChildren(), 2U);
        history.undo();
        EXPECT_EQ(left->childAtIndex(index), item) << index;
        EXPECT_EQ(tree(), before) << index;
    }
}

TEST_F(QNBStructureCommands, MoveReplacesTheItemByItsCopy)
{
    const QVariantMap before = tree();
    const QNBHierarchyItemPtr item = left->childAtIndex(1);
    const QNBHierarchyItemPtr copy = QNBHierarchyItem::initWithDictionary(item->toDictionaryWithUID(true));
    history.push(new QNBMoveItemCommand(observer, record, item, left, copy,
                                        {.parent = right, .afterSibling = right->childAtIndex(0)},
                                        QStringLiteral("Move")));
    EXPECT_EQ(names(left), (QStringList{QStringLiteral("a"), QStringLiteral("c")}));
    EXPECT_EQ(right->childAtIndex(1), copy);
    EXPECT_EQ(copy->uid(), item->uid());
    EXPECT_EQ(observer.take(), (QStringList{QStringLiteral("begin"), QStringLiteral("inserted 1 in right"),
                                            QStringLiteral("removed 1 in left"), QStringLiteral("end")}));
    const QVariantMap after = tree();

    history.undo();
    EXPECT_EQ(tree(), before);
    EXPECT_EQ(left->childAtIndex(1), item);
    history.redo();
    EXPECT_EQ(tree(), after);
    EXPECT_EQ(right->childAtIndex(1), copy);
}

TEST_F(QNBStructureCommands, MoveWithinAFolderFromAnywhereToAnywhereCanBeTakenBack)
{
    const QVariantMap before = tree();
    for (std::int32_t from = 0; from < 3; ++from) {
        // After the sibling at this index; none for the first place, itself included.
        for (std::int32_t to = -1; to < 3; ++to) {
            const QNBHierarchyItemPtr item = left->childAtIndex(from);
            const QNBHierarchyItemPtr sibling = to < 0 ? nullptr : left->childAtIndex(to);
            QStringList expected = names(left);
            expected.move(from, to < from ? to + 1 : to);

            history.push(
                new QNBMoveItemCommand(observer, record, item, left,
                                       QNBHierarchyItem::initWithDictionary(item->toDictionaryWithUID(true)),
                                       {.parent = left, .afterSibling = sibling}, QStringLiteral("Move")));
            EXPECT_EQ(names(left), expected) << from << " after " << to;
            history.undo();
            EXPECT_EQ(tree(), before) << from << " after " << to;
            EXPECT_EQ(left->childAtIndex(from), item);
            history.redo();
            EXPECT_EQ(names(left), expected) << from << " after " << to;
            history.undo();
        }
    }
}

TEST_F(QNBStructureCommands, LaterStepsGoOnMeaningTheSameItems)
{
    const QVariantMap before = tree();
    const QNBHierarchyItemPtr copy = QNBHierarchyItem::initWithDictionary(left->toDictionaryWithUID(true));
    history.push(new QNBMoveItemCommand(observer, record, left, root, copy,
                                        {.parent = right, .afterSibling = {}}, QStringLiteral("Move")));
    history.push(
        new QNBRemoveItemCommand(observer, record, copy->childAtIndex(0), copy, QStringLiteral("Delete")));
    const QVariantMap after = tree();
    for (int round = 0; round < 2; ++round) {
        history.setIndex(0);
        EXPECT_EQ(tree(), before);
        history.setIndex(2);
        EXPECT_EQ(tree(), after);
    }
}
