// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/DurableFileWriter.h"
#include "FailingFileLayer.h"
#include "FileFixture.h"
#include "KilledAtRename.h"
#include "Platform/Files/SystemCalls.h"
#include "Tests/Session/Umask.h"

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

const QByteArray oldBytes("old bytes");
const QByteArray newBytes(100'000, 'n');

class DurableFileWriterTest : public FileFixture
{
protected:
    QString path() const { return in(QStringLiteral("file")); }
    QString backup() const { return in(QStringLiteral("file.backup")); }
    QByteArray encodedPath() const { return QFile::encodeName(path()); }

    static struct stat informationOf(const QString &path)
    {
        struct stat information = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &information), 0) << qPrintable(path);
        return information;
    }

    FailingFileLayer layer_;
    const DurableFileWriter writer_ = DurableFileWriter(&layer_);
    const DurableFileWriter::Options withBackup_ = {0600, backup()};
};

/// A disk on which every link belongs to somebody else.
class LinksOfAnother : public FileLayer
{
public:
    uid_t owner = ::geteuid() + 1;

    int fstat(int descriptor, struct stat *result) override
    {
        const int status = FileLayer::fstat(descriptor, result);
        if (status == 0 && S_ISLNK(result->st_mode))
            result->st_uid = owner;
        return status;
    }
};

constexpr std::array usualMasks = {022U, 027U, 077U};

} // namespace

TEST_F(DurableFileWriterTest, NewFileIsItsOwnersAlone)
{
    ASSERT_TRUE(writer_.write(path(), newBytes));
    EXPECT_EQ(contentOf(path()), newBytes);
    EXPECT_EQ(informationOf(path()).st_mode & 07777, 0600U);
    ASSERT_TRUE(writer_.write(in(QStringLiteral("shared")), {}, {.newFileMode = 0644}));
    EXPECT_EQ(informationOf(in(QStringLiteral("shared"))).st_mode & 07777, 0644U);
    EXPECT_EQ(contentOf(in(QStringLiteral("shared"))), QByteArray());
    EXPECT_EQ(namesIn(root()).size(), 2);
}

TEST_F(DurableFileWriterTest, ANewFileHasItsModeWhateverTheUmask)
{
    for (const unsigned mask : {0U, 022U, 077U, 0777U}) {
        const Umask umask(mask);
        ASSERT_TRUE(writer_.write(path(), newBytes));
        EXPECT_EQ(informationOf(path()).st_mode & 07777, 0600U) << std::oct << mask;
        ASSERT_TRUE(writer_.remove(path()));
    }
}

TEST_F(DurableFileWriterTest, TheUmaskDecidesTheModeOfWhatIsGivenAway)
{
    for (const unsigned mask : usualMasks) {
        const Umask umask(mask);
        ASSERT_TRUE(writer_.give(path(), newBytes));
        EXPECT_EQ(contentOf(path()), newBytes);
        EXPECT_EQ(informationOf(path()).st_mode & 07777, 0666U & ~mask) << std::oct << mask;
        ASSERT_TRUE(writer_.remove(path()));
    }
    EXPECT_EQ(namesIn(root()), QStringList());
}

TEST_F(DurableFileWriterTest, WhatIsGivenAwayKeepsTheModeOfTheUsersFileAndOfNoOther)
{
    class FilesOfAnother : public FileLayer
    {
        int lstat(const QByteArray &path, struct stat *result) override
        {
            const int status = FileLayer::lstat(path, result);
            result->st_uid += 1;
            return status;
        }
    } others;
    put(path(), oldBytes);
    ASSERT_EQ(::chmod(encodedPath().constData(), 0604), 0);
    const Umask umask(022);
    ASSERT_TRUE(writer_.give(path(), newBytes));
    EXPECT_EQ(contentOf(path()), newBytes);
    EXPECT_EQ(informationOf(path()).st_mode & 07777, 0604U);
    ASSERT_TRUE(DurableFileWriter(&others).give(path(), "again"));
    EXPECT_EQ(contentOf(path()), "again");
    EXPECT_EQ(informationOf(path()).st_mode & 07777, 0644U);
    EXPECT_EQ(namesIn(root()).size(), 1);
}

TEST_F(DurableFileWriterTest, WhatIsGivenAwayReplacesALinkAndFollowsNone)
{
    const QString target = in(QStringLiteral("target"));
    put(target, oldBytes);
    for (const char *text : {"target", "missing", "missing/below"}) {
        ASSERT_EQ(::symlink(text, encodedPath().constData()), 0);
        ASSERT_TRUE(writer_.give(path(), newBytes)) << text;
        EXPECT_FALSE(QFileInfo(path()).isSymLink());
        EXPECT_EQ(contentOf(path()), newBytes);
        EXPECT_EQ(contentOf(target), oldBytes);
        ASSERT_TRUE(writer_.remove(path()));
        EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("target")});
    }
    ASSERT_EQ(::mkfifo(encodedPath().constData(), 0600), 0);
    EXPECT_FALSE(writer_.give(path(), newBytes));
    EXPECT_FALSE(writer_.give(root(), newBytes));
}

TEST_F(DurableFileWriterTest, GivingAwayWithEveryCallFailingInTurnLeavesTheOldBytesOrTheNew)
{
    int failures = 0;
    for (int call = 0;; ++call) {
        put(path(), oldBytes);
        FailingFileLayer layer;
        layer.failingCall = call;
        const Result<> result = DurableFileWriter(&layer).give(path(), newBytes);
        const QByteArray content = contentOf(path());
        EXPECT_TRUE(content == newBytes || (!result && content == oldBytes)) << "call " << call;
        EXPECT_EQ(result.ok, result.error.isEmpty());
        EXPECT_EQ(namesIn(root()).size(), 1) << "call " << call;
        if (layer.calls <= call) {
            EXPECT_TRUE(result);
            break;
        }
        failures += result ? 0 : 1;
    }
    EXPECT_GT(failures, 8);
}

TEST_F(DurableFileWriterTest, ALinkIsFollowedOnlyIfTheUserOrRootOwnsIt)
{
    LinksOfAnother layer;
    const QString target = in(QStringLiteral("target"));
    put(target, oldBytes);
    ASSERT_EQ(::symlink("target", encodedPath().constData()), 0);
    const Result<> refused = DurableFileWriter(&layer).write(path(), newBytes);
    EXPECT_FALSE(refused);
    EXPECT_TRUE(refused.error.contains(path())) << qPrintable(refused.error);
    EXPECT_EQ(contentOf(target), oldBytes);
    for (const uid_t owner : {uid_t(0), ::geteuid()}) {
        layer.owner = owner;
        const QByteArray bytes = QByteArray::number(owner);
        EXPECT_TRUE(DurableFileWriter(&layer).write(path(), bytes));
        EXPECT_EQ(contentOf(target), bytes);
    }
}

TEST_F(DurableFileWriterTest, ModeOwnerAndExtendedAttributesAreKept)
{
    put(path(), oldBytes);
    ASSERT_EQ(::chmod(encodedPath().constData(), 0640), 0);
    const QByteArray large(2000, 'x');
    ASSERT_EQ(::setxattr(encodedPath().constData(), "user.note", "kept", 4, 0), 0);
    ASSERT_EQ(::setxattr(encodedPath().constData(), "user.large", large.constData(), 2000, 0), 0);
    ASSERT_EQ(::setxattr(encodedPath().constData(), "user.empty", "", 0, 0), 0);
    // Only the administrator can give a file away.
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(encodedPath().constData(), 12345, 23456), 0);
    }
    const struct stat before = informationOf(path());

    ASSERT_TRUE(writer_.write(path(), newBytes));
    const struct stat after = informationOf(path());
    EXPECT_EQ(contentOf(path()), newBytes);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    char value[4000];
    EXPECT_EQ(::getxattr(encodedPath().constData(), "user.note", value, sizeof value), 4);
    EXPECT_EQ(::getxattr(encodedPath().constData(), "user.large", value, sizeof value), 2000);
    EXPECT_EQ(::getxattr(encodedPath().constData(), "user.empty", value, sizeof value), 0);
}

TEST_F(DurableFileWriterTest, AnAttributeThatCannotBeKeptFailsTheWrite)
{
    class NoAttributes : public FileLayer
    {
        int fsetxattr(int, const char *, const void *, size_t) override
        {
            errno = ENOSPC;
            return -1;
        }
    } layer;
    put(path(), oldBytes);
    ASSERT_EQ(::setxattr(encodedPath().constData(), "user.note", "kept", 4, 0), 0);
    EXPECT_FALSE(DurableFileWriter(&layer).write(path(), newBytes));
    EXPECT_EQ(contentOf(path()), oldBytes);
    EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("file")});
}

TEST_F(DurableFileWriterTest, AnotherGroupThatCannotBeGivenGainsNothing)
{
    class AnotherOwner : public FailingFileLayer
    {
        int lstat(const QByteArray &path, struct stat *result) override
        {
            const int status = FailingFileLayer::lstat(path, result);
            result->st_uid += 1;
            result->st_gid += 1;
            return status;
        }
    } layer;
    layer.canGiveAway = false;
    put(path(), oldBytes);
    ASSERT_EQ(::chmod(encodedPath().constData(), 0664), 0);
    ASSERT_TRUE(DurableFileWriter(&layer).write(path(), newBytes));
    EXPECT_EQ(contentOf(path()), newBytes);
    EXPECT_EQ(informationOf(path()).st_mode & 07777, 0644U);
}

TEST_F(DurableFileWriterTest, NamesAsLongAsTheFileSystemAllows)
{
    const QString longest = in(QString(255, u'n'));
    ASSERT_TRUE(writer_.write(longest, oldBytes));
    ASSERT_TRUE(writer_.write(longest, newBytes));
    EXPECT_EQ(contentOf(longest), newBytes);
}

TEST_F(DurableFileWriterTest, LinksStayLinks)
{
    ASSERT_TRUE(QDir(root()).mkpath(QStringLiteral("a/b")));
    const QString target = in(QStringLiteral("a/target"));
    put(target, oldBytes);
    ASSERT_EQ(::symlink("../target", QFile::encodeName(in(QStringLiteral("a/b/second"))).constData()), 0);
    ASSERT_EQ(::symlink("a/b/second", encodedPath().constData()), 0);
    ASSERT_TRUE(writer_.write(path(), newBytes));
    EXPECT_EQ(contentOf(target), newBytes);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_TRUE(QFileInfo(in(QStringLiteral("a/b/second"))).isSymLink());
}

TEST_F(DurableFileWriterTest, ALinkToAFileThatIsNotThereYetGetsIt)
{
    ASSERT_EQ(::symlink("target", encodedPath().constData()), 0);
    ASSERT_TRUE(writer_.write(path(), newBytes));
    EXPECT_EQ(contentOf(in(QStringLiteral("target"))), newBytes);
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
}

TEST_F(DurableFileWriterTest, LinksInALoopOrIntoAMissingFolderFail)
{
    ASSERT_EQ(::symlink("other", encodedPath().constData()), 0);
    ASSERT_EQ(::symlink("file", QFile::encodeName(in(QStringLiteral("other"))).constData()), 0);
    ASSERT_EQ(::symlink("missing/target", QFile::encodeName(in(QStringLiteral("lost"))).constData()), 0);
    EXPECT_FALSE(writer_.write(path(), newBytes));
    EXPECT_FALSE(writer_.write(in(QStringLiteral("lost")), newBytes));
    EXPECT_EQ(namesIn(root()).size(), 3);
}

TEST_F(DurableFileWriterTest, WhatIsNoRegularFileIsNotReplaced)
{
    ASSERT_EQ(::mkfifo(encodedPath().constData(), 0600), 0);
    EXPECT_FALSE(writer_.write(path(), newBytes));
    EXPECT_FALSE(writer_.write(root(), newBytes));
    EXPECT_TRUE(S_ISFIFO(informationOf(path()).st_mode));
}

TEST_F(DurableFileWriterTest, BackupHoldsWhatWasReplaced)
{
    ASSERT_TRUE(writer_.write(path(), "1", withBackup_));
    EXPECT_FALSE(QFile::exists(backup()));
    ASSERT_TRUE(writer_.write(path(), "2", withBackup_));
    EXPECT_EQ(contentOf(backup()), "1");
    ASSERT_TRUE(writer_.write(path(), "3", withBackup_));
    EXPECT_EQ(contentOf(backup()), "2");
    layer_.hasLinks = false;
    ASSERT_TRUE(writer_.write(path(), "4", withBackup_));
    EXPECT_EQ(contentOf(backup()), "3");
    EXPECT_EQ(contentOf(path()), "4");
    EXPECT_EQ(namesIn(root()).size(), 2);
}

TEST_F(DurableFileWriterTest, ABackupThatIsTheSameFileAlreadyLeavesNothingBehind)
{
    put(path(), oldBytes);
    ASSERT_EQ(::link(encodedPath().constData(), QFile::encodeName(backup()).constData()), 0);
    ASSERT_TRUE(writer_.write(path(), newBytes, withBackup_));
    EXPECT_EQ(contentOf(backup()), oldBytes);
    EXPECT_EQ(namesIn(root()).size(), 2);
}

TEST_F(DurableFileWriterTest, EveryCallFailingInTurnLeavesTheOldBytesOrTheNew)
{
    for (const bool hasLinks : {true, false}) {
        for (const int errorNumber : {EIO, ENOSPC, EROFS, EACCES}) {
            int failures = 0;
            for (int call = 0;; ++call) {
                put(path(), oldBytes);
                ASSERT_EQ(::setxattr(encodedPath().constData(), "user.note", "kept", 4, 0), 0);
                FailingFileLayer layer;
                layer.hasLinks = hasLinks;
                layer.failingCall = call;
                layer.errorNumber = errorNumber;
                const Result<> result = DurableFileWriter(&layer).write(path(), newBytes, withBackup_);
                if (layer.calls <= call) {
                    EXPECT_TRUE(result);
                    break;
                }
                failures += result.ok ? 0 : 1;
                const QByteArray content = contentOf(path());
                EXPECT_TRUE(content == newBytes || (!result.ok && content == oldBytes)) << "call " << call;
                EXPECT_EQ(result.ok, result.error.isEmpty());
                for (const QString &name : namesIn(root()))
                    EXPECT_FALSE(name.startsWith(u'.')) << "call " << call << ' ' << qPrintable(name);
            }
            EXPECT_GT(failures, 8);
        }
    }
}

TEST_F(DurableFileWriterTest, FullDiskLeavesTheOldBytesForSmallAndLargeWrites)
{
    put(path(), oldBytes);
    for (const qsizetype size : {1, 100, 16'383, 16'384, 1'000'000}) {
        for (const size_t space : {size_t(0), static_cast<size_t>(size) / 2, static_cast<size_t>(size) - 1}) {
            layer_.space = space;
            EXPECT_FALSE(writer_.write(path(), QByteArray(size, 'n'), withBackup_)) << size << ' ' << space;
            EXPECT_EQ(contentOf(path()), oldBytes);
            EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("file")});
        }
    }
}

TEST_F(DurableFileWriterTest, StrayTemporariesOfThisFileAreRemoved)
{
    KilledAtRename layer;
    put(path(), oldBytes);
    EXPECT_FALSE(DurableFileWriter(&layer).write(path(), newBytes, withBackup_));
    EXPECT_FALSE(DurableFileWriter(&layer).write(in(QStringLiteral("neighbour")), newBytes));
    ASSERT_EQ(namesIn(root()).size(), 4);
    writer_.removeStrayTemporaries(path());
    EXPECT_EQ(namesIn(root()).size(), 2);
    writer_.removeStrayTemporaries(in(QStringLiteral("neighbour")));
    EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("file")});
}

TEST_F(DurableFileWriterTest, ALinkIsReplacedWhateverFails)
{
    const QString link = in(QStringLiteral("link"));
    const auto text = [&link] { return linkText(AT_FDCWD, QFile::encodeName(link).constData()); };
    int failures = 0;
    for (int call = 0;; ++call) {
        ASSERT_TRUE(DurableFileWriter().makeSymbolicLink(link, "old \xff"));
        ASSERT_EQ(text(), "old \xff");
        FailingFileLayer layer;
        layer.failingCall = call;
        const Result<> result = DurableFileWriter(&layer).makeSymbolicLink(link, "new");
        EXPECT_TRUE(text() == "new" || (!result.ok && text() == "old \xff")) << "call " << call;
        EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("link")}) << "call " << call;
        if (layer.calls <= call) {
            EXPECT_TRUE(result);
            break;
        }
        failures += result.ok ? 0 : 1;
    }
    EXPECT_GT(failures, 3);

    layer_.calls = 0;
    EXPECT_TRUE(writer_.makeSymbolicLink(link, "new"));
    EXPECT_EQ(layer_.calls, 0) << "nothing to do";
    put(path(), oldBytes);
    EXPECT_TRUE(writer_.makeSymbolicLink(path(), "new"));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
}

TEST_F(DurableFileWriterTest, RemovingTakesTheLinkAndNotTheFile)
{
    const QString link = in(QStringLiteral("link"));
    put(path(), oldBytes);
    ASSERT_TRUE(QFile::link(path(), link));
    EXPECT_TRUE(writer_.remove(link));
    EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("file")});
    EXPECT_TRUE(writer_.remove(link)) << "nothing to do";
    EXPECT_FALSE(writer_.remove(root()));
    EXPECT_TRUE(writer_.remove(path()));
    EXPECT_EQ(namesIn(root()), QStringList());
}

TEST_F(DurableFileWriterTest, RenamesInPlaceOfWhatIsThere)
{
    put(path(), oldBytes);
    put(in(QStringLiteral("new")), newBytes);
    EXPECT_TRUE(writer_.rename(in(QStringLiteral("new")), path()));
    EXPECT_EQ(contentOf(path()), newBytes);
    EXPECT_EQ(namesIn(root()), QStringList{QStringLiteral("file")});
    const Result<> absent = writer_.rename(in(QStringLiteral("absent")), path());
    EXPECT_FALSE(absent);
    EXPECT_FALSE(absent.error.isEmpty());
    EXPECT_EQ(contentOf(path()), newBytes);
}
