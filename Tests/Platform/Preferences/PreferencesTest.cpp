// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PreferencesFixture.h"
#include "Tests/Platform/Files/FailingFileLayer.h"

#include <QElapsedTimer>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class PreferencesTest : public PreferencesFixture
{
protected:
    static EncodedPreference encoded(const QVariant &value)
    {
        EncodedPreference result;
        result.top = result.writer.value(value);
        return result;
    }
};

} // namespace

TEST_F(PreferencesTest, AValueSetIsSeenAtOnceAndStoredBySynchronising)
{
    const auto first = preferences();
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    first->setAppValue(one, 1LL);
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    EXPECT_TRUE(first->hasPendingValues());
    EXPECT_FALSE(QFile::exists(file()));
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_FALSE(first->hasPendingValues());
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    EXPECT_EQ(preferences()->copyAppValue(one), QVariant(1LL));
    EXPECT_TRUE(contentOf(file()).startsWith("bplist00"));
    EXPECT_EQ(QFile::permissions(file()) & ~(QFile::ReadUser | QFile::WriteUser),
              QFile::ReadOwner | QFile::WriteOwner);
}

TEST_F(PreferencesTest, AnInvalidValueRemovesTheKey)
{
    put(file(), listOf({{one, 1LL}, {two, 2LL}}));
    const auto first = preferences();
    first->setAppValue(one, QVariant());
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_FALSE(first->copyAppValue(one).isValid());
    EXPECT_EQ(onDisk(), (QVariantMap{{two, 2LL}}));
}

TEST_F(PreferencesTest, UnknownKeysSurviveWithTheirTypes)
{
    const QVariantMap others{
        {QStringLiteral("true"), true},
        {QStringLiteral("integer"), 1LL},
        {QStringLiteral("unsigned"), 0xffffffffffffffffULL},
        {QStringLiteral("real"), 1.0},
        {QStringLiteral("date"), QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC)},
        {QStringLiteral("data"), QByteArray("\0\1", 2)},
        {QStringLiteral("array"), QVariantList{QStringLiteral("ä"), QVariantMap{{one, QVariantList()}}}}};
    for (const auto form : {PropertyList::Form::XML, PropertyList::Form::Binary}) {
        put(file(), listOf(others, form));
        save(one, QStringLiteral("saved"));
        QVariantMap expected = others;
        expected.insert(one, QStringLiteral("saved"));
        const QVariantMap found = onDisk();
        EXPECT_EQ(found, expected);
        for (auto it = expected.cbegin(); it != expected.cend(); ++it)
            EXPECT_EQ(found.value(it.key()).typeId(), it.value().typeId()) << qPrintable(it.key());
        EXPECT_TRUE(contentOf(file()).startsWith("bplist00"));
    }
}

TEST_F(PreferencesTest, WhatOthersSavedMeanwhileIsMergedAndSeen)
{
    const auto first = preferences();
    first->setAppValue(one, 1LL);
    ASSERT_TRUE(first->appSynchronize());
    save(two, 2LL);
    EXPECT_FALSE(first->copyAppValue(two).isValid());
    first->setAppValue(one, 3LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 3LL}, {two, 2LL}}));
    EXPECT_EQ(first->copyAppValue(two), QVariant(2LL));
    save(two, 4LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(first->copyAppValue(two), QVariant(4LL));
}

TEST_F(PreferencesTest, EncodedValuesAreWrittenAsTheyAre)
{
    const QVariantList large(1000, QVariantMap{{QStringLiteral("name"), QStringLiteral("value")}});
    const QVariantList small{QStringLiteral("small"), 7LL};
    put(file(), listOf({{QStringLiteral("other"), true}}));
    const auto first = preferences();
    first->setAppValue(one, encoded(large));
    first->setAppValue(two, encoded(small));
    first->setAppValue(QStringLiteral("three"), 3LL);
    EXPECT_EQ(first->copyAppValue(two), QVariant(small));
    PropertyListDocument::Ptr keepAlive;
    EXPECT_EQ(first->copyAppNode(one, &keepAlive).count(), large.size());
    const QVariantMap expected{
        {QStringLiteral("other"), true}, {one, large}, {two, small}, {QStringLiteral("three"), 3LL}};
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(first->appSynchronize());
        EXPECT_EQ(onDisk(), expected);
        EXPECT_EQ(first->copyAppValue(two), QVariant(small));
        first->setAppValue(one, encoded(large));
    }
    // A key that only the saved bytes hold is not lost by a save that does not set it.
    ASSERT_TRUE(first->appSynchronize());
    first->setAppValue(QStringLiteral("three"), 3LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), expected);
}

TEST_F(PreferencesTest, AFailedSaveKeepsEncodedValuesPendingForTheNext)
{
    FailingFileLayer layer;
    const auto first = preferences(&layer);
    first->setAppValue(one, encoded(QVariantList{1LL}));
    first->setAppValue(two, 2LL);
    for (int round = 0; round < 3; ++round) {
        layer.space = 10;
        EXPECT_FALSE(first->appSynchronize());
        EXPECT_TRUE(first->hasPendingValues());
        EXPECT_EQ(first->copyAppValue(one), QVariant(QVariantList{1LL}));
    }
    layer.space = 100'000;
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, QVariantList{1LL}}, {two, 2LL}}));
    // Nothing of the failed attempts is carried along.
    EXPECT_EQ(contentOf(file()).size(), listOf(onDisk()).size());
}

TEST_F(PreferencesTest, FailedSavesChangeNoEncodedValueHoweverMuchWasAddedToIt)
{
    // Small beside what is merged into it, so that the writer makes room again and again.
    QVariantMap others;
    for (int i = 0; i < 5000; ++i)
        others.insert(QString::number(i), QVariantList{qlonglong(i), QStringLiteral("text %1").arg(i)});
    put(file(), listOf(others));
    const QVariantList large(3, QVariantMap{{QStringLiteral("name"), QStringLiteral("1")}});
    const QVariantList small{QStringLiteral("text 7"), 7LL};
    FailingFileLayer layer;
    const auto first = preferences(&layer);
    first->setAppValue(one, encoded(large));
    first->setAppValue(two, encoded(small));
    for (int round = 0; round < 3; ++round) {
        layer.space = 10;
        EXPECT_FALSE(first->appSynchronize());
        EXPECT_EQ(first->copyAppValue(one), QVariant(large));
        EXPECT_EQ(first->copyAppValue(two), QVariant(small));
    }
    layer.space = 10'000'000;
    ASSERT_TRUE(first->appSynchronize());
    others.insert(one, large);
    others.insert(two, small);
    EXPECT_EQ(onDisk(), others);
    EXPECT_EQ(contentOf(file()).size(), listOf(others).size());
}

TEST_F(PreferencesTest, BackupHoldsTheLastGoodFile)
{
    save(one, 1LL);
    EXPECT_FALSE(QFile::exists(backup()));
    const QByteArray before = contentOf(file());
    save(one, 2LL);
    EXPECT_EQ(contentOf(backup()), before);
}

TEST_F(PreferencesTest, EveryCallFailingInTurnLosesNothing)
{
    for (const bool damaged : {false, true}) {
        for (int call = 0;; ++call) {
            save(one, 1LL);
            save(one, 2LL);
            if (damaged)
                put(file(), "damaged");
            FailingFileLayer layer;
            const auto first = preferences(&layer);
            layer.failingCall = call;
            first->setAppValue(two, qlonglong(call));
            const Result<> result = first->appSynchronize();
            EXPECT_EQ(result.ok, !first->hasPendingValues());
            if (!result.ok) {
                EXPECT_TRUE(first->appSynchronize()) << "call " << call;
            }
            const QVariantMap values = onDisk();
            EXPECT_EQ(values.value(two), QVariant(qlonglong(call))) << "call " << call;
            EXPECT_EQ(values.value(one), QVariant(damaged ? 1LL : 2LL)) << "call " << call;
            EXPECT_TRUE(valuesOf(contentOf(backup())).contains(one));
            EXPECT_EQ(asides().size(), damaged ? 1 : 0) << "call " << call;
            for (const QString &name : namesIn(folder())) {
                EXPECT_FALSE(name.startsWith(u'.')) << "call " << call << ' ' << qPrintable(name);
                QFile::remove(QDir(folder()).filePath(name));
            }
            if (layer.calls <= call)
                break;
        }
    }
}

TEST_F(PreferencesTest, LinksOfTheDomainStayLinks)
{
    ASSERT_TRUE(QDir(root()).mkdir(QStringLiteral("elsewhere")));
    const QString target = in(QStringLiteral("elsewhere/target.plist"));
    put(target, listOf({{one, 1LL}}));
    ASSERT_EQ(::symlink("../elsewhere/target.plist",
                        QFile::encodeName(in(QStringLiteral("config/second"))).constData()),
              0);
    ASSERT_EQ(::symlink("second", QFile::encodeName(file()).constData()), 0);
    const auto first = preferences();
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    first->setAppValue(two, 2LL);
    ASSERT_TRUE(first->appSynchronize());
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
    EXPECT_EQ(valuesOf(contentOf(target)), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesTest, LinksThatLeadNowhereFailTheSaveAndKeepTheValues)
{
    for (const char *target : {"org.example.Test.plist", "missing/target.plist"}) {
        ASSERT_EQ(::symlink(target, QFile::encodeName(file()).constData()), 0);
        const auto first = preferences();
        EXPECT_FALSE(first->copyAppValue(one).isValid());
        first->setAppValue(one, 1LL);
        EXPECT_FALSE(first->appSynchronize());
        EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
        ASSERT_TRUE(QFile::remove(file()));
        ASSERT_TRUE(first->read());
        ASSERT_TRUE(first->appSynchronize());
        EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}}));
        ASSERT_TRUE(QFile::remove(file()));
    }
}

TEST_F(PreferencesTest, AMissingFolderIsMadeForItsOwnerOnly)
{
    Preferences::Options elsewhere = options();
    elsewhere.folder = in(QStringLiteral("a/b/config"));
    Preferences first(domain, elsewhere);
    EXPECT_FALSE(first.copyAppValue(one).isValid());
    EXPECT_FALSE(QFile::exists(in(QStringLiteral("a"))));
    first.setAppValue(one, 1LL);
    ASSERT_TRUE(first.appSynchronize());
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(in(QStringLiteral("a/b"))).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700U);
}

TEST_F(PreferencesTest, AFolderThatCannotBeMadeSafelyFailsTheSaveAndTheNextTriesAgain)
{
    int failures = 0;
    for (int call = 0; call < 10; ++call) {
        FailingFileLayer layer;
        layer.failingCall = call;
        Preferences::Options elsewhere = options(&layer);
        elsewhere.folder = in(QStringLiteral("%1/config").arg(call));
        Preferences first(domain, elsewhere);
        first.setAppValue(one, 1LL);
        failures += first.appSynchronize() ? 0 : 1;
        EXPECT_TRUE(!first.hasPendingValues() || first.appSynchronize()) << call;
        EXPECT_EQ(valuesOf(contentOf(first.path())), (QVariantMap{{one, 1LL}})) << call;
    }
    EXPECT_GE(failures, 6);
}

TEST_F(PreferencesTest, ALockThatIsHeldFailsTheSaveInTimeAndADeadHolderDoesNot)
{
    save(one, 1LL);
    const QStringList locks = namesIn(in(QStringLiteral("locks")));
    ASSERT_EQ(locks.size(), 1);
    const QByteArray lock = QFile::encodeName(in(QStringLiteral("locks/") + locks.first()));
    const int held = ::open(lock.constData(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    Preferences::Options patient = options();
    patient.lockTimeout = 2000;
    Preferences first(domain, patient);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(first.copyAppValue(one), QVariant(1LL));
    EXPECT_LT(timer.restart(), 1900);
    first.setAppValue(two, 2LL);
    EXPECT_FALSE(first.appSynchronize());
    EXPECT_GE(timer.elapsed(), 2000);
    EXPECT_LT(timer.elapsed(), 10000);
    EXPECT_TRUE(first.hasPendingValues());
    ::close(held);
    EXPECT_TRUE(first.appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}, {two, 2LL}}));
}

TEST_F(PreferencesTest, TheSameDomainOfTwoHomesHasTwoLocks)
{
    save(one, 1LL);
    Preferences::Options elsewhere = options();
    elsewhere.folder = in(QStringLiteral("other"));
    Preferences second(domain, elsewhere);
    second.setAppValue(one, 1LL);
    ASSERT_TRUE(second.appSynchronize());
    EXPECT_EQ(namesIn(in(QStringLiteral("locks"))).size(), 2);
}
