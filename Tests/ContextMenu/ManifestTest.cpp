// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/Manifest.h"

#include "Tests/ContextMenu/MenuHome.h"

#include <QDir>
#include <QFile>

namespace {

class ManifestTest : public MenuHome
{
};

const QString manager = QStringLiteral("dolphin");

} // namespace

TEST_F(ManifestTest, WhatIsSavedIsReadBack)
{
    Manifest::Entries entries;
    entries.files.insert(QStringLiteral("/a \u6f22"), {QStringLiteral("1"), QStringLiteral("2")});
    entries.sharedFiles.insert(QStringLiteral("/b"), QString());
    Manifest list(manifest());
    EXPECT_FALSE(list.isRegistered());
    list.setEntries(manager, entries);
    ASSERT_TRUE(list.save());

    const Manifest again(manifest());
    EXPECT_TRUE(again.isRegistered());
    EXPECT_EQ(again.fileManagers(), QStringList(manager));
    EXPECT_EQ(again.entries(manager), entries);
    EXPECT_EQ(again.entries(QStringLiteral("nemo")), Manifest::Entries());
}

TEST_F(ManifestTest, RemovedItLeavesNothing)
{
    const auto before = contentOfHome();
    Manifest list(manifest());
    ASSERT_TRUE(list.save());
    EXPECT_TRUE(QFile::exists(manifest()));
    ASSERT_TRUE(list.remove());
    EXPECT_FALSE(list.isRegistered());
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ManifestTest, FoldersThatAreMadeLaterGoWhenTheyAreEmpty)
{
    const QString folder = data(QStringLiteral("one/two/three"));
    Manifest list(manifest());
    list.noteMissingFolders(folder);
    ASSERT_TRUE(list.save());
    makeFolder(folder);
    put(data(QStringLiteral("one/theirs")), "");

    Manifest again(manifest());
    again.removeEmptyFolders();
    EXPECT_FALSE(QFile::exists(data(QStringLiteral("one/two"))));
    EXPECT_TRUE(QFile::exists(data(QStringLiteral("one/theirs"))));
    ASSERT_TRUE(QFile::remove(data(QStringLiteral("one/theirs"))));
    again.removeEmptyFolders();
    EXPECT_FALSE(QFile::exists(data(QStringLiteral("one"))));
}

TEST_F(ManifestTest, FoldersThatWereThereStay)
{
    const QString folder = makeFolder(data(QStringLiteral("theirs")));
    Manifest list(manifest());
    list.noteMissingFolders(folder);
    list.removeEmptyFolders();
    EXPECT_TRUE(QFile::exists(folder));
}

TEST_F(ManifestTest, ALinkThatTookAFoldersPlaceStays)
{
    const QString folder = data(QStringLiteral("ours"));
    Manifest list(manifest());
    list.noteMissingFolders(folder);
    const QString elsewhere = makeFolder(in(QStringLiteral("elsewhere")));
    ASSERT_TRUE(QFile::link(elsewhere, folder));
    list.removeEmptyFolders();
    EXPECT_TRUE(QFile::exists(elsewhere));
    EXPECT_TRUE(QFileInfo(folder).isSymLink());
}
