// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/BoundedFile.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"

#include <QFile>
#include <QTemporaryDir>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 limit = 1000;

class BoundedFileTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return folder_.filePath(name); }

    QString fileOfSize(const QString &name, qint64 size) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(size));
        return path(name);
    }

    QTemporaryDir folder_;
    QString error_;
};

/// The most memory this process ever had, in bytes.
qint64 peakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return qint64(std::stoll(line.substr(6))) * 1024;
    }
    return 0;
}

} // namespace

TEST_F(BoundedFileTest, ReadsARegularFileUpToTheLimit)
{
    for (const qint64 size : {qint64(0), qint64(1), limit - 1, limit}) {
        const Result<QByteArray> bytes = BoundedFile::read(fileOfSize(QStringLiteral("f"), size), limit);
        ASSERT_TRUE(bytes) << bytes.error.toStdString();
        EXPECT_EQ(*bytes, QByteArray(qsizetype(size), '\0'));
    }
    const Result<QByteArray> refused = BoundedFile::read(fileOfSize(QStringLiteral("f"), limit + 1), limit);
    EXPECT_FALSE(refused);
    EXPECT_THAT(refused.error.toStdString(), ::testing::HasSubstr("larger than 1000 bytes"));
}

TEST_F(BoundedFileTest, ReadsAFileThatDoesNotSayItsSize)
{
    const Result<QByteArray> bytes = BoundedFile::read(QStringLiteral("/proc/self/status"), 100'000);
    ASSERT_TRUE(bytes) << bytes.error.toStdString();
    EXPECT_TRUE(bytes->contains("VmHWM:"));
    EXPECT_FALSE(BoundedFile::read(QStringLiteral("/proc/self/status"), 100));
}

TEST_F(BoundedFileTest, RefusesWhatIsNoRegularFile)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(QStringLiteral("fifo"))).constData(), 0600), 0);
    ASSERT_EQ(::symlink("loop", QFile::encodeName(path(QStringLiteral("loop"))).constData()), 0);
    for (const QString &name : {path(QStringLiteral("fifo")), path(QStringLiteral("loop")),
                                path(QStringLiteral("none")), folder_.path(), QStringLiteral("/dev/zero")}) {
        const Result<QByteArray> refused = BoundedFile::read(name, limit);
        EXPECT_FALSE(refused) << name.toStdString();
        EXPECT_THAT(refused.error.toStdString(), ::testing::StartsWith(name.toStdString() + ": "));
    }
}

TEST_F(BoundedFileTest, ArchiveOfASparseGibibyteIsRefusedInLittleMemory)
{
    const QString sparse = fileOfSize(QStringLiteral("sparse"), qint64(1) << 30);
    const qint64 before = peakMemory();
    EXPECT_FALSE(KeyedUnarchiver::unarchivedDocumentWithFile(sparse, &error_));
    EXPECT_FALSE(error_.isEmpty());
    EXPECT_LT(peakMemory() - before, qint64(16) << 20);
}

TEST_F(BoundedFileTest, ArchiveIsReadFromAFile)
{
    QFile file(path(QStringLiteral("good")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(KeyedArchiver::archivedDataWithRootObject(QStringLiteral("content")).bytes.value());
    file.close();
    const PropertyListDocument::Ptr document =
        KeyedUnarchiver::unarchivedDocumentWithFile(file.fileName(), &error_);
    ASSERT_TRUE(document) << error_.toStdString();
    EXPECT_EQ(document->root().string(), QStringLiteral("content"));
    EXPECT_FALSE(KeyedUnarchiver::unarchivedDocumentWithFile(path(QStringLiteral("none")), nullptr));
}
