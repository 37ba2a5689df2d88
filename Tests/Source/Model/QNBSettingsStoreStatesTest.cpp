// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Domains of others, of other times, and out of reach.

#include "QNBSettingsStoreFixture.h"

namespace {

class QNBSettingsStoreStatesTest : public QNBSettingsStoreFixture
{
};

} // namespace

TEST_F(QNBSettingsStoreStatesTest, ReadingSeesWhatAnotherProgramHasSavedSince)
{
    Preferences preferences(domain, options());
    QNBSettings settings;
    ASSERT_TRUE(writeSettings(readSettings()));
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_EQ(settings.presets.size(), 2);
    ASSERT_TRUE(writeSettings(QNBSettings()));
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_TRUE(settings.presets.isEmpty());
}

TEST_F(QNBSettingsStoreStatesTest, WhatCannotBeReadIsNeitherAFirstRunNorSavedOver)
{
    // As with a home that is not mounted yet.
    const QString elsewhere = folder_.filePath(QStringLiteral("home"));
    ASSERT_TRUE(QFile::link(elsewhere + QStringLiteral("/target.plist"), domainPath()));
    Preferences preferences(domain, options());
    QNBSettings settings;
    EXPECT_FALSE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_FALSE(preferences.hasPendingValues()) << "nobody knows that a key is absent";
    EXPECT_FALSE(QNBSettingsStore::write(preferences, settings));

    ASSERT_TRUE(QDir().mkpath(elsewhere));
    writePropertyList(
        elsewhere + QStringLiteral("/target.plist"),
        QVariantMap{{QNBPreferenceKey::presetsStored, QVariantMap{{QStringLiteral("loaded"), true}}},
                    {QNBPreferenceKey::presets, QVariantList{record(QStringLiteral("Mine"))}}});
    const QVariantMap mine = domainOnDisk();
    EXPECT_FALSE(QNBSettingsStore::write(preferences, settings)) << "still unread";
    EXPECT_EQ(domainOnDisk(), mine);
    Preferences again(domain, options());
    ASSERT_TRUE(QNBSettingsStore::read(again, bundle(), settings));
    EXPECT_EQ(labels(settings), QStringList{QStringLiteral("Mine")});
}

TEST_F(QNBSettingsStoreStatesTest, ASecondSaveOfTheSameLeavesTheBackupAsItWas)
{
    QNBSettings settings = readSettings();
    ASSERT_TRUE(writeSettings(settings));
    const QVariantMap first = domainOnDisk();
    settings.presets.removeLast();
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(writeSettings(settings));
    QFile backup(domainPath() + QStringLiteral(".backup"));
    ASSERT_TRUE(backup.open(QIODevice::ReadOnly));
    const QByteArray bytes = backup.readAll();
    EXPECT_EQ(PropertyList::read(bytes).value, QVariant(first));
    const auto presets = QNBSettingsStore::presetsOf(bytes);
    ASSERT_TRUE(presets) << qPrintable(presets.error);
    ASSERT_EQ(presets->size(), 2);
    EXPECT_EQ((*presets)[1]->label(), QStringLiteral("Default B"));
}

TEST_F(QNBSettingsStoreStatesTest, ADomainOfTheFirstVersionIsWrittenAnewOnlyWhenItChanges)
{
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUENBY_MODEL_TEST_DATA "/first-version.plist"), domainPath()));
    QFile file(domainPath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    QFile backup(domainPath() + QStringLiteral(".backup"));
    const auto contentIs = [](QFile &opened, const QByteArray &bytes) {
        const bool isSame = opened.open(QIODevice::ReadOnly) && opened.readAll() == bytes;
        opened.close();
        return isSame;
    };

    Preferences preferences(domain, options());
    QNBSettings settings;
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_EQ(settings.presets.size(), 6);
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    EXPECT_TRUE(contentIs(file, before));
    EXPECT_FALSE(backup.exists());
    settings.presets.removeFirst();
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    EXPECT_EQ(readSettings().presets.size(), 5);
    EXPECT_TRUE(contentIs(backup, before));
    EXPECT_TRUE(keptAside().isEmpty());
    const auto presets = QNBSettingsStore::presetsOf(before);
    ASSERT_TRUE(presets);
    EXPECT_EQ(presets->constFirst()->label(), QStringLiteral("Client Project"));
}

TEST_F(QNBSettingsStoreStatesTest, AStateWithoutPresetsSaysSo)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("garbage"), *PropertyList::write(QVariantMap()).bytes}) {
        const auto presets = QNBSettingsStore::presetsOf(bytes);
        EXPECT_FALSE(presets);
        EXPECT_FALSE(presets.error.isEmpty());
    }
}
