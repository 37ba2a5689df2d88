// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What Preferences does with a file that it cannot read.

#include "Platform/Preferences/PreferencesFile.h"
#include "PreferencesFixture.h"
#include "Tests/Platform/Files/FailingFileLayer.h"
#include "Tests/Platform/Files/InterveningLayer.h"
#include "Tests/Platform/Files/UnreadableFile.h"

#include <QCryptographicHash>

#include <unistd.h>

namespace {

using Cause = Preferences::Damage::Cause;

class PreferencesDamageTest : public PreferencesFixture
{
protected:
    /// Two states, of which the first is the backup, saved at a time that is not now.
    void saveTwice() const
    {
        save(one, 1LL);
        save(one, 2LL);
        QFile opened(backup());
        ASSERT_TRUE(opened.open(QIODevice::ReadWrite));
        ASSERT_TRUE(opened.setFileTime(savedBefore, QFileDevice::FileModificationTime));
    }
    QString pathOf(const QString &name) const
    {
        return QFileInfo(folder()).canonicalFilePath() + u'/' + name;
    }
    static QDateTime modified(const QString &path) { return QFileInfo(path).lastModified().toUTC(); }

    inline static const QDateTime savedBefore{QDate(2026, 2, 3), QTime(4, 5, 6, 789), Qt::UTC};
};

/// A size that no file can have that is read.
void makeTooLarge(const QString &path)
{
    ASSERT_EQ(::truncate(QFile::encodeName(path).constData(), qint64(1) << 30), 0);
}

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

TEST_F(PreferencesDamageTest, ASparseFileOverTheLimitIsKeptAsideAndTheBackupRead)
{
    saveTwice();
    ASSERT_NO_FATAL_FAILURE(makeTooLarge(file()));
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(QFileInfo(QDir(folder()).filePath(asides().first())).size(), qint64(1) << 30);
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->cause, Cause::TooLarge);
    EXPECT_EQ(first->damage()->kept, QStringList(pathOf(asides().first())));
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}}));
}

TEST_F(PreferencesDamageTest, NothingIsSavedOverAFileOverTheLimitThatHasNoGoodBackup)
{
    for (const char *backupBytes : {"", "garbage"}) {
        put(file(), {});
        ASSERT_NO_FATAL_FAILURE(makeTooLarge(file()));
        if (*backupBytes != 0)
            put(backup(), backupBytes);
        const QStringList names = namesIn(folder());
        const auto first = preferences();
        const Result<> read = first->read();
        EXPECT_FALSE(read);
        EXPECT_TRUE(read.error.endsWith(u"has more than 256 MiB")) << qPrintable(read.error);
        EXPECT_TRUE(first->isUnread());
        first->setAppValue(one, 1LL);
        for (int save = 0; save < 2; ++save)
            EXPECT_FALSE(first->appSynchronize());
        EXPECT_EQ(QFileInfo(file()).size(), qint64(1) << 30);
        EXPECT_EQ(namesIn(folder()), names);

        // A way out: the user puts it elsewhere.
        ASSERT_TRUE(QFile::remove(file()));
        ASSERT_TRUE(first->read());
        ASSERT_TRUE(first->appSynchronize());
        EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}}));
    }
}

TEST_F(PreferencesDamageTest, AFileThatIsGoneIsReplacedByItsBackup)
{
    saveTwice();
    const QByteArray good = contentOf(backup());
    ASSERT_TRUE(QFile::remove(file()));
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->cause, Cause::Missing);
    EXPECT_EQ(first->damage()->backup, savedBefore);
    EXPECT_EQ(first->damage()->kept, QStringList());
    EXPECT_EQ(contentOf(file()), good);
    EXPECT_EQ(contentOf(backup()), good);
    EXPECT_EQ(namesIn(folder()).size(), 2);
    ASSERT_TRUE(first->read());
    EXPECT_FALSE(first->damage()) << "told once";

    // The same if it goes while it is in use.
    ASSERT_TRUE(QFile::remove(file()));
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->cause, Cause::Missing);
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesDamageTest, AFileThatIsGoneWaitsForABackupThatCannotBeReadNow)
{
    saveTwice();
    ASSERT_TRUE(QFile::remove(file()));
    UnreadableFile layer(folder(), QStringLiteral("org.example.Test.plist.backup"));
    const auto first = preferences(&layer);
    EXPECT_FALSE(first->read());
    EXPECT_TRUE(first->isUnread());
    first->setAppValue(two, 2LL);
    EXPECT_FALSE(first->appSynchronize());
    EXPECT_EQ(namesIn(folder()).size(), 1);
    layer.errorNumber = 0;
    ASSERT_TRUE(first->read());
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesDamageTest, ADamagedBackupOfAFileThatIsGoneIsKeptAsideAndToldOnce)
{
    put(backup(), "damaged backup");
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    ASSERT_TRUE(first->damage());
    EXPECT_FALSE(first->damage()->backup.isValid());
    const QStringList kept = asides(QStringLiteral("org.example.Test.plist.backup"));
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(first->damage()->kept, QStringList(pathOf(kept.first())));
    EXPECT_EQ(namesIn(folder()), kept);
    ASSERT_TRUE(preferences()->read());
    const auto next = preferences();
    ASSERT_TRUE(next->read());
    EXPECT_FALSE(next->damage()) << "a first run";
}

TEST_F(PreferencesDamageTest, WhatWasDamagedIsToldOnceWithTheDateOfTheBackup)
{
    saveTwice();
    put(file(), "damaged");
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->cause, Cause::Broken);
    EXPECT_TRUE(first->damage()->reason.contains(u"org.example.Test.plist is damaged"));
    EXPECT_EQ(first->damage()->backup, savedBefore);
    ASSERT_EQ(asides().size(), 1);
    EXPECT_EQ(first->damage()->kept, QStringList(pathOf(asides().first())));
    EXPECT_EQ(modified(file()), savedBefore) << "the file is of that time again";
    ASSERT_TRUE(first->read());
    EXPECT_FALSE(first->damage());
    const auto next = preferences();
    ASSERT_TRUE(next->read());
    EXPECT_FALSE(next->damage());
}

TEST_F(PreferencesDamageTest, WithoutAGoodBackupTheDamageSaysSoOnce)
{
    for (const bool hasBackup : {false, true}) {
        put(file(), hasBackup ? "damaged again" : "damaged");
        if (hasBackup)
            put(backup(), "damaged backup");
        const auto first = preferences();
        ASSERT_TRUE(first->read());
        ASSERT_TRUE(first->damage());
        EXPECT_EQ(first->damage()->cause, Cause::Broken);
        EXPECT_FALSE(first->damage()->backup.isValid());
        EXPECT_EQ(first->damage()->kept.size(), hasBackup ? 2 : 1);
        EXPECT_FALSE(QFile::exists(file()));
        EXPECT_FALSE(QFile::exists(backup()));
        const auto next = preferences();
        ASSERT_TRUE(next->read());
        EXPECT_FALSE(next->damage());
    }
    EXPECT_EQ(asides().size(), 2);
}

TEST_F(PreferencesDamageTest, WhatAnotherProcessMendsMeanwhileIsReadAndNotReplaced)
{
    saveTwice();
    const QByteArray good = contentOf(file());
    put(file(), "damaged");
    InterveningLayer layer;
    // The first two are of the lock under which strays are removed.
    layer.before("flock", 2, [&] { put(file(), good); });
    const auto first = preferences(&layer);
    ASSERT_TRUE(first->read());
    EXPECT_FALSE(first->damage());
    EXPECT_EQ(first->copyAppValue(one), QVariant(2LL));
    EXPECT_EQ(contentOf(file()), good);
    EXPECT_TRUE(asides().isEmpty());
}

TEST_F(PreferencesDamageTest, DamageBeforeASaveIsToldOnceItIsSaved)
{
    saveTwice();
    const auto first = preferences();
    ASSERT_TRUE(first->read());
    put(file(), "damaged");
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->kept, QStringList(pathOf(asides().value(0))));
    first->setAppValue(two, 3LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_FALSE(first->damage());
}

TEST_F(PreferencesDamageTest, WhatCannotBeKeptAsideNowStaysInItsPlaceAndNothingIsSavedOverIt)
{
    saveTwice();
    put(file(), "damaged");
    const auto lock = [this](FileLayer &layer) {
        PreferencesFile locked(layer, file());
        EXPECT_TRUE(locked.locate(false));
        return locked.lock(in(QStringLiteral("locks")), 0);
    };
    const auto expectUnread = [this](Preferences &first, const QString &obstacle) {
        const Result<> read = first.read();
        EXPECT_FALSE(read);
        EXPECT_TRUE(read.error.contains(obstacle)) << qPrintable(read.error);
        EXPECT_TRUE(first.isUnread());
        ASSERT_TRUE(first.damage());
        EXPECT_EQ(first.damage()->backup, savedBefore);
        EXPECT_TRUE(first.damage()->kept.isEmpty());
        EXPECT_EQ(first.copyAppValue(one), QVariant(1LL)) << "the backup";
        first.setAppValue(two, 2LL);
        EXPECT_FALSE(first.appSynchronize());
        EXPECT_EQ(contentOf(file()), "damaged");
        EXPECT_EQ(namesIn(folder()).size(), 2);
    };
    Result<FileLock> held = lock(FileLayer::real());
    ASSERT_TRUE(held) << qPrintable(held.error);
    const auto waiting = preferences();
    expectUnread(*waiting, QStringLiteral("is locked by another process"));
    held.value.reset();

    FailingFileLayer full;
    full.hasLinks = false;
    full.space = 0;
    const auto first = preferences(&full);
    expectUnread(*first, QStringLiteral("No space left on device"));
    full.space = 1'000'000;
    ASSERT_TRUE(first->read());
    EXPECT_FALSE(first->isUnread());
    ASSERT_TRUE(first->damage());
    EXPECT_EQ(first->damage()->kept.size(), 1);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesDamageTest, WhoOnlyReadsReadsTheBackupAndWritesNothing)
{
    saveTwice();
    Preferences::Options readOnly = options();
    readOnly.isReadOnly = true;
    // What a writer of the file that was killed leaves beside it.
    const QByteArray hash = QCryptographicHash::hash("org.example.Test.plist", QCryptographicHash::Sha1);
    put(folder() + QStringLiteral("/.quenby-%1-1").arg(QLatin1StringView(hash.toHex().left(16))), "left");
    for (const bool isGone : {false, true}) {
        if (isGone)
            ASSERT_TRUE(QFile::remove(file()));
        else
            put(file(), "damaged");
        const QStringList names = namesIn(folder());
        Preferences first(domain, readOnly);
        EXPECT_TRUE(first.read());
        EXPECT_FALSE(first.isUnread());
        EXPECT_EQ(first.copyAppValue(one), QVariant(1LL));
        EXPECT_TRUE(first.keepAsideCopy(QStringLiteral("test")));
        first.setAppValue(one, 3LL);
        EXPECT_FALSE(first.appSynchronize());
        EXPECT_EQ(namesIn(folder()), names);
        EXPECT_TRUE(isGone || contentOf(file()) == "damaged");
    }
    // Nothing is known without a good backup.
    ASSERT_TRUE(QFile::remove(backup()));
    put(file(), "damaged");
    Preferences first(domain, readOnly);
    EXPECT_FALSE(first.read());
    EXPECT_TRUE(first.isUnread());
    EXPECT_EQ(contentOf(file()), "damaged");
    ASSERT_TRUE(QFile::remove(file()));
    EXPECT_TRUE(first.read()) << "a first run";
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
