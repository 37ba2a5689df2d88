// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPermissions.h"

#include <gtest/gtest.h>

namespace {

using QNBPermissions::Boxes;

QVariantMap permissions(qlonglong owner, qlonglong group, qlonglong others)
{
    return {{QStringLiteral("u"), owner}, {QStringLiteral("g"), group}, {QStringLiteral("o"), others}};
}

QNBHierarchyItemPtr addItem(const QNBHierarchyItemPtr &parent, const QString &name, bool isDirectory)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, isDirectory, nullptr), parent);
    if (parent)
        parent->addChild(item);
    return item;
}

QStringList names(const QNBHierarchyItem::Children &items)
{
    QStringList names;
    for (const QNBHierarchyItemPtr &item : items)
        names << item->filename();
    return names;
}

struct TagCase
{
    int tag;
    const char *key;
    quint32 bit;
};

void PrintTo(const TagCase &tag, std::ostream *out)
{
    *out << tag.tag;
}

class QNBPermissionsTag : public ::testing::TestWithParam<TagCase>
{
};

TEST_P(QNBPermissionsTag, SaysClassAndBit)
{
    const auto box = QNBPermissions::boxForTag(GetParam().tag);
    ASSERT_TRUE(box);
    EXPECT_EQ(box->key, QString::fromLatin1(GetParam().key));
    EXPECT_EQ(box->bit, GetParam().bit);
}

INSTANTIATE_TEST_SUITE_P(, QNBPermissionsTag,
                         ::testing::Values(TagCase{400, "u", 4}, TagCase{200, "u", 2}, TagCase{100, "u", 1},
                                           TagCase{40, "g", 4}, TagCase{20, "g", 2}, TagCase{10, "g", 1},
                                           TagCase{4, "o", 4}, TagCase{2, "o", 2}, TagCase{1, "o", 1},
                                           TagCase{140, "u", 1}, TagCase{14, "g", 1}),
                         [](const ::testing::TestParamInfo<TagCase> &row) {
                             return std::to_string(row.param.tag);
                         });

TEST(QNBPermissions, Tag0IsNoBox)
{
    EXPECT_FALSE(QNBPermissions::boxForTag(0));
}

TEST(QNBPermissions, AMissingDigitReadsAs0)
{
    const QVariantMap ownerOnly{{QStringLiteral("u"), 5LL}};
    EXPECT_EQ(QNBPermissions::digit(ownerOnly, QStringLiteral("u")), 5U);
    EXPECT_EQ(QNBPermissions::digit(ownerOnly, QStringLiteral("g")), 0U);
    EXPECT_EQ(QNBPermissions::boxesForPermissions(ownerOnly), (Boxes{true, false, true}));
    EXPECT_EQ(QNBPermissions::boxesForPermissions({}), Boxes{});
}

TEST(QNBPermissions, EveryDigitHasItsBoxesAndBack)
{
    for (qlonglong owner = 0; owner <= 7; ++owner) {
        for (qlonglong group = 0; group <= 7; ++group) {
            for (qlonglong others = 0; others <= 7; ++others) {
                const QVariantMap all = permissions(owner, group, others);
                EXPECT_EQ(QNBPermissions::permissionsForBoxes(QNBPermissions::boxesForPermissions(all)), all);
            }
        }
    }
    EXPECT_EQ(QNBPermissions::boxesForPermissions(permissions(4, 2, 1)),
              (Boxes{true, false, false, false, true, false, false, false, true}));
}

TEST(QNBPermissions, AClickChangesOneBitOfOneDigit)
{
    const QNBPermissions::Box ownerWrite{QStringLiteral("u"), QNBPermissions::write};
    EXPECT_EQ(QNBPermissions::afterClick(permissions(7, 6, 4), ownerWrite, false), permissions(5, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick(permissions(5, 6, 4), ownerWrite, true), permissions(7, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick(permissions(7, 6, 4), ownerWrite, true), permissions(7, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick(permissions(5, 6, 4), ownerWrite, false), permissions(5, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick({}, ownerWrite, true), (QVariantMap{{QStringLiteral("u"), 2LL}}));
}

TEST(QNBPermissions, AClickKeepsFourBits)
{
    const QNBPermissions::Box ownerRead{QStringLiteral("u"), QNBPermissions::read};
    EXPECT_EQ(QNBPermissions::afterClick(permissions(9, 6, 4), ownerRead, true), permissions(13, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick(permissions(13, 6, 4), ownerRead, false), permissions(9, 6, 4));
    EXPECT_EQ(QNBPermissions::afterClick(permissions(25, 6, 4), ownerRead, true), permissions(13, 6, 4));
    // The digits that were not clicked stay what they are.
    EXPECT_EQ(QNBPermissions::afterClick(permissions(7, 25, 4), ownerRead, true), permissions(7, 25, 4));
}

TEST(QNBPermissions, AppliedToAFileTheyConcernIt)
{
    const QNBHierarchyItemPtr root = addItem({}, QStringLiteral("root"), true);
    const QNBHierarchyItemPtr file = addItem(root, QStringLiteral("file"), false);
    addItem(root, QStringLiteral("sibling"), false);
    EXPECT_EQ(QNBPermissions::itemsToApplyTo(file), QNBHierarchyItem::Children{file});
}

TEST(QNBPermissions, AppliedToAFolderTheLastFolderInItComesFirst)
{
    const QNBHierarchyItemPtr root = addItem({}, QStringLiteral("root"), true);
    const QNBHierarchyItemPtr a = addItem(root, QStringLiteral("a"), true);
    addItem(root, QStringLiteral("1"), false);
    const QNBHierarchyItemPtr b = addItem(root, QStringLiteral("b"), true);
    addItem(root, QStringLiteral("2"), false);
    addItem(a, QStringLiteral("a1"), false);
    addItem(b, QStringLiteral("b1"), false);
    const QNBHierarchyItemPtr inside = addItem(b, QStringLiteral("bb"), true);
    addItem(inside, QStringLiteral("bb1"), false);
    EXPECT_EQ(names(QNBPermissions::itemsToApplyTo(root)),
              QStringList({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("root"),
                           QStringLiteral("b1"), QStringLiteral("b"), QStringLiteral("bb1"),
                           QStringLiteral("bb"), QStringLiteral("a1"), QStringLiteral("a")}));
}

TEST(QNBPermissions, NoDepthIsTooDeepToApplyTo)
{
    constexpr int depth = 100'000;
    const QNBHierarchyItemPtr root = addItem({}, QStringLiteral("root"), true);
    QNBHierarchyItemPtr folder = root;
    for (int i = 1; i < depth; ++i)
        folder = addItem(folder, QStringLiteral("folder"), true);
    EXPECT_EQ(QNBPermissions::itemsToApplyTo(root).size(), depth);
}

} // namespace
