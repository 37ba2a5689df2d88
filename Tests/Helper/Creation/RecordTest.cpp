// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Record.h"

#include <functional>
#include <gtest/gtest.h>

using Creation::Record;

namespace {

/// A file in a folder in a folder that was there.
Record sample()
{
    Record record;
    record.target = "/home/somebody";
    record.targetIdentity = {1, 2};
    Record::Entry used;
    used.kind = Record::Entry::Kind::UsedFolder;
    used.name = "there";
    used.identity = {1, 3};
    Record::Entry folder;
    folder.kind = Record::Entry::Kind::Folder;
    folder.mode = 02750;
    folder.folder = 0;
    folder.name = "new";
    folder.identity = {1, 4};
    Record::Entry file;
    file.mode = 0640;
    file.folder = 1;
    file.name = "a\nb";
    file.identity = {1, ~ino_t(0)};
    file.size = qint64(1) << 40;
    file.modified = {-5, 999'999'999};
    record.entries = {used, folder, file};
    return record;
}

} // namespace

TEST(RecordTest, SurvivesStoring)
{
    const Record record = sample();
    const auto stored = Record::fromVariant(record.toVariant());
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->target, record.target);
    EXPECT_EQ(stored->targetIdentity, record.targetIdentity);
    ASSERT_EQ(stored->entries.size(), record.entries.size());
    for (std::size_t i = 0; i < record.entries.size(); ++i) {
        const Record::Entry &expected = record.entries[i];
        const Record::Entry &entry = stored->entries[i];
        EXPECT_EQ(entry.kind, expected.kind);
        EXPECT_EQ(entry.mode, expected.mode);
        EXPECT_EQ(entry.folder, expected.folder);
        EXPECT_EQ(entry.name, expected.name);
        EXPECT_EQ(entry.identity, expected.identity);
        EXPECT_EQ(entry.size, expected.size);
        EXPECT_EQ(entry.modified.tv_sec, expected.modified.tv_sec);
        EXPECT_EQ(entry.modified.tv_nsec, expected.modified.tv_nsec);
    }
    EXPECT_EQ(stored->path(2), QStringLiteral("there/new/a␊b"));
}

TEST(RecordTest, ShowsTheBytesOfANameThatIsNoText)
{
    Record record = sample();
    record.entries[2].name = "caf\xe9";
    EXPECT_EQ(record.path(2), QStringLiteral("there/new/caf<0xE9>"));
}

TEST(RecordTest, IsEmptyIfNothingWasMade)
{
    Record record = sample();
    EXPECT_FALSE(record.isEmpty());
    record.entries.resize(1);
    EXPECT_TRUE(record.isEmpty());
}

TEST(RecordTest, SomeOfTheEntriesComeWithTheirFolders)
{
    Record record = sample();
    Record::Entry beside = record.entries[2];
    beside.name = "beside";
    record.entries.insert(record.entries.begin(), beside);
    record.entries[0].folder = Record::inTarget;
    record.entries[2].folder = 1;
    record.entries[3].folder = 2;
    const Record chosen = record.only({3});
    EXPECT_EQ(chosen.target, record.target);
    EXPECT_EQ(chosen.targetIdentity, record.targetIdentity);
    ASSERT_EQ(chosen.entries.size(), 3U);
    EXPECT_EQ(chosen.path(2), record.path(3));
    EXPECT_EQ(chosen.entries[2].identity, record.entries[3].identity);
    EXPECT_TRUE(Record::fromVariant(chosen.toVariant()).has_value());
    EXPECT_EQ(record.only({3, 2, 1, 0}).entries.size(), 4U);
    EXPECT_TRUE(record.only({}).entries.empty());
}

TEST(RecordTest, WhatIsNoRecordIsNotRead)
{
    EXPECT_FALSE(Record::fromVariant({}).has_value());
    const std::vector<std::function<void(Record &)>> changes = {
        [](Record &record) { record.target = "relative"; },
        [](Record &record) { record.target = ""; },
        [](Record &record) { record.target = QByteArray("/home\0/x", 8); },
        [](Record &record) { record.entries[2].name = "../x"; },
        [](Record &record) { record.entries[2].name = ".."; },
        [](Record &record) { record.entries[2].name = ""; },
        [](Record &record) { record.entries[2].name = QByteArray("a\0b", 3); },
        [](Record &record) { record.entries[1].kind = static_cast<Record::Entry::Kind>(3); },
        [](Record &record) { record.entries[1].kind = Record::Entry::Kind::File; },
        [](Record &record) { record.entries[1].folder = 1; },
        [](Record &record) { record.entries[0].folder = 2; },
        [](Record &record) { record.entries[0].folder = -2; },
        [](Record &record) { record.entries[2].folder = 1000; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Record record = sample();
        changes[i](record);
        EXPECT_FALSE(Record::fromVariant(record.toVariant()).has_value()) << i;
    }
    QVariantMap stored = sample().toVariant();
    const QByteArray packed = stored[QStringLiteral("entries")].toByteArray();
    for (qsizetype size = 1; size < packed.size(); ++size) {
        stored[QStringLiteral("entries")] = packed.first(size);
        const auto record = Record::fromVariant(stored);
        EXPECT_TRUE(!record || record->entries.size() < 3) << size;
    }
}
