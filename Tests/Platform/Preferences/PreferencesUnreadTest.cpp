// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What Preferences does with a domain that it does not know when values are set.

#include "PreferencesFixture.h"
#include "Tests/Platform/Files/FailingFileLayer.h"
#include "Tests/Platform/Files/InterveningLayer.h"
#include "Tests/Platform/Files/UnreadableFile.h"

#include <unistd.h>

namespace {

class PreferencesUnreadTest : public PreferencesFixture
{
protected:
    void SetUp() override
    {
        PreferencesFixture::SetUp();
        save(one, 1LL);
        before_ = contentOf(file());
    }

    QByteArray before_;
};

/// Nothing can be reached below a folder, unless errorNumber is 0.
class UnreachableFolder : public FileLayer
{
public:
    explicit UnreachableFolder(const QString &folder)
        : folder_(QFile::encodeName(folder))
    {
    }
    int errorNumber = EACCES;

    int open(const QByteArray &path, int flags, mode_t mode) override
    {
        return refuses(path) ? -1 : FileLayer::open(path, flags, mode);
    }
    int stat(const QByteArray &path, struct stat *result) override
    {
        return refuses(path) ? -1 : FileLayer::stat(path, result);
    }
    int lstat(const QByteArray &path, struct stat *result) override
    {
        return refuses(path) ? -1 : FileLayer::lstat(path, result);
    }
    int mkdir(const QByteArray &path, mode_t mode) override
    {
        return refuses(path) ? -1 : FileLayer::mkdir(path, mode);
    }
    std::optional<QByteArray> realpath(const QByteArray &path) override
    {
        return refuses(path) ? std::nullopt : FileLayer::realpath(path);
    }

private:
    bool refuses(const QByteArray &path)
    {
        if (errorNumber == 0 || !path.startsWith(folder_))
            return false;
        errno = errorNumber;
        return true;
    }

    const QByteArray folder_;
};

} // namespace

TEST_F(PreferencesUnreadTest, AFolderThatCannotBeReachedIsNoFirstRun)
{
    save(one, 2LL);
    const QByteArray content = contentOf(file());
    const QByteArray previous = contentOf(backup());
    for (const int errorNumber : {EACCES, EIO, ELOOP, ENOTDIR, ESTALE, ENAMETOOLONG}) {
        UnreachableFolder layer(folder());
        layer.errorNumber = errorNumber;
        const auto first = preferences(&layer);
        EXPECT_FALSE(first->read()) << errorNumber;
        EXPECT_TRUE(first->isUnread());
        EXPECT_FALSE(first->copyAppValue(one).isValid());
        // As two saves do, on losing the keyboard and on leaving.
        for (int save = 0; save < 2; ++save) {
            first->setAppValue(one, 3LL);
            const Result<> saved = first->appSynchronize();
            EXPECT_FALSE(saved);
            EXPECT_FALSE(saved.error.isEmpty());
            layer.errorNumber = 0;
        }
        EXPECT_EQ(contentOf(file()), content) << errorNumber;
        EXPECT_EQ(contentOf(backup()), previous) << errorNumber;
        EXPECT_EQ(namesIn(folder()).size(), 2) << errorNumber;
    }
}

TEST_F(PreferencesUnreadTest, AFileThatCannotBeReadIsNotSavedOverUntilItWasRead)
{
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist"));
    const auto first = preferences(&layer);
    EXPECT_FALSE(first->read());
    layer.errorNumber = 0;
    first->setAppValue(two, 2LL);
    EXPECT_FALSE(first->appSynchronize());
    EXPECT_EQ(contentOf(file()), before_);

    ASSERT_TRUE(first->read());
    EXPECT_FALSE(first->isUnread());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    EXPECT_EQ(first->copyAppValue(two), QVariant(2LL)) << "stays pending";
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
    EXPECT_EQ(copies(), QList<QByteArray>()) << "nothing was replaced";
}

TEST_F(PreferencesUnreadTest, ValuesSetWithoutKnowingThoseThatAreThereReplaceThemWithACopyKept)
{
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist"));
    const auto first = preferences(&layer);
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    first->setAppValue(one, 2LL);
    layer.errorNumber = 0;
    ASSERT_TRUE(first->read());
    for (const qlonglong value : {2, 3, 4}) {
        first->setAppValue(one, value);
        ASSERT_TRUE(first->appSynchronize());
    }
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 4LL}}));
    EXPECT_EQ(copies(), QList<QByteArray>{before_});
    EXPECT_TRUE(asides().isEmpty());
}

TEST_F(PreferencesUnreadTest, AFileThatWasMissingAtTheStartAndIsThereAtTheSaveIsKeptAside)
{
    ASSERT_TRUE(QFile::remove(file()));
    const auto first = preferences();
    EXPECT_TRUE(first->read()) << "none yet";
    EXPECT_FALSE(first->isUnread());
    put(file(), before_);
    first->setAppValue(one, 2LL);
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 2LL}, {two, 2LL}}));
    EXPECT_EQ(copies(), QList<QByteArray>{before_});
}

TEST_F(PreferencesUnreadTest, WhatAddsToAFileThatHasComeMeanwhileKeepsNoCopy)
{
    ASSERT_TRUE(QFile::remove(file()));
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    put(file(), before_);
    first->setAppValue(one, 1LL);
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
    EXPECT_EQ(copies(), QList<QByteArray>());
}

TEST_F(PreferencesUnreadTest, OnlyWhereNothingIsThereIsNoDomainYet)
{
    const auto isUnreadIn = [this](const QString &name) {
        Preferences::Options elsewhere = options();
        elsewhere.folder = in(name);
        Preferences first(domain, elsewhere);
        const bool isRead = first.read().ok;
        EXPECT_EQ(isRead, !first.isUnread());
        return first.isUnread();
    };
    EXPECT_FALSE(isUnreadIn(QStringLiteral("missing")));
    EXPECT_FALSE(isUnreadIn(QStringLiteral("missing/below")));
    ASSERT_TRUE(QDir(root()).mkdir(QStringLiteral("empty")));
    EXPECT_FALSE(isUnreadIn(QStringLiteral("empty")));
    ASSERT_EQ(::symlink("gone", QFile::encodeName(in(QStringLiteral("dangling"))).constData()), 0);
    EXPECT_TRUE(isUnreadIn(QStringLiteral("dangling"))) << "as a home that is not mounted";
    EXPECT_TRUE(isUnreadIn(QStringLiteral("dangling/below")));
    put(in(QStringLiteral("file")), {});
    EXPECT_TRUE(isUnreadIn(QStringLiteral("file")));
    const QByteArray link = QFile::encodeName(in(QStringLiteral("empty/org.example.Test.plist")));
    for (const char *target : {"../config/target", "../gone/target"}) {
        ASSERT_EQ(::symlink(target, link.constData()), 0);
        EXPECT_TRUE(isUnreadIn(QStringLiteral("empty"))) << target;
        ASSERT_EQ(::unlink(link.constData()), 0);
    }
}

TEST_F(PreferencesUnreadTest, NothingIsSavedBelowAMountPointThatTheDomainsLinkLeadsTo)
{
    const QString disk = in(QStringLiteral("disk"));
    const QString mountPoint = in(QStringLiteral("mounted"));
    ASSERT_TRUE(QDir().mkdir(disk));
    ASSERT_TRUE(QFile::rename(file(), disk + QStringLiteral("/target.plist")));
    ASSERT_TRUE(QFile::link(mountPoint + QStringLiteral("/target.plist"), file()));
    ASSERT_TRUE(QDir().rename(disk, mountPoint));
    const auto known = preferences();
    ASSERT_TRUE(known->read());

    ASSERT_TRUE(QDir().rename(mountPoint, disk));
    ASSERT_TRUE(QDir().mkdir(mountPoint));
    const auto unknown = preferences();
    const Result<> read = unknown->read();
    EXPECT_TRUE(read.error.endsWith(u"/mounted/target.plist, which is not there")) << qPrintable(read.error);
    EXPECT_TRUE(unknown->isUnread());
    for (Preferences *each : {known.get(), unknown.get()}) {
        each->setAppValue(two, 2LL);
        EXPECT_FALSE(each->appSynchronize());
    }
    EXPECT_EQ(namesIn(mountPoint), QStringList());
    // Nor is a backup that was left there put in its place.
    put(mountPoint + QStringLiteral("/target.plist.backup"), before_);
    EXPECT_FALSE(unknown->read());
    EXPECT_EQ(namesIn(mountPoint).size(), 1);

    ASSERT_TRUE(QDir(mountPoint).removeRecursively());
    ASSERT_TRUE(QDir().rename(disk, mountPoint));
    ASSERT_TRUE(known->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
    EXPECT_TRUE(unknown->read());
}

TEST_F(PreferencesUnreadTest, ADamagedFileThatALinkLeadsToStaysUntilASaveReplacesIt)
{
    put(in(QStringLiteral("target.plist")), "damaged");
    ASSERT_TRUE(QFile::remove(file()));
    ASSERT_TRUE(QFile::link(in(QStringLiteral("target.plist")), file()));
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->kept.size(), 1);
    first->setAppValue(one, 2LL);
    const Result<> saved = first->appSynchronize();
    EXPECT_TRUE(saved) << qPrintable(saved.error);
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 2LL}}));
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
}

TEST_F(PreferencesUnreadTest, AReadThatFailsLaterTakesNothingAway)
{
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist"));
    layer.errorNumber = 0;
    const auto first = preferences(&layer);
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    layer.errorNumber = EIO;
    EXPECT_FALSE(first->read());
    EXPECT_FALSE(first->isUnread());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    first->setAppValue(two, 2LL);
    EXPECT_FALSE(first->appSynchronize());
    layer.errorNumber = 0;
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesUnreadTest, ALinkMovedBetweenLocatingAndLockingIsLocatedAgain)
{
    const QString target = in(QStringLiteral("target.plist"));
    const QString other = in(QStringLiteral("other.plist"));
    put(target, before_);
    put(other, listOf({{two, 5LL}}));
    const QByteArray link = QFile::encodeName(file());
    ASSERT_TRUE(QFile::remove(file()));
    ASSERT_TRUE(QFile::link(target, file()));
    InterveningLayer layer;
    layer.before("flock", 0, [&] {
        ASSERT_EQ(::unlink(link.constData()), 0);
        ASSERT_EQ(::symlink(QFile::encodeName(other).constData(), link.constData()), 0);
    });
    const auto first = preferences(&layer);
    first->setAppValue(one, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(contentOf(target), before_);
    EXPECT_EQ(valuesOf(contentOf(other)), (QVariantMap{{one, 2LL}, {two, 5LL}}));
    EXPECT_EQ(namesIn(in(QStringLiteral("locks"))).size(), 3) << "the new target is locked too";
}
