// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"
#include "Platform/Files/FolderLayer.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <functional>

class UndoTest : public CreationFixture
{
protected:
    QNBHierarchyItemPtr tree() const
    {
        put(contentFolder() + QStringLiteral("/content"), "content");
        return Items::root({
            Items::folder(QStringLiteral("there"), {Items::file(QStringLiteral("in there"))}),
            Items::folder(
                QStringLiteral("new"),
                {Items::file(QStringLiteral("file"), {QStringLiteral("640"), {}, QStringLiteral("content")}),
                 Items::folder(QStringLiteral("empty"))}),
            Items::file(QStringLiteral("last")),
        });
    }
    void SetUp() override
    {
        makeFolder(inTarget(QStringLiteral("there")));
        put(inTarget(QStringLiteral("there/mine")), "mine");
    }
};

TEST_F(UndoTest, RemovesWhatWasMadeAndOnlyThat)
{
    const auto before = DiskTree::paths(disk());
    const Creation::Record record = create(tree());
    const Creation::UndoOutcome outcome = Creation::undo(record);
    EXPECT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
    EXPECT_EQ(DiskTree::paths(disk()), before);
    EXPECT_FALSE(Creation::undo(record).succeeded);
}

TEST_F(UndoTest, WorksFromAStoredRecord)
{
    const auto before = DiskTree::paths(disk());
    const auto record = Creation::Record::fromVariant(create(tree()).toVariant());
    ASSERT_TRUE(record.has_value());
    EXPECT_TRUE(Creation::undo(*record).succeeded);
    EXPECT_EQ(DiskTree::paths(disk()), before);
}

TEST_F(UndoTest, RefusesIfAnythingWasChanged)
{
    const std::vector<std::pair<const char *, std::function<void()>>> changes = {
        {"bytes", [this] { put(inTarget(QStringLiteral("new/file")), "other!!"); }},
        {"size", [this] { put(inTarget(QStringLiteral("last")), "x"); }},
        {"mode of a file",
         [this] { QFile::setPermissions(inTarget(QStringLiteral("last")), QFile::ReadOwner); }},
        {"mode of a folder",
         [this] {
             QFile::setPermissions(inTarget(QStringLiteral("new/empty")), QFile::ReadOwner | QFile::ExeOwner);
         }},
        {"foreign file in a new folder", [this] { put(inTarget(QStringLiteral("new/empty/mine")), "mine"); }},
        {"renamed",
         [this] { QFile::rename(inTarget(QStringLiteral("last")), inTarget(QStringLiteral("LAST"))); }},
        {"removed", [this] { QFile::remove(inTarget(QStringLiteral("there/in there"))); }},
        {"replaced by an equal file",
         [this] {
             const QString path = inTarget(QStringLiteral("new/file"));
             QFile::copy(path, outside() + QStringLiteral("/copy"));
             QFile::remove(path);
             QFile::rename(outside() + QStringLiteral("/copy"), path);
         }},
        {"folder replaced by a link to it",
         [this] {
             QFile::rename(inTarget(QStringLiteral("new")), outside() + QStringLiteral("/new"));
             makeLink(inTarget(QStringLiteral("new")), outside() + QStringLiteral("/new"));
         }},
        {"target moved",
         [this] {
             QFile::rename(target(), outside() + QStringLiteral("/moved"));
             makeFolder(target());
         }},
    };
    for (const auto &[what, change] : changes) {
        const Creation::Record record = create(tree());
        change();
        const auto before = disk();
        const auto beforeOutside = DiskTree::read(outside());
        const Creation::UndoOutcome outcome = Creation::undo(record);
        EXPECT_FALSE(outcome.succeeded) << what;
        EXPECT_FALSE(outcome.error.isEmpty()) << what;
        EXPECT_EQ(disk(), before) << what;
        EXPECT_EQ(DiskTree::read(outside()), beforeOutside) << what;
        DiskTree::clear(target());
        DiskTree::clear(outside());
        SetUp();
    }
}

TEST_F(UndoTest, LeavesNoTraceInLockedFoldersThatItRefusesToRemove)
{
    const auto before = DiskTree::paths(disk());
    const Creation::Record record = create(Items::root(
        {Items::folder(QStringLiteral("locked"),
                       {Items::folder(QStringLiteral("inner"), {Items::file(QStringLiteral("file"))},
                                      {QStringLiteral("000"), {}, {}})},
                       {QStringLiteral("100"), {}, {}})}));
    put(inTarget(QStringLiteral("locked/foreign")), "mine");
    EXPECT_FALSE(Creation::undo(record).succeeded);
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(inTarget(QStringLiteral("locked"))).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0100u);
    ASSERT_EQ(::stat(QFile::encodeName(inTarget(QStringLiteral("locked/inner"))).constData(), &information),
              0);
    EXPECT_EQ(information.st_mode & 07777, 0u);
    {
        const OpenedFolder locked(inTarget(QStringLiteral("locked")));
        ASSERT_TRUE(QFile::remove(inTarget(QStringLiteral("locked/foreign"))));
    }
    EXPECT_TRUE(Creation::undo(record).succeeded);
    EXPECT_EQ(DiskTree::paths(disk()), before);
}

TEST_F(UndoTest, WhatCannotBeRemovedKeepsItsFoldersAndTheirModes)
{
    class Immutable : public FolderLayer
    {
    public:
        int unlinkat(int folder, const char *name, int flags) override
        {
            if (std::strcmp(name, "fixed") != 0)
                return FolderLayer::unlinkat(folder, name, flags);
            errno = EPERM;
            return -1;
        }
    } layer;
    const auto before = DiskTree::paths(disk());
    const Creation::Record record =
        create(Items::root({Items::file(QStringLiteral("file")),
                            Items::folder(QStringLiteral("locked"),
                                          {Items::folder(QStringLiteral("inner"),
                                                         {Items::file(QStringLiteral("fixed")),
                                                          Items::file(QStringLiteral("other"))},
                                                         {QStringLiteral("000"), {}, {}})},
                                          {QStringLiteral("100"), {}, {}})}));
    const Creation::UndoOutcome outcome = Creation::undo(record, layer);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(), ::testing::HasSubstr("“locked/inner/fixed” was left"));
    const auto left = disk();
    EXPECT_EQ(DiskTree::paths(left).size(), before.size() + 3);
    EXPECT_EQ(DiskTree::at(left, "locked").permissions(), 0100U);
    EXPECT_EQ(DiskTree::at(left, "locked/inner").permissions(), 0U);
    ASSERT_TRUE(outcome.rest.has_value());
    EXPECT_TRUE(Creation::undo(*outcome.rest).succeeded);
    EXPECT_EQ(DiskTree::paths(disk()), before);
}
