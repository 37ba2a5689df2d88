// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/EarlierStates.h"
#include "Tests/Platform/Files/FailingFileLayer.h"
#include "Tests/Platform/Files/FileFixture.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

class EarlierStatesTest : public FileFixture
{
protected:
    QString folder() const { return in(QStringLiteral("state/Earlier States")); }
    /// Keeps bytes as they would have been saved, and been replaced, so many minutes after the start.
    Result<> keepAt(int minutes, const QByteArray &bytes)
    {
        const QDateTime now = start_.addSecs(qint64(60) * minutes);
        Result<> kept = states_.keep(bytes, now, now);
        const QList<EarlierStates::State> all = states_.all();
        // A copy is as old as the moment that this stands for.
        if (kept && !all.isEmpty() && all.first().saved == now) {
            QFile file(all.first().path);
            EXPECT_TRUE(file.open(QIODevice::ReadWrite) &&
                        file.setFileTime(now, QFileDevice::FileModificationTime));
        }
        return kept;
    }
    QList<QByteArray> contents() const
    {
        QList<QByteArray> result;
        for (const EarlierStates::State &state : states_.all())
            result.append(contentOf(state.path));
        return result;
    }

    const QDateTime start_ = QDateTime(QDate(2026, 1, 1), QTime(8, 0), Qt::UTC);
    const EarlierStates states_{folder()};
};

} // namespace

TEST_F(EarlierStatesTest, AtMostOneAnHourIsKeptTheYoungestFirst)
{
    ASSERT_TRUE(keepAt(0, "a"));
    ASSERT_TRUE(keepAt(59, "b"));
    EXPECT_EQ(contents(), QList<QByteArray>{"a"});
    ASSERT_TRUE(keepAt(60, "c"));
    EXPECT_EQ(contents(), (QList<QByteArray>{"c", "a"}));
    EXPECT_EQ(states_.all().first().saved, start_.addSecs(3600));
    EXPECT_EQ(states_.all().first().size, 1);
}

TEST_F(EarlierStatesTest, AStateThatIsKeptIsNotKeptAgain)
{
    ASSERT_TRUE(keepAt(0, "a"));
    ASSERT_TRUE(keepAt(100, "b"));
    ASSERT_TRUE(keepAt(200, "a"));
    EXPECT_EQ(contents(), (QList<QByteArray>{"b", "a"}));
}

TEST_F(EarlierStatesTest, TheOldestGoWhenThereAreTooMany)
{
    QList<QByteArray> expected;
    for (int i = 0; i < EarlierStates::numberKept + 3; ++i) {
        ASSERT_TRUE(keepAt(100 * i, QByteArray::number(i)));
        expected.prepend(QByteArray::number(i));
    }
    expected.resize(EarlierStates::numberKept);
    EXPECT_EQ(contents(), expected);
}

TEST_F(EarlierStatesTest, OneThatWouldBeTheFirstToGoIsNotWritten)
{
    for (int i = 0; i < EarlierStates::numberKept; ++i)
        ASSERT_TRUE(keepAt(100 * i, QByteArray::number(i)));
    FailingFileLayer layer;
    const EarlierStates states(folder(), &layer);
    ASSERT_TRUE(states.keep("old", start_.addDays(-1), start_.addYears(1)));
    EXPECT_EQ(layer.calls, 0);
    ASSERT_TRUE(states.keep("young", start_.addSecs(60), start_.addYears(1)));
    EXPECT_GT(layer.calls, 0);
    EXPECT_TRUE(contents().contains("young"));
}

TEST_F(EarlierStatesTest, OneForWhichTheYoungerLeaveNoRoomIsNotWritten)
{
    ASSERT_TRUE(keepAt(0, QByteArray(EarlierStates::sizeKept - 1, 'a')));
    FailingFileLayer layer;
    ASSERT_TRUE(EarlierStates(folder(), &layer).keep("old", start_.addDays(-1), start_.addYears(1)));
    EXPECT_EQ(layer.calls, 0);
}

TEST_F(EarlierStatesTest, TheOldestGoWhenTheyAreTooLarge)
{
    const qsizetype third = EarlierStates::sizeKept / 3;
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(keepAt(100 * i, QByteArray(third, char('a' + i))));
    ASSERT_EQ(states_.all().size(), 3);
    EXPECT_EQ(contentOf(states_.all().last().path).left(1), "b");
    ASSERT_TRUE(keepAt(1000, QByteArray(EarlierStates::sizeKept + 1, 'x')));
    EXPECT_EQ(states_.all().size(), 3) << "one that is too large pushes out no others";
}

TEST_F(EarlierStatesTest, AreTheOwnersAloneAndWhole)
{
    ASSERT_TRUE(keepAt(0, "a"));
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(folder()).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700U);
    ASSERT_EQ(::stat(QFile::encodeName(states_.all().first().path).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0600U);

    int failures = 0;
    for (int call = 0;; ++call) {
        FailingFileLayer layer;
        layer.failingCall = call;
        const QDateTime now = start_.addDays(call + 1);
        failures +=
            EarlierStates(folder(), &layer).keep("another " + QByteArray::number(call), now, now) ? 0 : 1;
        for (const QByteArray &content : contents())
            EXPECT_TRUE(content == "a" || content.startsWith("another ")) << call;
        EXPECT_EQ(namesIn(folder()).size(), states_.all().size()) << "nothing is left over";
        if (layer.calls <= call)
            break;
    }
    EXPECT_GT(failures, 5);
}

TEST_F(EarlierStatesTest, OtherFilesAreNeitherListedNorRemoved)
{
    ASSERT_TRUE(keepAt(0, "a"));
    const QStringList others{QStringLiteral("note.plist"), QStringLiteral("20260101T080000.000Z.plist.bak")};
    for (const QString &name : others)
        put(folder() + u'/' + name, "mine");
    ASSERT_TRUE(QFile::link(in(QStringLiteral("elsewhere")),
                            folder() + QStringLiteral("/20260101T090000.000Z.plist")));
    for (int i = 1; i < EarlierStates::numberKept + 3; ++i)
        ASSERT_TRUE(keepAt(100 * i, QByteArray::number(i)));
    EXPECT_EQ(states_.all().size(), EarlierStates::numberKept);
    EXPECT_EQ(namesIn(folder()).size(), EarlierStates::numberKept + 3);
}

TEST_F(EarlierStatesTest, TwoOfOneMomentAreBothKept)
{
    ASSERT_TRUE(states_.keep("a", start_, start_));
    // The first copy was made now, long after the time that the second is kept at.
    ASSERT_TRUE(states_.keep("b", start_, start_));
    EXPECT_EQ(contents(), (QList<QByteArray>{"b", "a"})) << "a clock that was put back stops nothing";
}

TEST_F(EarlierStatesTest, NothingIsWrittenIntoAnotherUsersHome)
{
    // Only the administrator can give a folder away, and only he comes into such a home.
    if (::geteuid() != 0)
        return;
    ASSERT_EQ(::chown(QFile::encodeName(root()).constData(), 12345, 12345), 0);
    EXPECT_TRUE(keepAt(0, "a"));
    EXPECT_EQ(namesIn(root()), QStringList());
}
