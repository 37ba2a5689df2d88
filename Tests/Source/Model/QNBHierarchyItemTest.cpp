// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBHierarchyItem.h"

#include "Shared/Source/CocoaCryptoHashing.h"

#include <QRegularExpression>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/time.h>

namespace {

QVariantMap permissionDigits(int u, int g, int o)
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

qint64 microsecondsNow()
{
    timeval now{};
    gettimeofday(&now, nullptr);
    return qint64(now.tv_sec) * 1'000'000 + now.tv_usec;
}

/// Whether the digest of \a before, a time in \a begin to \a end, "_", \a number and \a behind is \a uid.
bool isDigestOfSeed(const QString &uid, const QString &before, qint64 begin, qint64 end, long number,
                    const QString &behind)
{
    for (qint64 time = begin; time <= end; ++time) {
        const QString seed = QStringLiteral("%1%2%3_%4%5")
                                 .arg(before, QString::number(time / 1'000'000),
                                      QString::number(time % 1'000'000), QString::number(number), behind);
        if (CocoaCryptoHashing::sha1HexHash(seed) == uid)
            return true;
    }
    return false;
}

/// Ends the process with 0 if the first item of its life, and no later one, set going the random numbers from
/// the time in seconds.
[[noreturn]] void exitAfterFirstItems()
{
    const qint64 begin = microsecondsNow() / 1'000'000;
    QNBHierarchyItem::init();
    const qint64 end = microsecondsNow() / 1'000'000;
    const long second = random();
    QNBHierarchyItem::init();
    const long fourth = random();
    for (qint64 seconds = begin; seconds <= end; ++seconds) {
        srandom(static_cast<unsigned>(seconds));
        random();
        const bool isSecond = random() == second;
        random();
        if (isSecond && random() == fourth)
            std::_Exit(0);
    }
    std::_Exit(1);
}

} // namespace

TEST(QNBHierarchyItem, TheUidIsTheDigestOfNameKindTimeRandomNumberAndNumberOfChildren)
{
    // The first item of a process sets the random numbers going, once.
    QNBHierarchyItem::init();
    // Of an item without a name: "0_", seconds and microseconds without anything between, "_", the random
    // number, "+0".
    srandom(7);
    const long number = random();
    srandom(7);
    qint64 begin = microsecondsNow();
    const QString plain = QNBHierarchyItem::init()->uid();
    EXPECT_TRUE(
        isDigestOfSeed(plain, QStringLiteral("0_"), begin, microsecondsNow(), number, QStringLiteral("+0")));

    // Read from a dictionary, the folder has its name and its children by then.
    const QVariantMap jobs =
        QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("Jöbs"), true, nullptr);
    QVariantMap withChildren = jobs;
    withChildren.insert(QStringLiteral("children"), QVariantList{QVariantMap(), QVariantMap()});
    srandom(8);
    begin = microsecondsNow();
    const QString folder = QNBHierarchyItem::initWithDictionary(withChildren)->uid();
    const qint64 end = microsecondsNow();
    // How many are drawn for the children before is not said.
    srandom(8);
    bool isFound = false;
    for (int draw = 0; draw < 6 && !isFound; ++draw)
        isFound =
            isDigestOfSeed(folder, QStringLiteral("Jöbs1_"), begin, end, random(), QStringLiteral("+2"));
    EXPECT_TRUE(isFound);
}

TEST(QNBHierarchyItem, TheRandomNumbersAreSetGoingOnceAtTheFirstItemFromTheTimeInSeconds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitAfterFirstItems(), ::testing::ExitedWithCode(0), "");
}

TEST(QNBHierarchyItem, EmptyDictionaryGivesAFileWithDefaultsAndAFreshUid)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithDictionary(QVariantMap());
    EXPECT_EQ(item->filename(), QString());
    EXPECT_FALSE(item->isDirectory());
    EXPECT_EQ(item->customPermissions(), permissionDigits(7, 6, 4));
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

TEST(QNBHierarchyItem, InitWithParentKnowsItsParentWhichDoesNotKnowIt)
{
    const QNBHierarchyItemPtr parent = named(QStringLiteral("p"), true);
    const QNBHierarchyItemPtr item = QNBHierarchyItem::initWithParent(parent);
    EXPECT_EQ(item->parent(), parent);
    EXPECT_EQ(parent->numberOfChildren(), 0U);
    EXPECT_EQ(item->numberOfChildren(), 0U);
    EXPECT_FALSE(item->isDirectory());
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

TEST(QNBHierarchyItem, RemoveChildIsByIdentity)
{
    const QNBHierarchyItemPtr folder = named(QStringLiteral("f"), true);
    const QNBHierarchyItemPtr child = named(QStringLiteral("c"));
    const QNBHierarchyItemPtr twin = QNBHierarchyItem::initWithDictionary(child->toDictionaryWithUID(true));
    ASSERT_TRUE(twin->isEqualTo(*child));
    folder->addChild(child);
    folder->removeChild(twin);
    EXPECT_EQ(folder->children(), QNBHierarchyItem::Children{child}) << "that one is no child";
    folder->addChild(twin);
    folder->removeChild(twin);
    EXPECT_EQ(folder->children(), QNBHierarchyItem::Children{child});
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
    folder->setCustomPermissions(permissionDigits(7, 0, 0));
    const QNBHierarchyItemPtr copy = folder->copyWithZone();
    EXPECT_TRUE(copy->isDirectory());
    EXPECT_EQ(copy->filename(), QStringLiteral("f"));
    EXPECT_EQ(copy->children(), folder->children());
    EXPECT_EQ(copy->childAtIndex(0)->parent(), folder);
    EXPECT_EQ(copy->parent(), parent);
    EXPECT_NE(copy->uid(), folder->uid());
    EXPECT_EQ(copy->colorName(), QString());
    EXPECT_EQ(copy->contentFilename(), QString());
    EXPECT_EQ(copy->customPermissions(), permissionDigits(7, 6, 4));
}

TEST(QNBHierarchyItem, CopyKeepsTheKindEvenWhereTheChildrenSayOtherwise)
{
    EXPECT_TRUE(named(QStringLiteral("empty"), true)->copyWithZone()->isDirectory());
    const QNBHierarchyItemPtr file = named(QStringLiteral("file"));
    file->addChild(QNBHierarchyItem::init());
    EXPECT_FALSE(file->copyWithZone()->isDirectory());
}

TEST(QNBHierarchyItem, WhatWasSetDoesNotFollowTheListAndMapOfTheCaller)
{
    const QNBHierarchyItemPtr item = QNBHierarchyItem::init();
    QNBHierarchyItem::Children children{QNBHierarchyItem::init()};
    QVariantMap permissions = permissionDigits(1, 2, 3);
    item->setChildren(children);
    item->setCustomPermissions(permissions);
    children.clear();
    permissions.clear();
    EXPECT_EQ(item->numberOfChildren(), 1u);
    EXPECT_EQ(item->customPermissions(), permissionDigits(1, 2, 3));
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
