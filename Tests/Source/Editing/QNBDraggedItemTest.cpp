// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Editing/QNBDraggedItem.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Source/Model/QNBHierarchyDepth.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

const QString itemKey = QStringLiteral("item");
const QString indexPathKey = QStringLiteral("indexPath");

QNBHierarchyItemPtr make(const QString &name, bool isFolder)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr));
}

class QNBDraggedItemTest : public ::testing::Test
{
protected:
    QNBDraggedItemTest()
    {
        root->addChild(make(QStringLiteral("first"), false));
        root->addChild(folder);
        folder->addChild(make(QStringLiteral("a"), false));
        folder->addChild(make(QStringLiteral("b"), false));
        folder->addChild(inner);
        inner->addChild(leaf);
        leaf->setColorName(QStringLiteral("red"));
        leaf->setContentFilename(QStringLiteral("Letter.txt"));
        leaf->setCustomPermissions(
            {{QStringLiteral("u"), 7}, {QStringLiteral("g"), 5}, {QStringLiteral("o"), 0}});
    }

    static QByteArray archiveOf(const QVariant &value)
    {
        return *KeyedArchiver::archivedDataWithRootObject(value).bytes;
    }
    QByteArray archiveWithPath(const QVariant &path) const
    {
        return archiveOf(QVariantMap{{itemKey, inner->toDictionaryWithUID(true)}, {indexPathKey, path}});
    }
    static std::optional<QNBDraggedItem> read(const QByteArray &bytes)
    {
        QString error;
        const std::optional<QNBDraggedItem> dragged = QNBDraggedItem::unarchive(bytes, &error);
        EXPECT_EQ(dragged.has_value(), error.isEmpty());
        return dragged;
    }
    std::optional<QNBDraggedItem> dragged(const QNBHierarchyItemPtr &item) const
    {
        return read(*QNBDraggedItem::archive(*item).bytes);
    }

    const QNBHierarchyItemPtr root = make({}, true);
    const QNBHierarchyItemPtr folder = make(QStringLiteral("folder"), true);
    const QNBHierarchyItemPtr inner = make(QStringLiteral("inner"), true);
    const QNBHierarchyItemPtr leaf = make(QStringLiteral("leaf"), false);
};

} // namespace

TEST_F(QNBDraggedItemTest, TheArchiveHoldsTheItemWithIdentifiersAndItsPlaceLeafFirst)
{
    const PropertyList::ReadResult archived =
        KeyedUnarchiver::unarchiveObject(*QNBDraggedItem::archive(*inner).bytes);
    ASSERT_TRUE(archived) << qPrintable(archived.error);
    const QVariantList path{qlonglong(2), qlonglong(1)};
    EXPECT_EQ(archived.value->toMap(),
              QVariantMap({{itemKey, inner->toDictionaryWithUID(true)}, {indexPathKey, path}}));
}

TEST_F(QNBDraggedItemTest, ATopLevelItemHasAPathOfOneElement)
{
    EXPECT_EQ(QNBDraggedItem::indexPath(*folder), std::vector<std::int32_t>({1}));
    EXPECT_EQ(QNBDraggedItem::indexPath(*leaf), std::vector<std::int32_t>({0, 2, 1}));
}

TEST_F(QNBDraggedItemTest, PathsAreWalkedFromTheirEnd)
{
    EXPECT_EQ(QNBDraggedItem::itemAtIndexPath(root, {0, 2, 1}), leaf);
    EXPECT_EQ(QNBDraggedItem::itemAtIndexPath(root, {1, 2, 0}), nullptr);
    EXPECT_EQ(QNBDraggedItem::itemAtIndexPath(root, {5}), nullptr);
    EXPECT_EQ(QNBDraggedItem::itemAtIndexPath(root, {0, 0, 2, 1}), nullptr) << "below a file";
    EXPECT_EQ(QNBDraggedItem::itemAtIndexPath(nullptr, {0}), nullptr);
}

TEST_F(QNBDraggedItemTest, WhatComesBackIsACopyWithTheSameIdentifiers)
{
    auto copy = dragged(inner);
    ASSERT_TRUE(copy);
    EXPECT_NE(copy->item(), inner);
    EXPECT_EQ(copy->item()->toDictionaryWithUID(true), inner->toDictionaryWithUID(true));
    EXPECT_EQ(copy->depthBelow(), 1);
    EXPECT_EQ(copy->source(root), inner);
    EXPECT_TRUE(copy->becomeCopyOf(*inner));
}

TEST_F(QNBDraggedItemTest, AnotherItemAtThatPlaceIsNotTheSource)
{
    const auto copy = dragged(inner);
    folder->removeChild(folder->childAtIndex(0));
    EXPECT_EQ(copy->source(root), nullptr);
    folder->addChildAfterExistingChild(make(QStringLiteral("new"), false), nullptr);
    EXPECT_EQ(copy->source(root), inner);
    EXPECT_EQ(copy->source(make({}, true)), nullptr);
    EXPECT_EQ(copy->source(nullptr), nullptr);
}

TEST_F(QNBDraggedItemTest, ACopyIsNoneAnyMoreWhenAnythingBelowHasChanged)
{
    auto copy = dragged(folder);
    const auto expectNoCopy = [&](const char *what) { EXPECT_FALSE(copy->becomeCopyOf(*folder)) << what; };
    leaf->setFilename(QStringLiteral("other"));
    expectNoCopy("name");
    leaf->setFilename(QStringLiteral("leaf"));
    leaf->setColorName({});
    expectNoCopy("colour");
    leaf->setColorName(QStringLiteral("red"));
    leaf->setContentFilename({});
    expectNoCopy("content file");
    leaf->setContentFilename(QStringLiteral("Letter.txt"));
    inner->addChild(make(QStringLiteral("new"), false));
    expectNoCopy("another child");
    inner->removeChild(inner->childAtIndex(1));
    EXPECT_TRUE(copy->becomeCopyOf(*folder));
    inner->setChild(make(QStringLiteral("leaf"), false));
    expectNoCopy("another item of the same name");
}

TEST_F(QNBDraggedItemTest, ACopyTakesOverPermissionsThatNoDictionaryHolds)
{
    const QVariantMap owner{{QStringLiteral("u"), qlonglong(13)}};
    leaf->setCustomPermissions(owner);
    auto copy = dragged(inner);
    ASSERT_TRUE(copy->becomeCopyOf(*inner));
    EXPECT_EQ(copy->item()->childAtIndex(0)->customPermissions(), owner);
}

TEST_F(QNBDraggedItemTest, WhatIsNoArchiveOfAnItemIsRefused)
{
    EXPECT_FALSE(read({}));
    EXPECT_FALSE(read("no archive"));
    EXPECT_FALSE(read(QNBDraggedItem::archive(*inner).bytes->chopped(20)));
    EXPECT_FALSE(read(*PropertyList::write(inner->toDictionaryWithUID(true)).bytes)) << "no keyed archive";
    const QVariantMap item = inner->toDictionaryWithUID(true);
    const QVariantList path{qlonglong(0)};
    for (const QVariant &object :
         {QVariant(QStringLiteral("text")), QVariant(QVariantList{item, path}), QVariant(QVariantMap{}),
          QVariant(QVariantMap{{itemKey, item}}), QVariant(QVariantMap{{indexPathKey, path}}),
          QVariant(QVariantMap{{itemKey, path}, {indexPathKey, path}}),
          QVariant(QVariantMap{{itemKey, QStringLiteral("x")}, {indexPathKey, path}})})
        EXPECT_FALSE(read(archiveOf(object)));
}

TEST_F(QNBDraggedItemTest, APathThatIsNoneIsRefused)
{
    ASSERT_TRUE(read(archiveWithPath(QVariantList{qlonglong(0)})));
    for (const QVariant &index : {QVariant(qlonglong(-1)), QVariant(std::numeric_limits<qlonglong>::min()),
                                  QVariant(qlonglong(1) << 31), QVariant(qlonglong(1) << 32),
                                  QVariant(std::numeric_limits<qulonglong>::max()), QVariant(0.0),
                                  QVariant(true), QVariant(QStringLiteral("0")), QVariant(QByteArray("0")),
                                  QVariant(QVariantList{}), QVariant(QVariantMap{})})
        EXPECT_FALSE(read(archiveWithPath(QVariantList{qlonglong(0), index}))) << index.typeName();
    EXPECT_FALSE(read(archiveWithPath(QVariantList{})));
    EXPECT_FALSE(read(archiveWithPath(qlonglong(0))));
    EXPECT_FALSE(read(archiveWithPath(QVariantMap{})));
    EXPECT_FALSE(read(archiveWithPath(QVariantList(QNBHierarchyDepth::deepest + 1, qlonglong(0)))));
    EXPECT_FALSE(read(archiveWithPath(QVariantList(1'000'000, qlonglong(0)))));
}
