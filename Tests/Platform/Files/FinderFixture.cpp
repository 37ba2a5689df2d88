// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Platform/Files/FinderFixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr char attributeName[] = "user.com.apple.FinderInfo";

bool keepsAttributes(const QString &folder)
{
    const QTemporaryDir probe(folder + QStringLiteral("/probe-XXXXXX"));
    return ::setxattr(QFile::encodeName(probe.path()).constData(), attributeName, "", 0, 0) == 0;
}

/// The temporary folder, unless it is kept in memory by a system that has no attributes there; then that of
/// this program.
QString folderThatKeepsAttributes()
{
    static const QString folder =
        keepsAttributes(QDir::tempPath()) ? QDir::tempPath() : QCoreApplication::applicationDirPath();
    return folder;
}

} // namespace

FinderFixture::FinderFixture()
    : FileFixture(folderThatKeepsAttributes() + QStringLiteral("/finder-XXXXXX"))
{
}

void FinderFixture::SetUp()
{
    ASSERT_TRUE(keepsAttributes(root()))
        << "these tests need a disk with extended attributes (user.*): neither the temporary folder "
        << qPrintable(QDir::tempPath()) << " nor the build folder "
        << qPrintable(QCoreApplication::applicationDirPath()) << " is on one (" << std::strerror(errno)
        << "); set TMPDIR";
}

std::optional<QByteArray> FinderFixture::attributeOf(const QString &path)
{
    QByteArray bytes(65536, '\0');
    const ssize_t size = ::lgetxattr(QFile::encodeName(path).constData(), attributeName, bytes.data(),
                                     static_cast<size_t>(bytes.size()));
    if (size < 0)
        return {};
    bytes.truncate(size);
    return bytes;
}

void FinderFixture::setAttribute(const QString &path, const QByteArray &attribute)
{
    ASSERT_EQ(::lsetxattr(QFile::encodeName(path).constData(), attributeName, attribute.constData(),
                          static_cast<size_t>(attribute.size()), 0),
              0)
        << qPrintable(path) << ": " << std::strerror(errno);
}

QString FinderFixture::makeFile(const QString &name) const
{
    put(in(name), "content");
    return in(name);
}

QString FinderFixture::makeFolder(const QString &name) const
{
    EXPECT_TRUE(QDir().mkpath(in(name)));
    return in(name);
}

QString FinderFixture::makeLink(const QString &name, const QString &target) const
{
    EXPECT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(in(name)).constData()), 0);
    return in(name);
}

QString FinderFixture::makePipe() const
{
    const QString path = in(QStringLiteral("pipe"));
    EXPECT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    return path;
}

QByteArray numberedBytes()
{
    QByteArray bytes;
    for (char number = 1; number <= 32; ++number)
        bytes += number;
    return bytes;
}
