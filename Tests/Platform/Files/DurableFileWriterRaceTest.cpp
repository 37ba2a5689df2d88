// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What others do to a name while a file is written.

#include "FileFixture.h"
#include "InterveningLayer.h"
#include "Platform/Files/DurableFileWriter.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QByteArray theirBytes("theirs");
const QByteArray racingBytes("new bytes");

/// A disk on which all that leads to the file "theirs" is another user's.
class SharedDisk : public InterveningLayer
{
public:
    int lstat(const QByteArray &path, struct stat *result) override
    {
        const int status = InterveningLayer::lstat(path, result);
        giveAway(status, result, AT_FDCWD, path.constData());
        return status;
    }
    int fstat(int descriptor, struct stat *result) override
    {
        const int status = InterveningLayer::fstat(descriptor, result);
        giveAway(status, result, descriptor, "");
        return status;
    }

private:
    static void giveAway(int status, struct stat *result, int folder, const char *name)
    {
        if (status == 0 && S_ISLNK(result->st_mode) &&
            FolderLayer::real().readlinkat(folder, name) == QByteArray("theirs"))
            result->st_uid = ::geteuid() + 1;
    }
};

/// A disk that cannot rename with a look at what is there, and has no links if it is so.
class OldDisk : public InterveningLayer
{
public:
    bool hasLinks = true;

    int renameToFree(const QByteArray & /*from*/, const QByteArray & /*to*/) override
    {
        errno = EINVAL;
        return -1;
    }
    int link(const QByteArray &existing, const QByteArray &created) override
    {
        if (hasLinks)
            return InterveningLayer::link(existing, created);
        errno = EPERM;
        return -1;
    }
};

class DurableFileWriterRaceTest : public FileFixture
{
protected:
    QString path() const { return in(QStringLiteral("file")); }
    QByteArray encoded(const QString &name) const { return QFile::encodeName(in(name)); }
    QString mine() const { return in(QStringLiteral("mine")); }
    QString theirs() const { return in(QStringLiteral("theirs")); }

    /// Puts a link in the place of what is at \a path.
    static void putLink(const char *text, const QByteArray &path)
    {
        const QByteArray other = path + "-other";
        ASSERT_EQ(::symlink(text, other.constData()), 0);
        ASSERT_EQ(std::rename(other.constData(), path.constData()), 0);
    }
    static mode_t modeOf(const QString &path)
    {
        struct stat information = {};
        EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &information), 0);
        return information.st_mode;
    }
};

} // namespace

TEST_F(DurableFileWriterRaceTest, ALinkThatIsExchangedForAnotherIsNeitherHalfTheOneNorHalfTheOther)
{
    const QByteArray link = encoded(QStringLiteral("file"));
    for (const auto &[first, second] : {std::pair{"theirs", "mine"}, std::pair{"mine", "theirs"}}) {
        for (int call = 0;; ++call) {
            put(mine(), "mine");
            put(theirs(), theirBytes);
            putLink(first, link);
            SharedDisk layer;
            layer.before({}, call, [&, text = second] { putLink(text, link); });
            static_cast<void>(DurableFileWriter(&layer).write(path(), racingBytes));
            EXPECT_EQ(contentOf(theirs()), theirBytes) << first << ' ' << call;
            if (layer.made().size() <= call)
                break;
        }
    }
}

TEST_F(DurableFileWriterRaceTest, AFileDoesNotGetTheModeOfWhatALinkInItsPlaceLeadsTo)
{
    put(theirs(), theirBytes);
    ASSERT_EQ(::chmod(encoded(QStringLiteral("theirs")).constData(), 0666), 0);
    for (int call = 0;; ++call) {
        QFile::remove(path());
        put(path(), "mine");
        ASSERT_EQ(::chmod(encoded(QStringLiteral("file")).constData(), 0600), 0);
        SharedDisk layer;
        layer.before({}, call, [&] { putLink("theirs", encoded(QStringLiteral("file"))); });
        static_cast<void>(DurableFileWriter(&layer).write(path(), racingBytes));
        EXPECT_EQ(contentOf(theirs()), theirBytes) << call;
        if (const mode_t mode = modeOf(path()); S_ISREG(mode)) {
            EXPECT_EQ(mode & 07777, 0600U) << call;
        }
        if (layer.made().size() <= call)
            break;
    }
}

TEST_F(DurableFileWriterRaceTest, ANewFileNeverReplacesOneThatAppearsMeanwhile)
{
    const auto appears = [&](InterveningLayer &layer, const QByteArray &before) {
        layer.before(before, 0, [&] { put(path(), theirBytes); });
        const Result<bool> written = DurableFileWriter(&layer).writeIfFree(path(), racingBytes, 0640);
        EXPECT_TRUE(written) << qPrintable(written.error);
        EXPECT_FALSE(written.value.value_or(true)) << before.constData();
        EXPECT_EQ(contentOf(path()), theirBytes) << before.constData();
        EXPECT_FALSE(DurableFileWriter(&layer).copy(path(), path()));
        EXPECT_EQ(namesIn(root()), QStringList(QStringLiteral("file"))) << "and nothing is left";
        QFile::remove(path());
    };
    InterveningLayer real;
    appears(real, "renameToFree");
    OldDisk withLinks;
    appears(withLinks, "link");
    OldDisk withoutLinks;
    withoutLinks.hasLinks = false;
    appears(withoutLinks, "lstat");
}

TEST_F(DurableFileWriterRaceTest, ANewFileIsWrittenOnEachKindOfDisk)
{
    OldDisk withLinks;
    OldDisk withoutLinks;
    withoutLinks.hasLinks = false;
    for (FileLayer *layer : {&FileLayer::real(), static_cast<FileLayer *>(&withLinks),
                             static_cast<FileLayer *>(&withoutLinks)}) {
        const DurableFileWriter writer(layer);
        const Result<bool> written = writer.writeIfFree(path(), racingBytes, 0640);
        EXPECT_TRUE(written.value.value_or(false)) << qPrintable(written.error);
        EXPECT_EQ(contentOf(path()), racingBytes);
        EXPECT_EQ(modeOf(path()) & 07777, 0640U);
        EXPECT_TRUE(writer.copy(path(), mine()));
        EXPECT_EQ(namesIn(root()), (QStringList{QStringLiteral("file"), QStringLiteral("mine")}));
        QFile::remove(path());
        QFile::remove(mine());
    }
}
