// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Saves where the disk or the memory comes to its end.

#include "PreferencesFixture.h"
#include "Tests/Session/SmallDisk.h"

#include <QProcess>

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int patience = 60'000;
constexpr qint64 mebibyte = qint64(1024) * 1024;

class PreferencesLimitsTest : public PreferencesFixture
{
protected:
    /// Runs \a work in a child, whose failed expectations count here too.
    template <typename Work>
    static void inAProcessOfItsOwn(Work work)
    {
        const pid_t child = ::fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            work();
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }

    void saveOnAFullDisk(int size, qint64 room) const
    {
        SmallDisk disk(folder());
        put(backup(), listOf({{one, QStringLiteral("older")}}));
        put(file(), listOf({{one, QStringLiteral("old")}}));
        const QByteArray before = contentOf(file());
        const QByteArray backupBefore = contentOf(backup());
        ASSERT_TRUE(disk.fill(room));
        const QStringList names = namesIn(folder());

        const auto first = preferences();
        EXPECT_EQ(first->copyAppValue(one), QVariant(QStringLiteral("old")));
        const QString text(size, u'n');
        first->setAppValue(two, text);
        for (int round = 0; round < 3; ++round) {
            EXPECT_FALSE(first->appSynchronize());
            EXPECT_TRUE(first->hasPendingValues());
            EXPECT_EQ(contentOf(file()), before);
            EXPECT_EQ(contentOf(backup()), backupBefore);
            EXPECT_EQ(namesIn(folder()), names);
        }

        ASSERT_TRUE(disk.clear());
        EXPECT_TRUE(first->appSynchronize());
        EXPECT_EQ(onDisk(), (QVariantMap{{one, QStringLiteral("old")}, {two, text}}));
        EXPECT_EQ(contentOf(backup()), before);
    }

    /// The most memory, in bytes, that a process had that read and saved the domain.
    qint64 peakOfASave() const
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(
            QStringLiteral(QUENBY_TEST_SAVE),
            {QStringLiteral("measured"), folder(), in(QStringLiteral("locks")), two, QStringLiteral("10")});
        EXPECT_TRUE(process.waitForFinished(patience));
        EXPECT_EQ(process.exitCode(), 0);
        bool ok = false;
        const qint64 peak = process.readAllStandardOutput().trimmed().toLongLong(&ok);
        EXPECT_TRUE(ok);
        return peak;
    }
};

} // namespace

TEST_F(PreferencesLimitsTest, AFullDiskLeavesTheOldBytesAndASmallValuePending)
{
    inAProcessOfItsOwn([this] { saveOnAFullDisk(10, 0); });
}

TEST_F(PreferencesLimitsTest, AFullDiskLeavesTheOldBytesAndALargeValuePending)
{
    inAProcessOfItsOwn([this] { saveOnAFullDisk(1'000'000, 0); });
}

TEST_F(PreferencesLimitsTest, ADiskThatFillsUpInTheMiddleOfASaveDoesTheSame)
{
    inAProcessOfItsOwn([this] { saveOnAFullDisk(1'000'000, 500'000); });
}

TEST_F(PreferencesLimitsTest, ASparseFileOverTheLimitTakesNoMemory)
{
    save(one, 1LL);
    save(one, 2LL);
    const qint64 ordinary = peakOfASave();
    EXPECT_GT(ordinary, mebibyte);
    constexpr qint64 size = qint64(1) << 30;
    ASSERT_EQ(::truncate(QFile::encodeName(file()).constData(), size), 0);
    EXPECT_LT(peakOfASave(), ordinary + 16 * mebibyte);
    EXPECT_EQ(QFileInfo(QDir(folder()).filePath(asides().value(0))).size(), size);
    EXPECT_EQ(onDisk().value(two), QVariant(QString(10, u'n')));
}
