// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FolderLayer.h"

#include <QByteArrayList>
#include <QHash>
#include <cerrno>
#include <functional>
#include <utility>
#include <vector>

/// Makes the real calls, records their names in order, and runs functions of the test right before chosen
/// ones: so the world changes between two calls of the code under test. The functions use the real calls
/// themselves, not this layer.
class InterveningLayer : public FolderLayer
{
public:
    /// Has \a action run before the call number \a number, from 0, of those with the name \a name ("openat",
    /// "fstat" …); of all calls if the name is empty.
    void before(const QByteArray &name, int number, std::function<void()> action)
    {
        interventions_.push_back({name, number, std::move(action)});
    }

    /// The names of the calls so far, in their order, also of those that failed.
    const QByteArrayList &made() const { return made_; }

    int open(const QByteArray &path, int flags, mode_t mode) override
    {
        return refuses("open") ? -1 : FolderLayer::open(path, flags, mode);
    }
    /// One that fails has closed the descriptor, too.
    int close(int descriptor) override
    {
        const bool refused = refuses("close");
        const int error = errno;
        const int result = FolderLayer::close(descriptor);
        if (!refused)
            return result;
        errno = error;
        return -1;
    }
    ssize_t read(int descriptor, void *buffer, size_t size) override
    {
        return refuses("read") ? -1 : FolderLayer::read(descriptor, buffer, size);
    }
    ssize_t write(int descriptor, const void *buffer, size_t size) override
    {
        return refuses("write") ? -1 : FolderLayer::write(descriptor, buffer, size);
    }
    ssize_t pwrite(int descriptor, const void *buffer, size_t size, off_t place) override
    {
        return refuses("pwrite") ? -1 : FolderLayer::pwrite(descriptor, buffer, size, place);
    }
    int fsync(int descriptor) override { return refuses("fsync") ? -1 : FolderLayer::fsync(descriptor); }
    int flock(int descriptor, int operation) override
    {
        return refuses("flock") ? -1 : FolderLayer::flock(descriptor, operation);
    }
    int stat(const QByteArray &path, struct stat *result) override
    {
        return refuses("stat") ? -1 : FolderLayer::stat(path, result);
    }
    int lstat(const QByteArray &path, struct stat *result) override
    {
        return refuses("lstat") ? -1 : FolderLayer::lstat(path, result);
    }
    int fstat(int descriptor, struct stat *result) override
    {
        return refuses("fstat") ? -1 : FolderLayer::fstat(descriptor, result);
    }
    int access(const QByteArray &path, int mode) override
    {
        return refuses("access") ? -1 : FolderLayer::access(path, mode);
    }
    int fchmod(int descriptor, mode_t mode) override
    {
        return refuses("fchmod") ? -1 : FolderLayer::fchmod(descriptor, mode);
    }
    int fchown(int descriptor, uid_t owner, gid_t group) override
    {
        return refuses("fchown") ? -1 : FolderLayer::fchown(descriptor, owner, group);
    }
    int futimens(int descriptor, const timespec (&times)[2]) override
    {
        return refuses("futimens") ? -1 : FolderLayer::futimens(descriptor, times);
    }
    ssize_t listxattr(const QByteArray &path, char *list, size_t size) override
    {
        return refuses("listxattr") ? -1 : FolderLayer::listxattr(path, list, size);
    }
    ssize_t getxattr(const QByteArray &path, const char *name, void *value, size_t size) override
    {
        return refuses("getxattr") ? -1 : FolderLayer::getxattr(path, name, value, size);
    }
    int fsetxattr(int descriptor, const char *name, const void *value, size_t size) override
    {
        return refuses("fsetxattr") ? -1 : FolderLayer::fsetxattr(descriptor, name, value, size);
    }
    int rename(const QByteArray &from, const QByteArray &to) override
    {
        return refuses("rename") ? -1 : FolderLayer::rename(from, to);
    }
    int renameToFree(const QByteArray &from, const QByteArray &to) override
    {
        return refuses("renameToFree") ? -1 : FolderLayer::renameToFree(from, to);
    }
    int link(const QByteArray &existing, const QByteArray &created) override
    {
        return refuses("link") ? -1 : FolderLayer::link(existing, created);
    }
    int symlink(const QByteArray &text, const QByteArray &created) override
    {
        return refuses("symlink") ? -1 : FolderLayer::symlink(text, created);
    }
    int unlink(const QByteArray &path) override { return refuses("unlink") ? -1 : FolderLayer::unlink(path); }
    int mkdir(const QByteArray &path, mode_t mode) override
    {
        return refuses("mkdir") ? -1 : FolderLayer::mkdir(path, mode);
    }
    std::optional<QByteArray> readlinkat(int folder, const char *name) override
    {
        return refuses("readlinkat") ? std::nullopt : FolderLayer::readlinkat(folder, name);
    }
    std::optional<QByteArray> realpath(const QByteArray &path) override
    {
        return refuses("realpath") ? std::nullopt : FolderLayer::realpath(path);
    }
    std::optional<QList<QByteArray>> entries(const QByteArray &folder) override
    {
        return refuses("entries") ? std::nullopt : FolderLayer::entries(folder);
    }

    int openat(int folder, const char *name, int flags, mode_t mode) override
    {
        return refuses("openat") ? -1 : FolderLayer::openat(folder, name, flags, mode);
    }
    int mkdirat(int folder, const char *name, mode_t mode) override
    {
        return refuses("mkdirat") ? -1 : FolderLayer::mkdirat(folder, name, mode);
    }
    int unlinkat(int folder, const char *name, int flags) override
    {
        return refuses("unlinkat") ? -1 : FolderLayer::unlinkat(folder, name, flags);
    }
    int fstatat(int folder, const char *name, struct stat *result, int flags) override
    {
        return refuses("fstatat") ? -1 : FolderLayer::fstatat(folder, name, result, flags);
    }
    int faccessat(int folder, const char *name, int mode) override
    {
        return refuses("faccessat") ? -1 : FolderLayer::faccessat(folder, name, mode);
    }
    int utimensat(int folder, const char *name, const Times &times) override
    {
        return refuses("utimensat") ? -1 : FolderLayer::utimensat(folder, name, times);
    }
    int chmodOpen(int descriptor, mode_t mode) override
    {
        return refuses("chmodOpen") ? -1 : FolderLayer::chmodOpen(descriptor, mode);
    }
    ssize_t copy_file_range(int from, int to, size_t size) override
    {
        return refuses("copy_file_range") ? -1 : FolderLayer::copy_file_range(from, to, size);
    }
    /// By its openat() and close(), which are recorded too.
    std::optional<QList<QByteArray>> entriesAt(int folder) override
    {
        return refuses("entriesAt") ? std::nullopt : FolderLayer::entriesAt(folder);
    }
    int fstatfs(int descriptor, struct statfs *result) override
    {
        return refuses("fstatfs") ? -1 : FolderLayer::fstatfs(descriptor, result);
    }
    /// As entriesAt().
    std::optional<int> flagsOf(int folder) override
    {
        return refuses("flagsOf") ? std::nullopt : FolderLayer::flagsOf(folder);
    }

protected:
    /// Whether the call is not made but fails; errno is set then.
    virtual bool fails() { return false; }

private:
    struct Intervention
    {
        QByteArray name;
        int number;
        std::function<void()> action;
    };

    bool refuses(const char *name)
    {
        const auto number = made_.size();
        const int numberOfName = numbers_[name]++;
        made_.append(name);
        for (const Intervention &intervention : interventions_) {
            if (intervention.number == (intervention.name.isEmpty() ? number : numberOfName) &&
                (intervention.name.isEmpty() || intervention.name == name))
                intervention.action();
        }
        return fails();
    }

    std::vector<Intervention> interventions_;
    QByteArrayList made_;
    /// How many there were of each name.
    QHash<QByteArray, int> numbers_;
};
