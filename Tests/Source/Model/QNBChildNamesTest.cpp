// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBChildNames.h"

#include "Source/Model/QNBUniqueName.h"

#include <QStringList>
#include <array>
#include <gtest/gtest.h>
#include <random>

namespace {

QNBHierarchyItemPtr file(const QString &name)
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, false, nullptr));
}

/// With files "0", "1" … in it.
QNBHierarchyItemPtr folderOf(std::size_t files)
{
    QNBHierarchyItemPtr folder = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("folder"), true, nullptr));
    for (std::size_t number = 0; number < files; ++number)
        folder->addChild(file(QString::number(number)));
    return folder;
}

QNBHierarchyItemPtr indexedFolder()
{
    QNBHierarchyItemPtr folder = folderOf(QNBHierarchyItem::fewestIndexedNames);
    folder->indexChildNames();
    return folder;
}

bool isTaken(const QNBHierarchyItem &folder, const QString &name)
{
    return folder.childNames()->isTaken(name, nullptr);
}

/// The unique name by a look at each of the names.
QString passOver(const QNBHierarchyItem &folder, const QString &base, const QString &extension,
                 const QNBHierarchyItem *forItem)
{
    QNBUniqueNameSearch search(base, extension);
    for (const QNBHierarchyItemPtr &child : folder.children()) {
        if (!forItem || !child->isEqualTo(*forItem))
            search.addTaken(child->filename());
    }
    return search.uniqueName();
}

} // namespace

TEST(QNBChildNames, OnlyManyAreIndexed)
{
    const QNBHierarchyItemPtr folder = folderOf(QNBHierarchyItem::fewestIndexedNames - 1);
    folder->indexChildNames();
    EXPECT_FALSE(folder->childNames());
    folder->addChild(file(QStringLiteral("last")));
    EXPECT_FALSE(folder->childNames()) << "nobody asked for it";
    folder->indexChildNames();
    ASSERT_TRUE(folder->childNames());
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("LAST")));
    folder->dropChildNames();
    EXPECT_FALSE(folder->childNames());
}

TEST(QNBChildNames, AreNotIndexedWithOneThatIsVeryLong)
{
    const QNBHierarchyItemPtr folder = folderOf(QNBHierarchyItem::fewestIndexedNames);
    const QNBHierarchyItemPtr item = file(QString(QNBChildNames::longest + 1, u'a'));
    folder->addChild(item);
    folder->indexChildNames();
    EXPECT_FALSE(folder->childNames());
    item->setFilename(QString(QNBChildNames::longest, u'a'));
    folder->indexChildNames();
    ASSERT_TRUE(folder->childNames());
    item->setFilename(QString(QNBChildNames::longest + 1, u'b'));
    EXPECT_TRUE(isTaken(*folder, QString(QNBChildNames::longest + 1, u'B')));
}

TEST(QNBChildNames, FollowEveryEdit)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr item = file(QStringLiteral("New.txt"));
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("new.TXT")));
    folder->addChildAfterExistingChild(item, folder->childAtIndex(3));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("new.TXT")));
    EXPECT_FALSE(folder->childNames()->isTaken(QStringLiteral("new.TXT"), item.get()));
    item->setFilename(QStringLiteral("Other"));
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("new.TXT")));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("other")));
    folder->removeChild(item);
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("other")));
    EXPECT_TRUE(folder->childNames());
}

TEST(QNBChildNames, WhatWasRemovedNoLongerCounts)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr item = folder->childAtIndex(0);
    folder->removeChild(item);
    ASSERT_EQ(item->parent(), folder);
    item->setFilename(QStringLiteral("1"));
    item->setFilename(QStringLiteral("new"));
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("new")));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("1"))) << "that of another";
    folder->addChild(item);
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("new")));
}

TEST(QNBChildNames, AChildThatStandsThereTwiceLeavesAsOne)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr item = folder->childAtIndex(0);
    folder->addChild(item);
    item->setFilename(QStringLiteral("twice"));
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("0")));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("twice")));
    folder->removeChild(item);
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("twice")));
    item->setFilename(QStringLiteral("0"));
    EXPECT_FALSE(isTaken(*folder, QStringLiteral("0")));
}

TEST(QNBChildNames, NothingIsCalledNothing)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr item = file({});
    folder->addChild(item);
    EXPECT_FALSE(isTaken(*folder, {}));
    item->setFilename(QStringLiteral("something"));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("something")));
}

TEST(QNBChildNames, AreDroppedWithTheListOfChildren)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    folder->setChildren(QNBHierarchyItem::Children(folder->children()));
    EXPECT_FALSE(folder->childNames());
    folder->indexChildNames();
    folder->setChild(file(QStringLiteral("only")));
    EXPECT_FALSE(folder->childNames());
}

TEST(QNBChildNames, AreDroppedWhenAChildGetsAnotherParent)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr other = folderOf(0);
    const QNBHierarchyItemPtr shared = folder->childAtIndex(0);
    other->addChild(shared);
    EXPECT_FALSE(folder->childNames());
    folder->indexChildNames();
    EXPECT_FALSE(folder->childNames()) << "it would not hear of the child's names";
    // It never was in there, which makes that its parent all the same.
    const QNBHierarchyItemPtr anotherFolder = indexedFolder();
    other->removeChild(anotherFolder->childAtIndex(0));
    EXPECT_FALSE(anotherFolder->childNames());
}

TEST(QNBChildNames, AreNotIndexedInACopyThatSharesThem)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    const QNBHierarchyItemPtr copy = folder->copyWithZone();
    EXPECT_FALSE(copy->childNames());
    copy->indexChildNames();
    EXPECT_FALSE(copy->childNames());
    folder->childAtIndex(0)->setFilename(QStringLiteral("new"));
    EXPECT_TRUE(isTaken(*folder, QStringLiteral("new")));
    EXPECT_EQ(uniqueNameForLevel(*copy, QStringLiteral("new"), nullptr), u"new-1");
}

TEST(QNBChildNames, HighNumbersAreFoundAsWell)
{
    const QNBHierarchyItemPtr folder = indexedFolder();
    for (int number = 0; number < 120; ++number) {
        const QString name = uniqueNameForFilename(QStringLiteral("a.txt"), *folder, nullptr);
        EXPECT_EQ(name, number == 0 ? QStringLiteral("a.txt") : QStringLiteral("a-%1.txt").arg(number));
        folder->addChild(file(name));
    }
    EXPECT_TRUE(folder->childNames());
}

/// Whatever is done to two folders that share items now and then, the names found are those of the pass.
TEST(QNBChildNames, AreThoseOfAPassAfterRandomEdits)
{
    std::mt19937 random(20'261'121);
    const auto below = [&random](std::size_t bound) { return random() % bound; };
    const QStringList words{QStringLiteral("a"),      QStringLiteral("A"),    QStringLiteral("ß"),
                            QStringLiteral("ẞ"),      QStringLiteral("İ"),    QStringLiteral("I"),
                            QStringLiteral("\u212A"), QStringLiteral("k"),    QStringLiteral("Σ"),
                            QStringLiteral("ς"),      QString(QChar(0xD801)), QString()};
    const auto anyName = [&] {
        const QString word = words.at(qsizetype(below(std::size_t(words.size()))));
        const QString number = below(4) == 0 ? QString() : QString::number(below(90));
        return word + (below(2) ? QStringLiteral("-") : QString()) + number +
               (below(3) ? QString() : QStringLiteral(".Txt"));
    };
    const std::array<QNBHierarchyItemPtr, 2> folders{folderOf(600), folderOf(600)};
    std::array<QNBHierarchyItem::Children, 2> removedFrom{folderOf(1)->children(), folderOf(1)->children()};
    const auto anyOf = [&](const QNBHierarchyItem::Children &items) { return items[below(items.size())]; };

    constexpr int rounds = 6'000;
    int indexed = 0;
    int clashes = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::size_t which = below(2);
        const QNBHierarchyItemPtr &folder = folders[which];
        QNBHierarchyItem::Children &removed = removedFrom[which];
        const QNBHierarchyItemPtr child = anyOf(folder->children());
        const std::size_t action = below(1000);
        if (action < 400) {
            child->setFilename(anyName());
        } else if (action < 550) {
            folder->addChildAfterExistingChild(below(2) ? anyOf(removed) : file(anyName()), child);
        } else if (action < 600) {
            folder->addChild(file(anyName()));
        } else if (action < 750 && folder->numberOfChildren() > QNBHierarchyItem::fewestIndexedNames) {
            folder->removeChild(child);
            removed.push_back(child);
        } else if (action < 804) {
            anyOf(removed)->setFilename(anyName());
        } else if (action < 810) {
            // From one to the other, or into both.
            if (below(2))
                folder->removeChild(child);
            folders[1 - which]->addChild(child);
        } else if (action < 820) {
            folder->addChild(child);
        } else if (action < 822) {
            folder->removeChild(anyOf(removed));
        } else if (action < 832) {
            // Each once, with this parent.
            QNBHierarchyItem::Children anew;
            for (std::size_t count = 0; count < 600; ++count)
                anew.push_back(file(anyName()));
            folder->setChildren({});
            for (const QNBHierarchyItemPtr &item : anew)
                folder->addChild(item);
        } else if (action < 840) {
            folder->dropChildNames();
        }
        folder->indexChildNames();

        for (const QNBHierarchyItemPtr &looked : folders) {
            indexed += looked->childNames() != nullptr;
            const std::array<QString, 3> bases{anyName(), anyOf(looked->children())->filename(),
                                               anyOf(removed)->filename()};
            const QString &base = bases[below(bases.size())];
            const QString extension = below(2) ? QString() : QStringLiteral("tXT");
            const QNBHierarchyItemPtr forItem = below(2) ? anyOf(looked->children()) : nullptr;
            const QString expected = passOver(*looked, base, extension, forItem.get());
            clashes += expected != base + (extension.isEmpty() ? QString() : u'.' + extension);
            ASSERT_EQ(uniqueNameForLevel(*looked, base, forItem.get(), extension), expected)
                << "round " << round << ", base " << qPrintable(base);
        }
    }
    EXPECT_GT(indexed, rounds / 2) << "hardly ever is there an index";
    EXPECT_GT(clashes, rounds / 2) << "the names hardly ever clash";
}
