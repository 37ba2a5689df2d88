// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBHierarchyDepth.h"

#include "Platform/Preferences/Preferences.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QNBHierarchyItemPtr folder()
{
    return QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(QStringLiteral("folder"), true, nullptr));
}

/// A folder with so many folders one inside the other; the innermost goes to \a innermost.
QNBHierarchyItemPtr nestedItem(int depth, QNBHierarchyItemPtr *innermost = nullptr)
{
    const QNBHierarchyItemPtr root = folder();
    QNBHierarchyItemPtr last = root;
    for (int level = 0; level < depth; ++level) {
        const QNBHierarchyItemPtr inside = folder();
        last->addChild(inside);
        last = inside;
    }
    if (innermost)
        *innermost = last;
    return root;
}

/// Whether a preset with this tree can be stored, and is found again as it was.
bool canBeStored(const QNBHierarchyItemPtr &root)
{
    const QTemporaryDir home;
    const Preferences::Options options{.folder = home.path(), .lockFolder = home.path()};
    QNBSettings settings;
    settings.presets = {std::make_shared<QNBPresetRecord>()};
    settings.presets.constFirst()->setFileHierarchy(root);
    Preferences preferences(QNBProductIdentifier(), options);
    if (!QNBSettingsStore::write(preferences, settings).ok)
        return false;
    QNBSettings found;
    Preferences readAgain(QNBProductIdentifier(), options);
    EXPECT_TRUE(QNBSettingsStore::read(readAgain, std::nullopt, found));
    return found.presets.size() == 1 &&
           QNBHierarchyDepth::belowItem(*found.presets.constFirst()->fileHierarchy()) ==
               QNBHierarchyDepth::belowItem(*root);
}

} // namespace

TEST(QNBHierarchyDepth, CountsParentsAndTheLongestWayDown)
{
    QNBHierarchyItemPtr innermost;
    const QNBHierarchyItemPtr root = nestedItem(3, &innermost);
    root->addChild(folder());
    EXPECT_EQ(QNBHierarchyDepth::ofItem(*root), 0);
    EXPECT_EQ(QNBHierarchyDepth::ofItem(*innermost), 3);
    EXPECT_EQ(QNBHierarchyDepth::belowItem(*root), 3);
    EXPECT_EQ(QNBHierarchyDepth::belowItem(*innermost), 0);
}

TEST(QNBHierarchyDepth, TheDeepestTreeIsStoredAndFoundAgain)
{
    EXPECT_TRUE(canBeStored(nestedItem(QNBHierarchyDepth::deepest)));
}

TEST(QNBHierarchyDepth, OneLevelMoreCouldNotBeStored)
{
    EXPECT_FALSE(canBeStored(nestedItem(QNBHierarchyDepth::deepest + 1)));
}
