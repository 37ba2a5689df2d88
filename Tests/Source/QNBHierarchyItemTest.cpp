// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBHierarchyItem.h"

#include "Shared/Source/CocoaCryptoHashing.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

QVariantMap triple(int u, int g, int o)
{
    return {{QStringLiteral("u"), u}, {QStringLiteral("g"), g}, {QStringLiteral("o"), o}};
}

bool isFreshUid(const QString &uid)
{
    static const QRegularExpression hex(QStringLiteral("^[0-9a-f]{40}$"));
    return hex.match(uid).hasMatch();
}

QNBHierarchyItemPtr named(const QString &name, bool folder = false)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, folder, nullptr));
}

} // namespace

TEST(QNBHierarchyItem, EmptyDictionaryGivesAFileWithDefaultsAndAFreshUid)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(QVariantMap());
    EXPECT_EQ(item->filename(), QString());
    EXPECT_FALSE(item->isDirectory());
    EXPECT_EQ(item->customPermissions(), triple(7, 6, 4));
    EXPECT_EQ(item->colorName(), QString());
    EXPECT_EQ(item->contentFilename(), QString());
    EXPECT_EQ(item->numberOfChildren(), 0u);
    EXPECT_TRUE(isFreshUid(item->uid()));
    EXPECT_NE(item->uid(), QNBHierarchyItem::initWithDictionary(QVariantMap())->uid());
}

TEST(QNBHierarchyItem, UidIsFortyLowercaseHexadecimalCharactersAndDescriptionShowsTheLastSix)
{
    const QNBHierarchyItemPtr folder = named(QStringLiteral("Jobs"), true);
    folder->addChild(QNBHierarchyItem::init());
    ASSERT_TRUE(isFreshUid(folder->uid()));
    EXPECT_EQ(folder->description(),
              QStringLiteral("<QNBHierarchyItem: 'Jobs' (a directory with 1 children; uid: ") +
                  folder->uid().right(6) + QStringLiteral(")>"));
    const QNBHierarchyItemPtr file = named(QStringLiteral("%1 %2"));
    EXPECT_EQ(file->description(), QStringLiteral("<QNBHierarchyItem: '%1 %2' (a file; uid: ") +
                                       file->uid().right(6) + QStringLiteral(")>"));
}

TEST(QNBHierarchyItem, RenamingKeepsTheUid)
{
    const QNBHierarchyItemPtr item = named(QStringLiteral("a"));
    const QString uid = item->uid();
    item->setFilename(QStringLiteral("b"));
    EXPECT_EQ(item->uid(), uid);
}

TEST(QNBHierarchyItem, KindIsTheNumberOfChildrenCutToEightBits)
{
    const auto withChildren = [](std::size_t count) {
        QNBHierarchyItem::Children children(count);
        for (QNBHierarchyItemPtr &child : children)
            child = QNBHierarchyItem::init();
        return QNBHierarchyItem::initWithParentAndChildren({}, children);
    };
    EXPECT_FALSE(withChildren(0)->isDirectory());
    EXPECT_TRUE(withChildren(1)->isDirectory());
    EXPECT_TRUE(withChildren(255)->isDirectory());
    EXPECT_FALSE(withChildren(256)->isDirectory());
    EXPECT_TRUE(withChildren(257)->isDirectory());
    EXPECT_EQ(withChildren(256)->numberOfChildren(), 256u);
}

TEST(QNBHierarchyItem, InitWithChildrenSharesThemAndLeavesTheirParentLinks)
{
    const QNBHierarchyItemPtr oldParent = named(QStringLiteral("old"), true);
    const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
    oldParent->addChild(child);
    const QNBHierarchyItemPtr parent = QNBHierarchyItem::init();
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithParentAndChildren(parent, {child});
    EXPECT_EQ(item->parent(), parent);
    EXPECT_EQ(item->childAtIndex(0), child);
    EXPECT_EQ(child->parent(), oldParent);
    item->addChild(QNBHierarchyItem::init());
    EXPECT_EQ(item->numberOfChildren(), 2u);
    EXPECT_EQ(oldParent->numberOfChildren(), 1u);
}

TEST(QNBHierarchyItem, ChildAtIndexOutOfRangeIsNull)
{
    const QNBHierarchyItemPtr item = named(QStringLiteral("f"), true);
    const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
    item->addChild(child);
    EXPECT_EQ(item->childAtIndex(0), child);
    EXPECT_EQ(item->childAtIndex(1), nullptr);
    EXPECT_EQ(item->childAtIndex(-1), nullptr);
    EXPECT_EQ(item->childAtIndex(std::numeric_limits<std::int32_t>::min()), nullptr);
}

TEST(QNBHierarchyItem, IndexOfChildIsByIdentity)
{
    const QNBHierarchyItemPtr item = named(QStringLiteral("f"), true);
    const QNBHierarchyItemPtr child = named(QStringLiteral("c"));
    item->addChild(child);
    const QNBHierarchyItemPtr twin = QNBHierarchyItem::initWithDictionary(child->toDictionaryWithUID(true));
    EXPECT_TRUE(twin->isEqualTo(*child));
    EXPECT_EQ(item->indexOfChild(child.get()), 0u);
    EXPECT_EQ(item->indexOfChild(twin.get()), QNBHierarchyItem::notFound);
    EXPECT_EQ(item->indexOfChild(nullptr), QNBHierarchyItem::notFound);
}

TEST(QNBHierarchyItem, AddChildAfterAnItemThatIsNoChildInsertsAtTheFront)
{
    const QNBHierarchyItemPtr folder = named(QStringLiteral("f"), true);
    const QNBHierarchyItemPtr a = named(QStringLiteral("a"));
    const QNBHierarchyItemPtr b = named(QStringLiteral("b"));
    const QNBHierarchyItemPtr c = named(QStringLiteral("c"));
    const QNBHierarchyItemPtr d = named(QStringLiteral("d"));
    const QNBHierarchyItemPtr stranger = named(QStringLiteral("s"));
    folder->addChildAfterExistingChild(a, stranger); // into an empty list
    folder->addChildAfterExistingChild(b, a);
    folder->addChildAfterExistingChild(c, stranger);
    folder->addChildAfterExistingChild(d, nullptr);
    EXPECT_EQ(folder->children(), (QNBHierarchyItem::Children{d, c, a, b}));
    EXPECT_EQ(c->parent(), folder);
    EXPECT_EQ(d->parent(), folder);
}

TEST(QNBHierarchyItem, RemovedChildKeepsItsParentLink)
{
    const QNBHierarchyItemPtr folder = named(QStringLiteral("f"), true);
    const QNBHierarchyItemPtr child = named(QStringLiteral("c"));
    folder->setChildren({child});
    EXPECT_EQ(child->parent(), nullptr);
    folder->removeChild(child);
    EXPECT_EQ(folder->numberOfChildren(), 0u);
    EXPECT_EQ(child->parent(), folder);
}

TEST(QNBHierarchyItem, ParentLinkDoesNotKeepTheParentAlive)
{
    const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
    {
        const QNBHierarchyItemPtr parent = QNBHierarchyItem::init();
        parent->addChild(child);
    }
    EXPECT_EQ(child->parent(), nullptr);
}

TEST(QNBHierarchyItem, HasChildLooksTwoLevelsDownOnlyThroughFolders)
{
    const QNBHierarchyItemPtr root = named(QStringLiteral("root"));
    const QNBHierarchyItemPtr folder = named(QStringLiteral("folder"), true);
    const QNBHierarchyItemPtr file = named(QStringLiteral("file"));
    const QNBHierarchyItemPtr below = named(QStringLiteral("below"));
    const QNBHierarchyItemPtr hidden = named(QStringLiteral("hidden"));
    root->addChild(file);
    root->addChild(folder);
    folder->addChild(below);
    file->addChild(hidden);
    EXPECT_TRUE(root->hasChild(*folder));
    EXPECT_TRUE(root->hasChild(*file));
    EXPECT_TRUE(root->hasChild(*below));
    EXPECT_FALSE(root->hasChild(*hidden));
    EXPECT_FALSE(root->hasChild(*root));
    const QNBHierarchyItemPtr twin = QNBHierarchyItem::initWithDictionary(below->toDictionaryWithUID(true));
    EXPECT_TRUE(root->hasChild(*twin));
}

TEST(QNBHierarchyItem, SetChildReplacesTheWholeList)
{
    const QNBHierarchyItemPtr folder = named(QStringLiteral("f"), true);
    folder->addChild(named(QStringLiteral("a")));
    folder->addChild(named(QStringLiteral("b")));
    const QNBHierarchyItemPtr only = named(QStringLiteral("c"));
    folder->setChild(only);
    EXPECT_EQ(folder->children(), QNBHierarchyItem::Children{only});
}

TEST(QNBHierarchyItem, CopyOfAFolderSharesItsChildrenAndDropsColourContentAndPermissions)
{
    const QNBHierarchyItemPtr parent = named(QStringLiteral("p"), true);
    const QNBHierarchyItemPtr folder = named(QStringLiteral("f"), true);
    parent->addChild(folder);
    folder->addChild(named(QStringLiteral("c")));
    folder->setColorName(QStringLiteral("red"));
    folder->setContentFilename(QStringLiteral("letter.txt"));
    folder->setCustomPermissions(triple(7, 0, 0));
    const QNBHierarchyItemPtr copy = folder->copyWithZone();
    EXPECT_TRUE(copy->isDirectory());
    EXPECT_EQ(copy->filename(), QStringLiteral("f"));
    EXPECT_EQ(copy->children(), folder->children());
    EXPECT_EQ(copy->childAtIndex(0)->parent(), folder);
    EXPECT_EQ(copy->parent(), parent);
    EXPECT_NE(copy->uid(), folder->uid());
    EXPECT_EQ(copy->colorName(), QString());
    EXPECT_EQ(copy->contentFilename(), QString());
    EXPECT_EQ(copy->customPermissions(), triple(7, 6, 4));
}

TEST(QNBHierarchyItem, CopyKeepsTheKindEvenWhereTheChildrenSayOtherwise)
{
    EXPECT_TRUE(named(QStringLiteral("empty"), true)->copyWithZone()->isDirectory());
    const QNBHierarchyItemPtr file = named(QStringLiteral("file"));
    file->addChild(QNBHierarchyItem::init());
    EXPECT_FALSE(file->copyWithZone()->isDirectory());
}

TEST(QNBHierarchyItem, SettersStoreACopy)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    QNBHierarchyItem::Children children{QNBHierarchyItem::init()};
    QVariantMap permissions = triple(1, 2, 3);
    item->setChildren(children);
    item->setCustomPermissions(permissions);
    children.clear();
    permissions.clear();
    EXPECT_EQ(item->numberOfChildren(), 1u);
    EXPECT_EQ(item->customPermissions(), triple(1, 2, 3));
}

TEST(QNBHierarchyItem, ThePermissionsAreThereWithoutTheirKeys)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    EXPECT_EQ(item->permissionTriple(), (std::array<std::uint32_t, 3>{7, 6, 4}));
    item->setCustomPermissions({{QStringLiteral("g"), 9}});
    EXPECT_EQ(item->permissionTriple(), (std::array<std::uint32_t, 3>{0, 9, 0}));
}

TEST(QNBHierarchyItem, DestroyingAnyDepthNeedsNoStackForIt)
{
    QNBHierarchyItemPtr root = named(QStringLiteral("root"), true);
    QNBHierarchyItemPtr deepest = root;
    for (int depth = 0; depth < 1'000'000; ++depth) {
        const QNBHierarchyItemPtr child = QNBHierarchyItem::init();
        deepest->addChild(child);
        deepest = child;
    }
    const std::weak_ptr<QNBHierarchyItem> watched = deepest;
    deepest.reset();
    root.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(QNBHierarchyItem, DestroyingAParentLeavesAChildThatIsHeldElsewhere)
{
    const QNBHierarchyItemPtr kept = named(QStringLiteral("kept"), true);
    kept->addChild(named(QStringLiteral("below")));
    {
        const QNBHierarchyItemPtr parent = QNBHierarchyItem::init();
        parent->addChild(kept);
    }
    ASSERT_EQ(kept->numberOfChildren(), 1u);
    EXPECT_EQ(kept->childAtIndex(0)->filename(), QStringLiteral("below"));
}
