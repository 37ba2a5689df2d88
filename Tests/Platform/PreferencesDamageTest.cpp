// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What Preferences does with a file that it cannot read.

#include "FailingFileLayer.h"
#include "PreferencesFixture.h"
#include "UnreadableFile.h"

#include <unistd.h>

namespace {

class PreferencesDamageTest : public PreferencesFixture
{
};

} // namespace

TEST_F(PreferencesDamageTest, DamagedAtStartIsKeptAsideAndTheBackupRead)
{
    save(one, 1LL);
    save(one, 2LL);
    const QByteArray damaged = contentOf(file()).chopped(5);
    put(file(), damaged);
    const QByteArray good = contentOf(backup());

    EXPECT_EQ(preferences()->copyAppValue(one), QVariant(1LL));
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(contentOf(QDir(folder()).filePath(asides().first())), damaged);
    EXPECT_EQ(contentOf(backup()), good);
    // The next start has lost nothing though this one saved nothing.
    EXPECT_EQ(preferences()->copyAppValue(one), QVariant(1LL));
    EXPECT_EQ(asides().size(), 1);

    save(two, 2LL);
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
    EXPECT_EQ(contentOf(QDir(folder()).filePath(asides().first())), damaged);
}

TEST_F(PreferencesDamageTest, DamagedBeforeASaveIsKeptAsideAndNeverBecomesTheBackup)
{
    save(one, 1LL);
    save(one, 2LL);
    const auto first = preferences();
    EXPECT_EQ(first->copyAppValue(one), QVariant(2LL));
    const QList<QByteArray> damages{"", "garbage", contentOf(file()).left(20),
                                    *PropertyList::write(QVariantList{1LL}).bytes};
    qsizetype kept = 0;
    for (const QByteArray &damaged : damages) {
        const QByteArray good = contentOf(backup());
        put(file(), damaged);
        first->setAppValue(two, qlonglong(kept));
        ASSERT_TRUE(first->appSynchronize());
        EXPECT_EQ(contentOf(backup()), good);
        EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, qlonglong(kept)}}));
        // All of these within a second or two: no aside replaces an earlier one.
        ASSERT_EQ(asides().size(), ++kept);
    }
    QList<QByteArray> found;
    for (const QString &name : asides())
        found.append(contentOf(QDir(folder()).filePath(name)));
    for (const QByteArray &damaged : damages)
        EXPECT_TRUE(found.contains(damaged));
}

TEST_F(PreferencesDamageTest, DamagedFileAndDamagedBackupAreBothKeptAside)
{
    put(file(), "damaged file");
    put(backup(), "damaged backup");
    const auto first = preferences();
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    first->setAppValue(one, 1LL);
    ASSERT_TRUE(first->appSynchronize());
    first->setAppValue(one, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 2LL}}));
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(contentOf(QDir(folder()).filePath(asides().first())), "damaged file");
    const QStringList backups = asides(QStringLiteral("org.example.Test.plist.backup"));
    ASSERT_EQ(backups.size(), 1);
    EXPECT_EQ(contentOf(QDir(folder()).filePath(backups.first())), "damaged backup");
}

TEST_F(PreferencesDamageTest, WithoutHardLinksTheSameIsKeptByCopying)
{
    FailingFileLayer layer;
    layer.hasLinks = false;
    save(one, 1LL);
    save(one, 2LL);
    put(file(), "damaged");
    const auto first = preferences(&layer);
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(contentOf(QDir(folder()).filePath(asides().first())), "damaged");
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesDamageTest, AFileThatCannotBeReadNowIsNeitherMovedNorReplaced)
{
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist"));
    save(one, 1LL);
    const QByteArray before = contentOf(file());
    for (const int errorNumber : {EACCES, EIO, EMFILE}) {
        layer.errorNumber = errorNumber;
        const auto first = preferences(&layer);
        EXPECT_FALSE(first->appSynchronize());
        first->setAppValue(two, 2LL);
        EXPECT_FALSE(first->appSynchronize());
        EXPECT_TRUE(first->hasPendingValues());
        EXPECT_EQ(contentOf(file()), before);
        EXPECT_EQ(namesIn(folder()).size(), 1);
    }
}

TEST_F(PreferencesDamageTest, ADamagedFileWaitsForABackupThatCannotBeReadNow)
{
    save(one, 1LL);
    save(one, 2LL);
    put(file(), "damaged");
    const QByteArray good = contentOf(backup());
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist.backup"));
    const auto first = preferences(&layer);
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    first->setAppValue(two, 2LL);
    EXPECT_FALSE(first->appSynchronize());
    EXPECT_TRUE(first->hasPendingValues());
    EXPECT_EQ(contentOf(file()), "damaged");
    EXPECT_EQ(contentOf(backup()), good);
    EXPECT_EQ(namesIn(folder()).size(), 2);

    layer.errorNumber = 0;
    EXPECT_FALSE(first->appSynchronize());
    ASSERT_TRUE(first->read());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
    EXPECT_EQ(asides().size(), 1);
}

TEST_F(PreferencesDamageTest, ASparseFileOverTheLimitIsRefusedAndKeptAsideBeforeASave)
{
    save(one, 1LL);
    save(one, 2LL);
    constexpr qint64 size = qint64(1) << 30;
    ASSERT_EQ(::truncate(QFile::encodeName(file()).constData(), size), 0);
    const auto first = preferences();
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    EXPECT_TRUE(asides().isEmpty());
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(QFileInfo(QDir(folder()).filePath(asides().first())).size(), size);
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesDamageTest, ACopyIsKeptAsideOnceForTheSameContent)
{
    save(one, 1LL);
    const QByteArray before = contentOf(file());
    const auto first = preferences();
    ASSERT_TRUE(first->keepAsideCopy(QStringLiteral("test")));
    ASSERT_TRUE(first->keepAsideCopy(QStringLiteral("test")));
    ASSERT_TRUE(preferences()->keepAsideCopy(QStringLiteral("test")));
    EXPECT_TRUE(asides().isEmpty()) << "nothing is damaged";
    // A copy: what another program writes into the file does not reach it.
    QFile opened(file());
    ASSERT_TRUE(opened.open(QIODevice::ReadWrite));
    opened.write("XXXX");
    opened.close();
    EXPECT_EQ(copies(), QList<QByteArray>{before});
}
