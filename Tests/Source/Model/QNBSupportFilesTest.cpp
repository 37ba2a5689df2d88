// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBSupportFiles.h"

#include "Source/Model/QNBPresetRecord.h"
#include "Tests/Platform/Files/InterveningLayer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

QNBHierarchyItemPtr itemNaming(const QString &name, bool isFolder, const QString &contentFilename = {})
{
    const QNBHierarchyItemPtr made = QNBHierarchyItem::initWithDictionary(
        QNBHierarchyItem::itemDictionaryWithFilename(name, isFolder, nullptr));
    made->setContentFilename(contentFilename);
    return made;
}

class QNBSupportFilesTest : public ::testing::Test
{
protected:
    QNBSupportFilesTest()
    {
        write(defaults + QStringLiteral("/Scripts/Say.sh"), "#!/bin/sh\n");
        ::chmod(QFile::encodeName(defaults + QStringLiteral("/Scripts/Say.sh")).constData(), 0555);
        write(defaults + QStringLiteral("/File Content/Client/Brief.md"), "brief");
    }

    static void write(const QString &path, const QByteArray &bytes)
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray read(const QString &path) const
    {
        QFile file(support + u'/' + path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("nothing");
    }
    Result<> copyMissing(const QStringList &paths) const
    {
        return QNBSupportFiles::copyMissing(paths, defaults, support);
    }

    QTemporaryDir home;
    const QString defaults = home.filePath(QStringLiteral("defaults"));
    const QString support = home.filePath(QStringLiteral("data/Quenby"));
    const QString brief = QStringLiteral("File Content/Client/Brief.md");
    const QString script = QStringLiteral("Scripts/Say.sh");
};

} // namespace

TEST_F(QNBSupportFilesTest, APresetNamesEachContentFileOfItsFilesOnceAndItsScript)
{
    const QNBHierarchyItemPtr root = itemNaming({}, true);
    const QNBHierarchyItemPtr folder =
        itemNaming(QStringLiteral("folder"), true, QStringLiteral("of a folder"));
    root->addChild(itemNaming(QStringLiteral("a"), false, QStringLiteral("Client/Brief.md")));
    root->addChild(folder);
    folder->addChild(itemNaming(QStringLiteral("b"), false, QStringLiteral("Client/Invoice.html")));
    folder->addChild(itemNaming(QStringLiteral("c"), false, QStringLiteral("Client/Brief.md")));
    folder->addChild(itemNaming(QStringLiteral("d"), false));
    QNBPresetRecord preset;
    EXPECT_EQ(QNBSupportFiles::namedBy(preset), QStringList());
    preset.setFileHierarchy(root);
    preset.setValueForKey(QStringLiteral("Say.sh"), QNBPresetKey::scriptFile);
    EXPECT_EQ(QNBSupportFiles::namedBy(preset),
              (QStringList{brief, QStringLiteral("File Content/Client/Invoice.html"),
                           QStringLiteral("Scripts/Say.sh")}));
}

TEST_F(QNBSupportFilesTest, WhatIsMissingIsCopiedWithItsModeAndCanBeChangedByItsOwner)
{
    const Result<> copied = copyMissing({brief, script});
    ASSERT_TRUE(copied) << qPrintable(copied.error);
    EXPECT_EQ(read(brief), "brief");
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(support + u'/' + script).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & ACCESSPERMS, 0755U);
    EXPECT_EQ(QDir(support + QStringLiteral("/Scripts"))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList(QStringLiteral("Say.sh")))
        << "and nothing beside it";
}

TEST_F(QNBSupportFilesTest, WhatIsThereStaysAsItIs)
{
    write(support + u'/' + brief, "mine");
    ASSERT_TRUE(QDir().mkpath(support + QStringLiteral("/Scripts")));
    const QString nowhere = home.filePath(QStringLiteral("nowhere"));
    ASSERT_TRUE(QFile::link(nowhere, support + u'/' + script));
    EXPECT_TRUE(copyMissing({brief, script}));
    EXPECT_EQ(read(brief), "mine");
    EXPECT_TRUE(QFileInfo(support + u'/' + script).isSymLink());
    EXPECT_FALSE(QFileInfo::exists(nowhere)) << "the link was not followed";
}

TEST_F(QNBSupportFilesTest, WhatAppearsMeanwhileStaysAsItIs)
{
    InterveningLayer layer;
    layer.before("renameToFree", 0, [this] { write(support + u'/' + brief, "mine"); });
    const Result<> copied = QNBSupportFiles::copyMissing({brief}, defaults, support, layer);
    EXPECT_TRUE(copied) << qPrintable(copied.error);
    EXPECT_EQ(layer.made().count("renameToFree"), 1);
    EXPECT_EQ(read(brief), "mine");
}

TEST_F(QNBSupportFilesTest, NothingIsPutIntoAFolderThatIsALink)
{
    const QString elsewhere = home.filePath(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QDir().mkpath(elsewhere));
    ASSERT_TRUE(QDir().mkpath(support));
    ASSERT_TRUE(QFile::link(elsewhere, support + QStringLiteral("/File Content")));
    const Result<> copied = copyMissing({brief, script});
    EXPECT_FALSE(copied);
    EXPECT_TRUE(copied.error.startsWith(brief)) << qPrintable(copied.error);
    EXPECT_FALSE(copied.error.contains(u'\n')) << "the other one was copied: " << qPrintable(copied.error);
    EXPECT_TRUE(QDir(elsewhere).isEmpty());
    EXPECT_EQ(read(script), "#!/bin/sh\n");
}

TEST_F(QNBSupportFilesTest, PathsThatLeadOutAreRefused)
{
    write(home.filePath(QStringLiteral("secret")), "secret");
    for (const QString &path : {QStringLiteral("Scripts/../../secret"), QStringLiteral("/etc/hostname"),
                                QStringLiteral("Scripts/./Say.sh"), QStringLiteral("Scripts//Say.sh"),
                                QStringLiteral("Scripts/Say.sh") + QChar(u'\0')})
        EXPECT_FALSE(copyMissing({path})) << qPrintable(path);
    EXPECT_FALSE(QFileInfo::exists(support));
}

TEST_F(QNBSupportFilesTest, EachFileThatStaysMissingHasItsLineInTheFailure)
{
    write(home.filePath(QStringLiteral("data/Quenby/Scripts")), "a file in the way");
    const Result<> copied = copyMissing({QStringLiteral("File Content/unknown"), script, brief});
    EXPECT_FALSE(copied);
    const QStringList lines = copied.error.split(u'\n');
    ASSERT_EQ(lines.size(), 2) << qPrintable(copied.error);
    EXPECT_TRUE(lines.constFirst().startsWith(QStringLiteral("File Content/unknown: ")));
    EXPECT_TRUE(lines.constLast().startsWith(script + QStringLiteral(": ")));
    EXPECT_EQ(read(brief), "brief");
}
