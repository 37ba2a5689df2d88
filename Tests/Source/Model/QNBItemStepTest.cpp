// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBItemStep.h"

#include <gtest/gtest.h>

namespace {

QNBHierarchyItemPtr item(bool isFolder)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename({}, isFolder, nullptr));
}

class QNBItemStepTest : public ::testing::Test
{
protected:
    QNBItemStepTest()
    {
        for (const QNBHierarchyItemPtr &child : {folder, file, last})
            root->addChild(child);
        folder->addChild(inside);
    }

    void expectPlace(const QNBHierarchyItemPtr &moved, QNBItemStep step, const QNBHierarchyItemPtr &parent,
                     int childIndex) const
    {
        const std::optional<QNBDropPlace> place = QNBPlaceForStep(*moved, step);
        ASSERT_TRUE(place.has_value());
        EXPECT_EQ(place->parent, parent);
        EXPECT_EQ(place->childIndex, childIndex);
    }

    const QNBHierarchyItemPtr root = item(true);
    const QNBHierarchyItemPtr folder = item(true);
    const QNBHierarchyItemPtr inside = item(false);
    const QNBHierarchyItemPtr file = item(false);
    const QNBHierarchyItemPtr last = item(false);
};

} // namespace

TEST_F(QNBItemStepTest, UpIsBeforeTheSiblingAbove)
{
    expectPlace(last, QNBItemStep::Up, root, 1);
    expectPlace(file, QNBItemStep::Up, root, 0);
    EXPECT_FALSE(QNBPlaceForStep(*folder, QNBItemStep::Up));
    EXPECT_FALSE(QNBPlaceForStep(*inside, QNBItemStep::Up));
}

TEST_F(QNBItemStepTest, DownIsAfterTheSiblingBelow)
{
    expectPlace(folder, QNBItemStep::Down, root, 2);
    expectPlace(file, QNBItemStep::Down, root, 3);
    EXPECT_FALSE(QNBPlaceForStep(*last, QNBItemStep::Down));
    EXPECT_FALSE(QNBPlaceForStep(*inside, QNBItemStep::Down));
}

TEST_F(QNBItemStepTest, IntoIsTheEndOfTheFolderDirectlyAbove)
{
    expectPlace(file, QNBItemStep::IntoFolderAbove, folder, 1);
    EXPECT_FALSE(QNBPlaceForStep(*last, QNBItemStep::IntoFolderAbove)) << "a file is above";
    EXPECT_FALSE(QNBPlaceForStep(*folder, QNBItemStep::IntoFolderAbove)) << "nothing is above";
}

TEST_F(QNBItemStepTest, OutIsDirectlyAfterTheFolder)
{
    expectPlace(inside, QNBItemStep::OutOfFolder, root, 1);
    EXPECT_FALSE(QNBPlaceForStep(*file, QNBItemStep::OutOfFolder)) << "the root is no folder to leave";
}

TEST_F(QNBItemStepTest, ItemsWithoutAPlaceGoNowhere)
{
    root->removeChild(file);
    for (const QNBItemStep step :
         {QNBItemStep::Up, QNBItemStep::Down, QNBItemStep::IntoFolderAbove, QNBItemStep::OutOfFolder}) {
        EXPECT_FALSE(QNBPlaceForStep(*root, step));
        EXPECT_FALSE(QNBPlaceForStep(*file, step)) << "it was taken out";
    }
}
