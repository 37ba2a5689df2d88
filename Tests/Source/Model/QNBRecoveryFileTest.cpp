// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBRecoveryFile.h"

#include "Tests/Platform/Files/FailingFileLayer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QNBSettings settingsWith(const QString &label)
{
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(label, QNBPresetKey::label);
    record->setFileHierarchy(QNBHierarchyItem::initWithDictionary(QVariantMap{
        {QStringLiteral("isFolder"), true},
        {QStringLiteral("children"), QVariantList{QVariantMap{{QStringLiteral("filename"), label}}}}}));
    QNBSettings settings;
    settings.presets = {record};
    settings.showMenubar = false;
    settings.shortcutCombo = {.flags = 1 << 20, .code = 45};
    return settings;
}

/// Notes the last temporary file.
class NotingLayer final : public FileLayer
{
public:
    int rename(const QByteArray &from, const QByteArray &to) override
    {
        temporary = from;
        return FileLayer::rename(from, to);
    }

    QByteArray temporary;
};

class QNBRecoveryFileTest : public ::testing::Test
{
protected:
    /// Leaves \a label behind, as a pane does that ends without saving.
    void leave(const QString &label, const QDateTime &taken = QDateTime::currentDateTime())
    {
        QNBRecoveryFile file(folder_);
        file.write(QNBSettingsStore::snapshot(settingsWith(label), taken));
    }
    QStringList leftLabels() const
    {
        QStringList labels;
        for (const QNBLeftRecovery &left : QNBLeftRecovery::allIn(folder_)) {
            const Result<QNBSettings> &settings = left.settings();
            labels << (settings ? settings->presets.constFirst()->label() : settings.error);
        }
        return labels;
    }
    QStringList files() const { return QDir(folder_).entryList(QDir::Files | QDir::Hidden); }

    const QTemporaryDir home_;
    const QString folder_ = home_.filePath(QStringLiteral("state/Quenby/Recovery"));
};

} // namespace

TEST_F(QNBRecoveryFileTest, WhatAPaneLeavesIsReadAgainWhole)
{
    leave(QStringLiteral("A"));
    const std::vector<QNBLeftRecovery> left = QNBLeftRecovery::allIn(folder_);
    ASSERT_EQ(left.size(), 1U);
    const Result<QNBSettings> &settings = left.front().settings();
    ASSERT_TRUE(settings) << qPrintable(settings.error);
    EXPECT_EQ(settings->presets.constFirst()->label(), QStringLiteral("A"));
    EXPECT_EQ(settings->presets.constFirst()->fileHierarchy()->children().size(), 1U);
    EXPECT_FALSE(settings->showMenubar);
    EXPECT_EQ(settings->shortcutCombo, settingsWith({}).shortcutCombo);
}

TEST_F(QNBRecoveryFileTest, OnlyItsOwnerMayReadIt)
{
    const mode_t before = ::umask(0);
    leave(QStringLiteral("A"));
    ::umask(before);
    for (const QString &name : files()) {
        struct stat information = {};
        ASSERT_EQ(::stat(QFile::encodeName(QDir(folder_).filePath(name)).constData(), &information), 0);
        EXPECT_EQ(information.st_mode & 0777, 0600U) << qPrintable(name);
    }
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(folder_).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777, 0700U);
}

TEST_F(QNBRecoveryFileTest, TheLastOfSeveralWritesCounts)
{
    {
        QNBRecoveryFile file(folder_);
        for (int number = 0; number < 50; ++number)
            file.write(QNBSettingsStore::snapshot(settingsWith(QString::number(number))));
    }
    EXPECT_EQ(leftLabels(), QStringList(QStringLiteral("49")));
}

TEST_F(QNBRecoveryFileTest, NobodyIsOfferedWhatARunningPaneKeeps)
{
    QNBRecoveryFile running(folder_);
    {
        QNBRecoveryFile other(folder_);
        running.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("running"))));
        other.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("ended"))));
    }
    running.finish();
    ASSERT_EQ(files().filter(QStringLiteral(".plist")).size(), 2);
    EXPECT_EQ(leftLabels(), QStringList(QStringLiteral("ended")));
}

TEST_F(QNBRecoveryFileTest, WhatIsOfferedToOnePaneIsNotOfferedToAnother)
{
    leave(QStringLiteral("A"));
    {
        const std::vector<QNBLeftRecovery> offered = QNBLeftRecovery::allIn(folder_);
        ASSERT_EQ(offered.size(), 1U);
        EXPECT_TRUE(QNBLeftRecovery::allIn(folder_).empty());
    }
    EXPECT_EQ(QNBLeftRecovery::allIn(folder_).size(), 1U) << "undecided, it is offered again";
}

TEST_F(QNBRecoveryFileTest, ItIsOfTheTimeAtWhichItWasTakenAndNotAtWhichItWasWritten)
{
    const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
    leave(QStringLiteral("A"), yesterday);
    EXPECT_EQ(QNBLeftRecovery::allIn(folder_).front().taken(), yesterday);
}

TEST_F(QNBRecoveryFileTest, OneThatDoesNotSayWhenItWasTakenIsOfTheTimeAtWhichItWasWritten)
{
    leave(QStringLiteral("A"), {});
    QFile file(QNBLeftRecovery::allIn(folder_).front().path());
    const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(yesterday, QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(QNBLeftRecovery::allIn(folder_).front().taken(), yesterday);
}

TEST_F(QNBRecoveryFileTest, TheLatestComesFirst)
{
    const QDateTime now = QDateTime::currentDateTime();
    leave(QStringLiteral("middle"), now.addSecs(-60));
    leave(QStringLiteral("latest"), now);
    leave(QStringLiteral("oldest"), now.addDays(-1));
    EXPECT_EQ(leftLabels(),
              QStringList({QStringLiteral("latest"), QStringLiteral("middle"), QStringLiteral("oldest")}));
}

TEST_F(QNBRecoveryFileTest, WhatItsContentHoldsTooGoesWithTheFirstWriteThatSucceeds)
{
    leave(QStringLiteral("earlier"));
    FailingFileLayer layer;
    {
        QNBRecoveryFile file(folder_, &layer);
        layer.space = 10;
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))),
                   QNBLeftRecovery::allIn(folder_));
        file.finish();
        EXPECT_TRUE(QNBLeftRecovery::allIn(folder_).empty()) << "kept for the next write";
    }
    EXPECT_EQ(leftLabels(), QStringList(QStringLiteral("earlier"))) << "there was none";
    {
        QNBRecoveryFile file(folder_, &layer);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))),
                   QNBLeftRecovery::allIn(folder_));
        file.finish();
        layer.space = FailingFileLayer().space;
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("B"))));
    }
    EXPECT_EQ(leftLabels(), QStringList(QStringLiteral("B")));
}

TEST_F(QNBRecoveryFileTest, WhatWasSavedWithItGoesWithIt)
{
    leave(QStringLiteral("restored"));
    {
        QNBRecoveryFile file(folder_);
        file.remove(QNBLeftRecovery::allIn(folder_));
    }
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBRecoveryFileTest, SavedOrDiscardedNothingIsLeft)
{
    {
        QNBRecoveryFile file(folder_);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))));
        file.remove();
    }
    leave(QStringLiteral("B"));
    std::vector<QNBLeftRecovery> left = QNBLeftRecovery::allIn(folder_);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_TRUE(left.front().discard());
    left.clear();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBRecoveryFileTest, AWriteAfterARemovalCounts)
{
    {
        QNBRecoveryFile file(folder_);
        for (int number = 0; number < 20; ++number) {
            file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("before"))));
            file.remove();
            file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("after"))));
        }
    }
    EXPECT_EQ(leftLabels(), QStringList(QStringLiteral("after")));
}

TEST_F(QNBRecoveryFileTest, WhateverCallFailsTheOldContentOrTheNewOneIsThere)
{
    FailingFileLayer counting;
    {
        QNBRecoveryFile file(folder_, &counting);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("old"))));
    }
    ASSERT_GT(counting.calls, 5);
    int failures = 0;
    for (int call = 0; call < 2 * counting.calls; ++call) {
        ASSERT_TRUE(QDir(folder_).removeRecursively());
        FailingFileLayer layer;
        bool hasFailed = false;
        {
            QNBRecoveryFile file(folder_, &layer);
            QObject::connect(
                &file, &QNBRecoveryFile::failed, &file, [&] { hasFailed = true; }, Qt::DirectConnection);
            layer.failingCall = call;
            file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("old"))));
            file.finish();
            file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("new"))));
        }
        failures += hasFailed ? 1 : 0;
        const QStringList labels = leftLabels();
        ASSERT_LE(labels.size(), 1);
        EXPECT_TRUE(labels.isEmpty()
                        ? hasFailed
                        : labels.constFirst() == u"new" || (hasFailed && labels.constFirst() == u"old"))
            << call << qPrintable(labels.join(u' '));
    }
    EXPECT_GT(failures, 5);
}

TEST_F(QNBRecoveryFileTest, AFullDiskIsToldWithItsReason)
{
    FailingFileLayer layer;
    layer.space = 10;
    QString reason;
    {
        QNBRecoveryFile file(folder_, &layer);
        QObject::connect(
            &file, &QNBRecoveryFile::failed, &file, [&](const QString &told) { reason = told; },
            Qt::DirectConnection);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))));
    }
    EXPECT_TRUE(reason.endsWith(QString::fromLocal8Bit(std::strerror(ENOSPC)))) << qPrintable(reason);
    EXPECT_TRUE(leftLabels().isEmpty());
}

TEST_F(QNBRecoveryFileTest, NothingIsWrittenIntoTheHomeOfAnotherUser)
{
    // Only root can give a folder away, and to everybody else root is another user.
    const bool isRoot = ::geteuid() == 0;
    const QByteArray home = isRoot ? QFile::encodeName(home_.path()) : QByteArray("/root");
    constexpr uid_t stranger = 12345;
    if (isRoot) {
        ASSERT_EQ(::chown(home.constData(), stranger, stranger), 0);
    }
    bool hasFailed = false;
    {
        QNBRecoveryFile file(QFile::decodeName(home) + QStringLiteral("/state/Quenby/Recovery"));
        QObject::connect(
            &file, &QNBRecoveryFile::failed, &file, [&] { hasFailed = true; }, Qt::DirectConnection);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))));
    }
    EXPECT_TRUE(hasFailed);
    EXPECT_FALSE(QFile::exists(QFile::decodeName(home) + QStringLiteral("/state")));
}

TEST_F(QNBRecoveryFileTest, WithoutAFolderNothingIsKept)
{
    FailingFileLayer layer;
    QNBRecoveryFile file(QString(), &layer);
    file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))));
    file.finish();
    file.remove();
    file.finish();
    EXPECT_EQ(layer.calls, 0);
    EXPECT_TRUE(QNBLeftRecovery::allIn({}).empty());
}

TEST_F(QNBRecoveryFileTest, WhatIsNoRecoveryFileIsRefusedAndStays)
{
    ASSERT_TRUE(QDir().mkpath(folder_));
    const QByteArray notTheOnes[] = {
        "", "garbage", "<plist version=\"1.0\"><array/></plist>",
        "<plist version=\"1.0\"><dict><key>QNBPresets</key><true/></dict></plist>"};
    for (const QByteArray &bytes : notTheOnes) {
        QFile file(QDir(folder_).filePath(QStringLiteral("strange.plist")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        const std::vector<QNBLeftRecovery> left = QNBLeftRecovery::allIn(folder_);
        ASSERT_EQ(left.size(), 1U);
        EXPECT_FALSE(left.front().settings()) << bytes.constData();
        EXPECT_TRUE(file.exists());
    }
    ASSERT_TRUE(QFile::remove(QDir(folder_).filePath(QStringLiteral("strange.plist"))));
    leave(QStringLiteral("A"));
    const QByteArray elsewhere = QFile::encodeName(home_.filePath(QStringLiteral("elsewhere")));
    const QByteArray name = QFile::encodeName(QNBLeftRecovery::allIn(folder_).front().path());
    ASSERT_EQ(::rename(name.constData(), elsewhere.constData()), 0);
    ASSERT_EQ(::symlink(elsewhere.constData(), name.constData()), 0);
    const std::vector<QNBLeftRecovery> left = QNBLeftRecovery::allIn(folder_);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_FALSE(left.front().settings()) << "a link, to a good one";
}

TEST_F(QNBRecoveryFileTest, OfAnotherUserNeitherTheFileNorTheFolderIsTaken)
{
    if (::geteuid() != 0)
        return;
    constexpr uid_t stranger = 12345;
    leave(QStringLiteral("A"));
    const QByteArray name = QFile::encodeName(QNBLeftRecovery::allIn(folder_).front().path());
    ASSERT_EQ(::chown(name.constData(), stranger, stranger), 0);
    EXPECT_FALSE(QNBLeftRecovery::allIn(folder_).front().settings());
    ASSERT_EQ(::chown(name.constData(), 0, 0), 0);
    ASSERT_EQ(::chown(QFile::encodeName(folder_).constData(), stranger, stranger), 0);
    EXPECT_TRUE(QNBLeftRecovery::allIn(folder_).empty());
}

TEST_F(QNBRecoveryFileTest, WhatIsKeptAfterASaveIsARunningPanesToo)
{
    QNBRecoveryFile running(folder_);
    running.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("before"))));
    running.finish();
    running.remove();
    running.finish();
    EXPECT_EQ(files(), QStringList());
    running.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("after"))));
    running.finish();
    EXPECT_EQ(files().filter(QStringLiteral(".plist")).size(), 1);
    EXPECT_TRUE(QNBLeftRecovery::allIn(folder_).empty());
}

TEST_F(QNBRecoveryFileTest, WhatAKilledWriterLeftIsRemovedWithItsLock)
{
    NotingLayer layer;
    {
        QNBRecoveryFile file(folder_, &layer);
        file.write(QNBSettingsStore::snapshot(settingsWith(QStringLiteral("A"))));
    }
    const QString path = QNBLeftRecovery::allIn(folder_).front().path();
    // Killed before the first file was whole: a lock and a temporary file.
    ASSERT_TRUE(QFile::rename(path, QFile::decodeName(layer.temporary)));
    ASSERT_EQ(files().size(), 2);
    EXPECT_TRUE(QNBLeftRecovery::allIn(folder_).empty());
    EXPECT_EQ(files(), QStringList());
}
