// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "DiskTree.h"

#include "Platform/Files/FileCatalog.h"

#include <QFile>
#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

qint64 nanoseconds(const timespec &time)
{
    return qint64(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

QByteArray readAll(int file)
{
    QByteArray bytes;
    char block[4096];
    for (ssize_t size = 0; (size = ::read(file, block, sizeof block)) > 0;)
        bytes.append(block, size);
    return bytes;
}

int labelOf(int descriptor)
{
    QByteArray attribute(FinderInfo::attributeSize, '\0');
    const ssize_t size = ::fgetxattr(descriptor, FileCatalog::finderInfoAttribute, attribute.data(),
                                     std::size_t(attribute.size()));
    if (size == -1)
        return 0;
    EXPECT_EQ(size, FinderInfo::attributeSize);
    return (FinderInfo(attribute).flags() & FinderInfo::labelMask) >> FinderInfo::labelShift;
}

/// Lets its owner read an entry, and search it, for a while.
class Unlocked
{
public:
    Unlocked(int folder, const char *name, mode_t mode)
        : folder_(folder)
        , name_(name)
        , mode_(mode & ALLPERMS)
        , isLocked_((mode & S_IRWXU) != S_IRWXU && ::faccessat(folder, name, R_OK | X_OK, AT_EACCESS) == -1)
    {
        if (isLocked_)
            ::fchmodat(folder_, name_, mode_ | S_IRWXU, 0);
    }
    ~Unlocked()
    {
        if (isLocked_)
            ::fchmodat(folder_, name_, mode_, 0);
    }
    Unlocked(const Unlocked &) = delete;
    Unlocked &operator=(const Unlocked &) = delete;

private:
    const int folder_;
    const char *const name_;
    const mode_t mode_;
    const bool isLocked_;
};

std::vector<QByteArray> namesIn(int folder)
{
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *directory = ::fdopendir(own);
    std::vector<QByteArray> names;
    while (const dirent *entry = ::readdir(directory)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(directory);
    std::sort(names.begin(), names.end());
    return names;
}

void readFolder(int folder, const QByteArray &path, std::vector<DiskEntry> &entries);

void readEntry(int folder, const char *name, const QByteArray &path, std::vector<DiskEntry> &entries)
{
    struct stat information = {};
    ASSERT_EQ(::fstatat(folder, name, &information, AT_SYMLINK_NOFOLLOW), 0) << path.constData();
    DiskEntry entry;
    entry.path = path;
    entry.mode = information.st_mode;
    entry.number = information.st_ino;
    entry.modified = nanoseconds(information.st_mtim);
    if (S_ISLNK(information.st_mode)) {
        entry.bytes.resize(4096);
        entry.bytes.truncate(::readlinkat(folder, name, entry.bytes.data(), std::size_t(entry.bytes.size())));
    } else if (S_ISREG(information.st_mode) || S_ISDIR(information.st_mode)) {
        const Unlocked unlocked(folder, name, information.st_mode);
        const int descriptor = ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
        ASSERT_NE(descriptor, -1) << path.constData();
        entry.label = labelOf(descriptor);
        if (entry.isFolder()) {
            entry.accessed = nanoseconds(information.st_atim);
            entries.push_back(entry);
            readFolder(descriptor, path == "." ? QByteArray() : path + '/', entries);
            // As if nobody had looked.
            const timespec times[] = {information.st_atim, {0, UTIME_OMIT}};
            ::futimens(descriptor, times);
            ::close(descriptor);
            return;
        }
        entry.bytes = readAll(descriptor);
        ::close(descriptor);
    }
    entries.push_back(entry);
}

void readFolder(int folder, const QByteArray &path, std::vector<DiskEntry> &entries)
{
    for (const QByteArray &name : namesIn(folder))
        readEntry(folder, name.constData(), path + name, entries);
}

void clearFolder(int folder)
{
    for (const QByteArray &name : namesIn(folder)) {
        struct stat information = {};
        ASSERT_EQ(::fstatat(folder, name.constData(), &information, AT_SYMLINK_NOFOLLOW), 0);
        if (S_ISDIR(information.st_mode)) {
            ::fchmodat(folder, name.constData(), S_IRWXU, 0);
            const int inner = ::openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
            clearFolder(inner);
            ::close(inner);
        }
        ASSERT_EQ(::unlinkat(folder, name.constData(), S_ISDIR(information.st_mode) ? AT_REMOVEDIR : 0), 0)
            << name.constData();
    }
}

/// As many as the system allows: a deep tree is read with one for each level.
void allowManyDescriptors()
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

std::ostream &operator<<(std::ostream &stream, const DiskEntry &entry)
{
    return stream << entry.path.constData() << " mode " << std::oct << entry.mode << std::dec << " label "
                  << entry.label << " number " << entry.number << " modified " << entry.modified
                  << " accessed " << entry.accessed << " bytes " << entry.bytes.left(80).constData();
}

std::vector<DiskEntry> DiskTree::read(const QString &folder)
{
    allowManyDescriptors();
    std::vector<DiskEntry> entries;
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    EXPECT_NE(descriptor, -1) << qPrintable(folder);
    readEntry(descriptor, ".", ".", entries);
    ::close(descriptor);
    return entries;
}

void DiskTree::clear(const QString &folder)
{
    allowManyDescriptors();
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    clearFolder(descriptor);
    ::close(descriptor);
}

std::vector<QByteArray> DiskTree::paths(const std::vector<DiskEntry> &entries)
{
    std::vector<QByteArray> paths;
    for (const DiskEntry &entry : entries) {
        if (entry.path != ".")
            paths.push_back(entry.path);
    }
    return paths;
}

DiskEntry DiskTree::at(const std::vector<DiskEntry> &entries, const QByteArray &path)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const DiskEntry &entry) { return entry.path == path; });
    if (found == entries.end()) {
        ADD_FAILURE() << "nothing is at " << path.constData();
        return {};
    }
    return *found;
}
