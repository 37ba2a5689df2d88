// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/History.h"

#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Platform/Files/KilledAtRename.h"

#include <optional>

namespace {

class HistoryTest : public FileFixture
{
protected:
    HistoryTest()
        : lock_(history_.lock())
    {
        EXPECT_EQ(lock_.error, QString());
        creation_.id = QStringLiteral("first");
        creation_.label = QStringLiteral("A preset \u00e4");
        creation_.begun = 1234;
        creation_.records.resize(2);
        creation_.records[0].target = "/some/where";
        creation_.records[1].target = "/else/where";
        Creation::Record::Entry entry;
        entry.kind = Creation::Record::Entry::Kind::File;
        entry.mode = 0640;
        entry.name = "made";
        entry.identity = {5, 7};
        entry.size = 12;
        entry.modified = {100, 999};
        creation_.records[0].entries.push_back(entry);
    }

    /// What is kept, which can be read.
    std::optional<History::Creation> kept() const
    {
        const auto read = history_.read();
        EXPECT_TRUE(read) << qPrintable(read.error);
        return read.value.value_or(std::nullopt);
    }
    void unlock() { lock_.value.reset(); }
    QString file() const { return in(QStringLiteral("state/Quenby/LastCreation.plist")); }

    const History history_{in(QStringLiteral("state/Quenby"))};
    History::Creation creation_;

private:
    Result<FileLock> lock_;
};

} // namespace

TEST_F(HistoryTest, WhatAKilledWriterLeftGoesWithTheNextLock)
{
    KilledAtRename layer;
    for (const char *name : {"LastCreation.plist", "LastCreation-undoing.plist"})
        EXPECT_FALSE(DurableFileWriter(&layer).write(
            in(QStringLiteral("state/Quenby/") + QLatin1String(name)), "half"));
    const QString folder = in(QStringLiteral("state/Quenby"));
    EXPECT_EQ(namesIn(folder).size(), 3);
    unlock();
    ASSERT_TRUE(history_.lock());
    EXPECT_EQ(namesIn(folder), QStringList(QStringLiteral("LastCreation.plist.lock")));
}

TEST_F(HistoryTest, RemembersTheLastOne)
{
    EXPECT_FALSE(kept());
    ASSERT_TRUE(history_.store(creation_));
    creation_.id = QStringLiteral("second");
    ASSERT_TRUE(history_.store(creation_));
    const std::optional<History::Creation> read = kept();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->id, QStringLiteral("second"));
    EXPECT_EQ(read->label, creation_.label);
    EXPECT_EQ(read->begun, 1234);
    ASSERT_EQ(read->records.size(), 2U);
    EXPECT_EQ(read->records[1].target, "/else/where");
    const Creation::Record &record = read->records[0];
    EXPECT_EQ(record.target, "/some/where");
    ASSERT_EQ(record.entries.size(), 1U);
    EXPECT_EQ(record.entries[0].name, "made");
    EXPECT_EQ(record.entries[0].identity, (Creation::FileIdentity{5, 7}));
    EXPECT_EQ(record.entries[0].modified.tv_nsec, 999);
}

TEST_F(HistoryTest, Forgets)
{
    ASSERT_TRUE(history_.store(creation_));
    ASSERT_TRUE(history_.forget());
    EXPECT_FALSE(kept());
    EXPECT_TRUE(history_.forget()) << "nothing to do is no failure";
}

TEST_F(HistoryTest, KnowsWhatIsBeingUndone)
{
    EXPECT_TRUE(history_.beginUndo()) << "nothing to do is no failure";
    ASSERT_TRUE(history_.store(creation_));
    EXPECT_FALSE(kept()->isBeingUndone);
    ASSERT_TRUE(history_.beginUndo());
    ASSERT_TRUE(history_.beginUndo());
    EXPECT_TRUE(history_.hasCreation());
    std::optional<History::Creation> read = kept();
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->isBeingUndone);
    EXPECT_EQ(read->id, creation_.id);

    read->records[0].entries.clear();
    ASSERT_TRUE(history_.store(*read));
    read = kept();
    EXPECT_TRUE(read->isBeingUndone);
    EXPECT_TRUE(read->records[0].entries.empty());

    ASSERT_TRUE(history_.endUndo());
    EXPECT_FALSE(kept()->isBeingUndone);
    ASSERT_TRUE(history_.beginUndo());
    ASSERT_TRUE(history_.forget());
    EXPECT_FALSE(history_.hasCreation());
}

TEST_F(HistoryTest, ANewCreationCountsAndNotTheOneThatWasBeingUndone)
{
    ASSERT_TRUE(history_.store(creation_));
    ASSERT_TRUE(history_.beginUndo());
    creation_.id = QStringLiteral("second");
    ASSERT_TRUE(history_.store(creation_));
    const std::optional<History::Creation> read = kept();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->id, QStringLiteral("second"));
    EXPECT_FALSE(read->isBeingUndone);
    ASSERT_TRUE(history_.forget());
    EXPECT_FALSE(history_.hasCreation());
}

TEST_F(HistoryTest, TellsWhatItCannotReadOrWrite)
{
    ASSERT_TRUE(history_.store(creation_));
    for (const QByteArray &damaged :
         {QByteArray(), QByteArray("bplist00"), QByteArray("<plist version=\"1.0\"><dict/></plist>")}) {
        put(file(), damaged);
        EXPECT_FALSE(history_.read().error.isEmpty()) << damaged.constData();
    }
    put(in(QStringLiteral("file")), "no folder");
    const History nowhere(in(QStringLiteral("file/Quenby")));
    EXPECT_FALSE(nowhere.store(creation_));
    EXPECT_FALSE(nowhere.lock());
    EXPECT_FALSE(History(QString()).lock());
}

TEST_F(HistoryTest, IsClosedToOthers)
{
    ASSERT_TRUE(history_.store(creation_));
    EXPECT_EQ(QFile::permissions(file()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(HistoryTest, ReadsWhatTheFirstVersionWrote)
{
    QFile written(QStringLiteral(QUENBY_TEST_DATA "/LastCreation-first-version.plist"));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    put(file(), written.readAll());
    const std::optional<History::Creation> read = kept();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->label, QStringLiteral("Letters"));
    EXPECT_GT(read->begun, 0);
    ASSERT_EQ(read->records.size(), 1U);
    EXPECT_EQ(read->records[0].target, "/home/user/target");
    ASSERT_EQ(read->records[0].entries.size(), 2U);
    EXPECT_TRUE(read->records[0].entries[0].isFolder());
    EXPECT_EQ(read->records[0].path(1), QStringLiteral("Folder/File"));
    EXPECT_EQ(read->records[0].entries[1].mode, 0640);
    EXPECT_EQ(read->records[0].entries[1].size, 12);
}
