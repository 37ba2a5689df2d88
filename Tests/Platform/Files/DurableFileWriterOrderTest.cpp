// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// In which order what is written comes to the disk.

#include "FileFixture.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLayer.h"

#include <QHash>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

const QByteArray bytesBefore("old bytes");
const QByteArray bytesAfter(100'000, 'n');

class DurableFileWriterOrderTest : public FileFixture
{
protected:
    QString path() const { return in(QStringLiteral("file")); }
    QByteArray encodedPath() const { return QFile::encodeName(path()); }
};

/// Notes what is made durable, and the calls that need it.
class RecordingLayer : public FileLayer
{
public:
    QList<QByteArray> steps;
    /// What the synchronisation of a folder fails with; 0 for not at all.
    int folderError = 0;

    int mkdir(const QByteArray &path, mode_t mode) override
    {
        steps.append("make " + path);
        return FileLayer::mkdir(path, mode);
    }
    int rename(const QByteArray &from, const QByteArray &to) override
    {
        steps.append("rename to " + to);
        return FileLayer::rename(from, to);
    }
    int renameToFree(const QByteArray &from, const QByteArray &to) override
    {
        steps.append("rename to " + to);
        return FileLayer::renameToFree(from, to);
    }
    ssize_t write(int descriptor, const void *buffer, size_t size) override
    {
        const ssize_t written = FileLayer::write(descriptor, buffer, size);
        steps.append("fill " + paths_.value(descriptor));
        return written;
    }
    int open(const QByteArray &path, int flags, mode_t mode) override
    {
        const int descriptor = FileLayer::open(path, flags, mode);
        const bool isNew = (flags & O_EXCL) != 0;
        isFolder_[descriptor] = (flags & O_DIRECTORY) != 0;
        paths_[descriptor] = isNew ? QByteArray("the new file") : path;
        return descriptor;
    }
    int fsync(int descriptor) override
    {
        steps.append("write " + paths_.value(descriptor));
        if (folderError == 0 || !isFolder_.value(descriptor))
            return FileLayer::fsync(descriptor);
        errno = folderError;
        return -1;
    }

private:
    QHash<int, QByteArray> paths_;
    QHash<int, bool> isFolder_;
};

enum class Act { Write, Give, Copy, Rename, Remove };

} // namespace

TEST_F(DurableFileWriterOrderTest, AFolderMadeIsWrittenToTheOneAboveIt)
{
    RecordingLayer layer;
    const QByteArray above = QFile::encodeName(root());
    ASSERT_TRUE(DurableFileWriter(&layer).makeFolder(in(QStringLiteral("a/b//c/"))));
    EXPECT_EQ(layer.steps, (QList<QByteArray>{"make " + above + "/a", "write " + above,
                                              "make " + above + "/a/b", "write " + above + "/a",
                                              "make " + above + "/a/b/c", "write " + above + "/a/b"}));
    struct stat information = {};
    ASSERT_EQ(::stat(QFile::encodeName(in(QStringLiteral("a/b/c"))).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700U);
    layer.steps.clear();
    ASSERT_TRUE(DurableFileWriter(&layer).makeFolder(in(QStringLiteral("a/b/c"))));
    EXPECT_TRUE(layer.steps.isEmpty());

    put(path(), bytesBefore);
    EXPECT_FALSE(DurableFileWriter().makeFolder(path() + QStringLiteral("/below")));
    EXPECT_EQ(contentOf(path()), bytesBefore);
}

TEST_F(DurableFileWriterOrderTest, BytesAreOnTheDiskBeforeTheNameAndTheNameBeforeSuccess)
{
    const QByteArray folder = QFile::encodeName(root());
    for (const auto act : {Act::Write, Act::Give, Act::Copy, Act::Rename, Act::Remove}) {
        put(in(QStringLiteral("other")), bytesAfter);
        RecordingLayer layer;
        const DurableFileWriter writer(&layer);
        const bool isWritten = act == Act::Write || act == Act::Give || act == Act::Copy;
        if (act == Act::Write) {
            ASSERT_TRUE(writer.write(path(), "bytes"));
        } else if (act == Act::Give) {
            ASSERT_TRUE(writer.give(path(), "bytes"));
        } else if (act == Act::Copy) {
            ASSERT_TRUE(writer.copy(in(QStringLiteral("other")), path()));
        } else if (act == Act::Rename) {
            ASSERT_TRUE(writer.rename(in(QStringLiteral("other")), path()));
        } else {
            ASSERT_TRUE(writer.remove(path()));
        }
        QList<QByteArray> expected;
        if (isWritten)
            expected = {"fill the new file", "write the new file"};
        if (act != Act::Remove)
            expected += "rename to " + encodedPath();
        expected += "write " + folder;
        EXPECT_EQ(layer.steps, expected) << int(act);
        if (isWritten)
            QFile::remove(path());
    }
}

TEST_F(DurableFileWriterOrderTest,
       AFolderThatCannotBeSynchronisedFailsTheWriteUnlessItHasNothingToSynchronise)
{
    // EINVAL and ENOTSUP are how file systems without such a thing answer.
    for (const auto &[error, isForgiven] : {std::pair{EINVAL, true}, std::pair{ENOTSUP, true},
                                            std::pair{EIO, false}, std::pair{EACCES, false}}) {
        RecordingLayer layer;
        layer.folderError = error;
        EXPECT_EQ(DurableFileWriter(&layer).write(path(), bytesAfter).ok, isForgiven) << error;
    }
    class WithoutReading : public FileLayer
    {
    public:
        int error = EACCES;
        int open(const QByteArray &path, int flags, mode_t mode) override
        {
            if ((flags & O_DIRECTORY) == 0)
                return FileLayer::open(path, flags, mode);
            errno = error;
            return -1;
        }
    } layer;
    EXPECT_TRUE(DurableFileWriter(&layer).write(path(), bytesBefore)) << "a folder may be writable only";
    layer.error = EIO;
    EXPECT_FALSE(DurableFileWriter(&layer).write(path(), bytesBefore));
}
