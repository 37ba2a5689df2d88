// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileOperations.h"

#include "FileFixture.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

class FileOperationsTest : public FileFixture
{
protected:
    QByteArray at(const QByteArray &name) const { return root().toUtf8() + '/' + name; }

    void makeFolder(const QByteArray &name) const
    {
        ASSERT_EQ(::mkdir(at(name).constData(), S_IRWXU), 0) << name.constData();
    }
    void makeFile(const QByteArray &name, mode_t mode, const QByteArray &content = "content") const
    {
        put(QFile::decodeName(at(name)), content);
        ASSERT_EQ(::chmod(at(name).constData(), mode), 0);
    }
    void makeLink(const QByteArray &name, const QByteArray &text) const
    {
        ASSERT_EQ(::symlink(text.constData(), at(name).constData()), 0);
    }
    mode_t modeOf(const QByteArray &name) const
    {
        struct stat information = {};
        EXPECT_EQ(::lstat(at(name).constData(), &information), 0) << name.constData();
        return information.st_mode & 07777;
    }
    QByteArray linkText(const QByteArray &name) const
    {
        QByteArray text(256, '\0');
        text.resize(std::max<ssize_t>(0, ::readlink(at(name).constData(), text.data(), 256)));
        return text;
    }
    QStringList names() const { return namesIn(root()); }
};

} // namespace

TEST_F(FileOperationsTest, ALinkThatLeadsNowhereExists)
{
    EXPECT_FALSE(FileOperations::exists(at("link")));
    makeLink("link", "nowhere");
    EXPECT_TRUE(FileOperations::exists(at("link")));
}

TEST_F(FileOperationsTest, MakesOneFolderAndNoneAbove)
{
    EXPECT_TRUE(FileOperations::createDirectory(at("one"), S_IRWXU));
    EXPECT_EQ(modeOf("one"), 0700u);
    const Result<> created = FileOperations::createDirectory(at("two/three"));
    EXPECT_FALSE(created);
    EXPECT_EQ(created.error,
              QStringLiteral("cannot make the folder %1/two/three: No such file or directory").arg(root()));
    EXPECT_FALSE(FileOperations::createDirectory(at("one"))) << "it is there";
}

TEST_F(FileOperationsTest, RemovesWithoutFollowingLinks)
{
    makeFolder("elsewhere");
    makeFile("elsewhere/file", 0600);
    makeFolder("folder");
    makeFolder("folder/inner");
    makeFile("folder/inner/file", 0400);
    makeLink("folder/inner/link", "../../elsewhere");
    makeLink("link", "elsewhere");
    EXPECT_TRUE(FileOperations::removeItem(at("folder")));
    EXPECT_TRUE(FileOperations::removeItem(at("link")));
    EXPECT_EQ(names(), QStringList{QStringLiteral("elsewhere")});
    EXPECT_TRUE(FileOperations::exists(at("elsewhere/file")));
    EXPECT_FALSE(FileOperations::removeItem(at("folder"))) << "it is gone";
}

TEST_F(FileOperationsTest, CopiesATreeWithItsModesAndLinks)
{
    makeFolder("from");
    makeFolder("from/folder");
    makeFile("from/folder/program", 0755, "#!/bin/sh\n");
    makeFile("from/folder/private", 0600);
    makeFile("from/folder/protected", 0444);
    makeFile("from/folder/privileged", 06755);
    makeLink("from/link", "folder/program");
    makeLink("from/dangling", "/nowhere");
    ASSERT_EQ(::chmod(at("from/folder").constData(), 0555), 0);

    EXPECT_TRUE(FileOperations::copyItem(at("from"), at("to")));
    EXPECT_EQ(modeOf("to/folder"), 0755u) << "its owner may change it";
    EXPECT_EQ(modeOf("to/folder/program"), 0755u);
    EXPECT_EQ(modeOf("to/folder/private"), 0600u);
    EXPECT_EQ(modeOf("to/folder/protected"), 0644u);
    EXPECT_EQ(modeOf("to/folder/privileged"), 0755u);
    EXPECT_EQ(contentOf(in(QStringLiteral("to/folder/program"))), "#!/bin/sh\n");
    EXPECT_EQ(linkText("to/link"), "folder/program");
    EXPECT_EQ(linkText("to/dangling"), "/nowhere");
    EXPECT_EQ(names(), (QStringList{QStringLiteral("from"), QStringLiteral("to")}));
    ASSERT_EQ(::chmod(at("from/folder").constData(), 0755), 0);
}

TEST_F(FileOperationsTest, CopiesAFileAndALinkToo)
{
    makeFile("file", 0640);
    makeLink("link", "file");
    EXPECT_TRUE(FileOperations::copyItem(at("file"), at("copied file")));
    EXPECT_TRUE(FileOperations::copyItem(at("link"), at("copied link")));
    EXPECT_EQ(modeOf("copied file"), 0640u);
    EXPECT_EQ(linkText("copied link"), "file");
}

TEST_F(FileOperationsTest, ACopyThatFailsLeavesNothing)
{
    makeFolder("from");
    makeFile("from/file", 0600);
    makeFolder("from/folder");
    ASSERT_EQ(::mkfifo(at("from/folder/fifo").constData(), 0600), 0);
    const Result<> copied = FileOperations::copyItem(at("from"), at("to"));
    EXPECT_FALSE(copied);
    EXPECT_EQ(copied.error,
              QStringLiteral("cannot copy %1/from/folder/fifo: Operation not supported").arg(root()));
    EXPECT_EQ(names(), QStringList{QStringLiteral("from")});

    EXPECT_EQ(FileOperations::copyItem(at("missing"), at("to")).error,
              QStringLiteral("cannot copy %1/missing: No such file or directory").arg(root()));
    EXPECT_FALSE(FileOperations::copyItem(at("from/file"), at("no folder/to")));
    EXPECT_EQ(names(), QStringList{QStringLiteral("from")});
}

TEST_F(FileOperationsTest, ACopyReplacesAndFollowsNothing)
{
    makeFolder("from");
    makeFile("from/file", 0600);
    makeFolder("elsewhere");
    makeLink("to", "elsewhere");
    makeLink("dangling", "elsewhere/planted");
    EXPECT_FALSE(FileOperations::copyItem(at("from"), at("to")));
    EXPECT_FALSE(FileOperations::copyItem(at("from"), at("dangling")));
    EXPECT_FALSE(FileOperations::copyItem(at("from"), at("elsewhere")));
    EXPECT_EQ(namesIn(in(QStringLiteral("elsewhere"))), QStringList());
    EXPECT_EQ(linkText("to"), "elsewhere");
}

TEST_F(FileOperationsTest, NamesAreBytes)
{
    for (const QByteArray &name : {QByteArrayLiteral("-rf"), QByteArrayLiteral("two\nlines"),
                                   QByteArrayLiteral("100%s"), QByteArrayLiteral("\xff\xe9 \xc3")}) {
        EXPECT_TRUE(FileOperations::createDirectory(at(name)));
        EXPECT_TRUE(FileOperations::createDirectory(at(name) + "/" + name));
        EXPECT_TRUE(FileOperations::copyItem(at(name), at("copy")));
        EXPECT_TRUE(FileOperations::exists(at("copy/" + name)));
        EXPECT_TRUE(FileOperations::removeItem(at(name)));
        EXPECT_TRUE(FileOperations::removeItem(at("copy")));
        EXPECT_EQ(names(), QStringList());
    }
}
