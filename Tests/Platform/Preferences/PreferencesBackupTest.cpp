// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What Preferences writes, and what stays of the states before.

#include "Platform/Preferences/EarlierStates.h"
#include "PreferencesFixture.h"
#include "Tests/Platform/Files/InterveningLayer.h"

#include <cerrno>
#include <fcntl.h>

namespace {

class PreferencesBackupTest : public PreferencesFixture
{
protected:
    QString states() const { return in(QStringLiteral("states")); }
    std::unique_ptr<Preferences> withStates(FileLayer *layer = nullptr) const
    {
        Preferences::Options with = options(layer);
        with.statesFolder = states();
        return std::make_unique<Preferences>(domain, with);
    }
    static void saveWith(Preferences &preferences, const QVariantMap &values)
    {
        for (auto value = values.begin(); value != values.end(); ++value)
            preferences.setAppValue(value.key(), *value);
        const Result<> saved = preferences.appSynchronize();
        ASSERT_TRUE(saved) << qPrintable(saved.error);
        EXPECT_FALSE(preferences.hasPendingValues());
    }
    static EncodedPreference encoded(const QVariant &value)
    {
        EncodedPreference result;
        result.top = result.writer.value(value);
        return result;
    }
};

} // namespace

TEST_F(PreferencesBackupTest, TheBackupIsTheLastDifferentStateHoweverOftenTheSameIsSaved)
{
    save(one, 1LL);
    save(one, 2LL);
    const QByteArray content = contentOf(file());
    InterveningLayer layer;
    const auto same = preferences(&layer);
    for (int i = 0; i < 3; ++i)
        saveWith(*same, {{one, 2LL}});
    EXPECT_FALSE(layer.made().contains("rename")) << "nothing is written";
    EXPECT_EQ(contentOf(file()), content);
    EXPECT_EQ(valuesOf(contentOf(backup())), (QVariantMap{{one, 1LL}}));
}

TEST_F(PreferencesBackupTest, TheSameInAnotherOrderOrFormIsNotWritten)
{
    const QVariantMap values{
        {one, 1LL}, {two, QVariantList{true, 0.5}}, {QStringLiteral("a"), QStringLiteral("b")}};
    for (const PropertyList::Form form : {PropertyList::Form::Binary, PropertyList::Form::XML}) {
        put(file(), listOf(values, form));
        const QByteArray content = contentOf(file());
        const auto first = preferences();
        for (const QString &key : {two, one, QStringLiteral("a")}) {
            saveWith(*first, {{key, values.value(key)}});
            first->setAppValue(two, encoded(values.value(two)));
            saveWith(*first, values);
            EXPECT_EQ(contentOf(file()), content);
        }
        EXPECT_FALSE(QFile::exists(backup()));
    }
}

TEST_F(PreferencesBackupTest, AnyDifferenceIsWritten)
{
    // Each next state differs from the one before in value, type or keys only; many have the same size.
    const QVariantList next{1LL,
                            2LL,
                            2.0,
                            QStringLiteral("2"),
                            QByteArray("2"),
                            true,
                            false,
                            QVariantList{1LL, 2LL},
                            QVariantList{2LL, 1LL},
                            QVariantMap{{one, 1LL}},
                            QVariantMap{{two, 1LL}}};
    const auto first = preferences();
    for (const QVariant &value : next) {
        saveWith(*first, {{two, value}});
        EXPECT_EQ(onDisk(), (QVariantMap{{two, value}}));
        EXPECT_EQ(onDisk().value(two).metaType(), value.metaType());
    }
    EXPECT_EQ(valuesOf(contentOf(backup())), (QVariantMap{{two, next[next.size() - 2]}}));
}

TEST_F(PreferencesBackupTest, AKeyThatWasSavedAndChangesNoMoreStandsInTheFileOnce)
{
    save(one, 1LL);
    const auto first = preferences();
    EXPECT_EQ(first->copyAppValue(one), QVariant(1LL));
    saveWith(*first, {{one, 10LL}});
    saveWith(*first, {{two, 20LL}});
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 10LL}, {two, 20LL}}));
    EXPECT_EQ(contentOf(file()).size(), listOf(onDisk()).size());
}

TEST_F(PreferencesBackupTest, WhatMayNotBeOnTheDiskIsWrittenAgain)
{
    class FolderThatIsNotSynchronised : public FileLayer
    {
    public:
        bool fails = true;
        int renames = 0;
        int open(const QByteArray &path, int flags, mode_t mode) override
        {
            const int descriptor = FileLayer::open(path, flags, mode);
            if ((flags & O_DIRECTORY) != 0)
                folder_ = descriptor;
            return descriptor;
        }
        int fsync(int descriptor) override
        {
            if (!fails || descriptor != folder_)
                return FileLayer::fsync(descriptor);
            errno = EIO;
            return -1;
        }
        int rename(const QByteArray &from, const QByteArray &to) override
        {
            ++renames;
            return FileLayer::rename(from, to);
        }

    private:
        int folder_ = -1;
    } layer;
    const auto first = preferences(&layer);
    first->setAppValue(one, 1LL);
    EXPECT_FALSE(first->appSynchronize());
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 1LL}})) << "as it should look";
    EXPECT_TRUE(first->hasPendingValues());
    layer.fails = false;
    layer.renames = 0;
    EXPECT_TRUE(first->appSynchronize());
    EXPECT_GE(layer.renames, 1);
}

TEST_F(PreferencesBackupTest, WhatIsReplacedIsKeptAsAnEarlierState)
{
    const auto first = withStates();
    saveWith(*first, {{one, 1LL}});
    EXPECT_TRUE(EarlierStates(states()).all().isEmpty()) << "there was none";
    saveWith(*first, {{one, 1LL}});
    EXPECT_TRUE(EarlierStates(states()).all().isEmpty()) << "it is the same";
    saveWith(*first, {{one, 2LL}});
    saveWith(*first, {{one, 3LL}});
    const QList<EarlierStates::State> kept = EarlierStates(states()).all();
    ASSERT_EQ(kept.size(), 1) << "one an hour";
    EXPECT_EQ(valuesOf(contentOf(kept.first().path)), (QVariantMap{{one, 1LL}}));
    EXPECT_LE(std::abs(kept.first().saved.secsTo(QDateTime::currentDateTimeUtc())), 60);
}

TEST_F(PreferencesBackupTest, ASaveIsDoneThoughNoEarlierStateCanBeKept)
{
    put(states(), "no folder");
    const auto first = withStates();
    saveWith(*first, {{one, 1LL}});
    saveWith(*first, {{one, 2LL}});
    EXPECT_EQ(onDisk(), (QVariantMap{{one, 2LL}}));
    EXPECT_EQ(valuesOf(contentOf(backup())), (QVariantMap{{one, 1LL}}));
    EXPECT_EQ(contentOf(states()), "no folder");
}
