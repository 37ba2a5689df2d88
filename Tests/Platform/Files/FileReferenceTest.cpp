// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileCatalog.h"

#include "Tests/Platform/Files/FinderFixture.h"

#include <QFile>

#include <unistd.h>

namespace {

class FileReferenceTest : public FinderFixture
{
protected:
    static std::optional<FSRef> referenceTo(const QString &path)
    {
        return FileCatalog::reference(QFile::encodeName(path));
    }

    static struct stat statusOf(const QString &path)
    {
        struct stat information = {};
        EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &information), 0) << qPrintable(path);
        return information;
    }
};

} // namespace

TEST_F(FileReferenceTest, KnowsTheEntryByDiskNumberAndPath)
{
    const QString file = makeFile();
    const auto reference = referenceTo(file);
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->device, statusOf(file).st_dev);
    EXPECT_EQ(reference->number, statusOf(file).st_ino);
    EXPECT_EQ(reference->path, QFile::encodeName(file));
    EXPECT_FALSE(reference->isFolder());
    EXPECT_FALSE(reference->isLink());
    EXPECT_TRUE(FileCatalog::exists(*reference));
}

TEST_F(FileReferenceTest, NothingThereHasNone)
{
    const QString file = makeFile();
    EXPECT_FALSE(referenceTo(in(QStringLiteral("missing"))));
    EXPECT_FALSE(referenceTo(file + QStringLiteral("/below a file")));
    EXPECT_FALSE(referenceTo(file + QStringLiteral("/.")));
    EXPECT_FALSE(referenceTo(in(QStringLiteral("missing/../file"))));
    EXPECT_FALSE(referenceTo(in(QString(300, u'n'))));
    EXPECT_FALSE(referenceTo(QString()));
    EXPECT_FALSE(referenceTo(QStringLiteral("relative")));
    EXPECT_FALSE(FileCatalog::reference(QFile::encodeName(file) + QByteArray("\0x", 2)));
}

TEST_F(FileReferenceTest, ALinkIsItsOwnEntryAlsoWithASlashAfterIt)
{
    const QString folder = makeFolder();
    const QString link = makeLink(QStringLiteral("link"), folder);
    for (const QString &path : {link, link + u'/', link + QStringLiteral("///")}) {
        const auto reference = referenceTo(path);
        ASSERT_TRUE(reference);
        EXPECT_TRUE(reference->isLink()) << qPrintable(path);
        EXPECT_EQ(reference->path, QFile::encodeName(link));
    }
}

TEST_F(FileReferenceTest, DotsAreFollowedThroughLinksAsTheSystemDoes)
{
    makeFolder(QStringLiteral("deep/inside"));
    makeFile(QStringLiteral("deep/file"));
    makeFile(QStringLiteral("file"));
    makeLink(QStringLiteral("link"), QStringLiteral("deep/inside"));
    const auto reference = referenceTo(in(QStringLiteral("link/../file")));
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->path, QFile::encodeName(in(QStringLiteral("deep/file"))));
    EXPECT_EQ(referenceTo(in(QStringLiteral("link/.")))->path,
              QFile::encodeName(in(QStringLiteral("deep/inside"))));
    EXPECT_EQ(referenceTo(in(QStringLiteral("./deep//./inside/..")))->path,
              QFile::encodeName(in(QStringLiteral("deep"))));
    EXPECT_EQ(referenceTo(QStringLiteral("/../../proc"))->path, "/proc");
}

TEST_F(FileReferenceTest, NamesOfAnyBytesCanBeReferredTo)
{
    for (const char *name : {"a b", "\"quoted'", "new\nline", "50%", "-rf", "\xFF\xFE", "a:b", "..name"}) {
        const QByteArray path = QFile::encodeName(root()) + '/' + name;
        ASSERT_EQ(::mkdir(path.constData(), 0700), 0) << name;
        const auto reference = FileCatalog::reference(path);
        ASSERT_TRUE(reference) << name;
        EXPECT_EQ(reference->path, path);
        EXPECT_TRUE(reference->isFolder());
        ASSERT_EQ(::rmdir(path.constData()), 0);
    }
}

TEST_F(FileReferenceTest, TwoNamesOfOneFileAreTheSameEntry)
{
    const QString file = makeFile();
    const QString other = in(QStringLiteral("other"));
    ASSERT_EQ(::link(QFile::encodeName(file).constData(), QFile::encodeName(other).constData()), 0);
    EXPECT_EQ(*referenceTo(file), *referenceTo(other));
    EXPECT_FALSE(*referenceTo(file) == *referenceTo(root()));
}

TEST_F(FileReferenceTest, DoesNotMeanWhatTookThePlaceOfItsEntry)
{
    const QString file = makeFile();
    const auto reference = referenceTo(file);
    ASSERT_TRUE(reference);
    const QString successor = makeFile(QStringLiteral("successor"));
    setAttribute(successor, numberedBytes());
    ASSERT_EQ(::rename(QFile::encodeName(successor).constData(), QFile::encodeName(file).constData()), 0);

    EXPECT_FALSE(FileCatalog::exists(*reference));
    EXPECT_FALSE(FileCatalog::finderInfo(*reference));
    EXPECT_FALSE(FileCatalog::setFinderInfo(*reference, FinderInfo()));
    EXPECT_FALSE(FileCatalog::fileSpec(*reference));
    EXPECT_FALSE(FileCatalog::resolveAlias(*reference));
    EXPECT_EQ(attributeOf(file), numberedBytes());
}

TEST_F(FileReferenceTest, DoesNotFollowAMovedEntry)
{
    const QString file = makeFile();
    const auto reference = referenceTo(file);
    ASSERT_TRUE(reference);
    ASSERT_TRUE(QFile::rename(file, in(QStringLiteral("moved"))));
    EXPECT_FALSE(FileCatalog::exists(*reference));
    EXPECT_FALSE(FileCatalog::finderInfo(*reference));
}

TEST_F(FileReferenceTest, PathsHaveAFolderAndAName)
{
    const FSRef root = {0, 0, S_IFDIR, "/"};
    EXPECT_EQ(root.folder(), "/");
    EXPECT_EQ(root.name(), "");
    const FSRef top = {0, 0, S_IFDIR, "/home"};
    EXPECT_EQ(top.folder(), "/");
    EXPECT_EQ(top.name(), "home");
    const FSRef file = {0, 0, S_IFREG, "/home/some file"};
    EXPECT_EQ(file.folder(), "/home");
    EXPECT_EQ(file.name(), "some file");
}

TEST_F(FileReferenceTest, FileSpecIsTheNameInTheFolder)
{
    const QString file = makeFile();
    const auto fileSpec = FileCatalog::fileSpec(*referenceTo(file));
    ASSERT_TRUE(fileSpec);
    EXPECT_EQ(fileSpec->volume, statusOf(root()).st_dev);
    EXPECT_EQ(fileSpec->parentDirectory, statusOf(root()).st_ino);
    EXPECT_EQ(fileSpec->name, "file");
}

TEST_F(FileReferenceTest, FileSpecOfTheRootIsTheNameOfItsVolume)
{
    const auto fileSpec = FileCatalog::fileSpec(*referenceTo(QStringLiteral("/")));
    ASSERT_TRUE(fileSpec);
    EXPECT_EQ(fileSpec->parentDirectory, statusOf(QStringLiteral("/")).st_ino);
    EXPECT_EQ(fileSpec->name, FileCatalog::rootVolumeName.toUtf8());
}

TEST_F(FileReferenceTest, FileSpecOfADiskInAFolderIsThatOfTheFolder)
{
    const auto fileSpec = FileCatalog::fileSpec(*referenceTo(QStringLiteral("/proc")));
    ASSERT_TRUE(fileSpec);
    EXPECT_EQ(fileSpec->volume, statusOf(QStringLiteral("/")).st_dev);
    EXPECT_EQ(fileSpec->name, "proc");
}

TEST_F(FileReferenceTest, AChainOfAliasesLeadsToItsEnd)
{
    const QString file = makeFile();
    makeLink(QStringLiteral("first"), file);
    makeLink(QStringLiteral("second"), QStringLiteral("first"));
    const QString third = makeLink(QStringLiteral("third"), QStringLiteral("./second"));
    EXPECT_EQ(FileCatalog::resolveAlias(*referenceTo(third))->path, QFile::encodeName(file));
    EXPECT_EQ(FileCatalog::resolveAlias(*referenceTo(file))->path, QFile::encodeName(file));
}

TEST_F(FileReferenceTest, AliasesIntoNothingAndInACircleLeadNowhere)
{
    const QString dangling = makeLink(QStringLiteral("dangling"), QStringLiteral("missing"));
    const QString self = makeLink(QStringLiteral("self"), QStringLiteral("self"));
    const QString circle = makeLink(QStringLiteral("one"), QStringLiteral("two"));
    makeLink(QStringLiteral("two"), QStringLiteral("one"));
    for (const QString &link : {dangling, self, circle}) {
        ASSERT_TRUE(referenceTo(link)) << qPrintable(link);
        EXPECT_FALSE(FileCatalog::resolveAlias(*referenceTo(link))) << qPrintable(link);
    }
}
