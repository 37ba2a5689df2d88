// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Journal.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

namespace Creation {

namespace {

constexpr std::uint32_t xfs = 0x58465342;
/// The types of file systems that write reserved room in place, and count it against a quota when it is
/// reserved. That of ext4 is also that of ext2 and ext3.
constexpr std::array<std::uint32_t, 3> typesThatReserve = {EXT4_SUPER_MAGIC, xfs, TMPFS_MAGIC};

/// Whether a store into a mapping of the file cannot fail once room was reserved.
bool keepsRoom(FolderLayer &layer, int file)
{
    struct statfs disk = {};
    return layer.fstatfs(file, &disk) == 0 &&
           std::find(typesThatReserve.begin(), typesThatReserve.end(),
                     static_cast<std::uint32_t>(disk.f_type)) != typesThatReserve.end();
}

QString cannotUse(const QString &path, int errorNumber)
{
    return systemError(QStringLiteral("cannot use the journal %1").arg(path), errorNumber);
}

} // namespace

Journal::Journal(FolderLayer &layer, QString path, FileDescriptor file, char *mapping,
                 const JournalFormat::Slots &slots)
    : layer_(layer)
    , path_(std::move(path))
    , file_(std::move(file))
    , mapping_(mapping)
    , slots_(slots)
{
}

Journal::~Journal()
{
    if (mapping_)
        ::munmap(mapping_, static_cast<size_t>(slots_.end));
    // Before closing: a child between its fork and its exec has the file open too.
    layer_.flock(file_.get(), LOCK_UN);
}

Result<std::shared_ptr<Journal>> Journal::open(const QString &path, FolderLayer &layer)
{
    using Opened = Result<std::shared_ptr<Journal>>;
    const auto failed = [&path](int errorNumber) { return Opened::failure(cannotUse(path, errorNumber)); };
    FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_RDWR | O_NOFOLLOW, 0));
    struct stat information = {};
    std::array<char, JournalFormat::headSize> head = {};
    if (!file.isOpen() || layer.flock(file.get(), LOCK_EX | LOCK_NB) == -1 ||
        layer.fstat(file.get(), &information) == -1 || ::pread(file.get(), head.data(), head.size(), 0) == -1)
        return failed(errno);
    const auto slots = JournalFormat::slotsOf(head.data(), information.st_size);
    if (!slots)
        return failed(EINVAL);
    // The disk keeps room for the slots; it writes nothing into it.
    if (const int error = ::posix_fallocate(file.get(), 0, slots->end); error != 0)
        return failed(error);
    void *mapping = nullptr;
    if (keepsRoom(layer, file.get()))
        mapping = ::mmap(nullptr, static_cast<size_t>(slots->end), PROT_READ | PROT_WRITE, MAP_SHARED,
                         file.get(), 0);
    if (mapping == MAP_FAILED)
        return failed(errno);
    return std::shared_ptr<Journal>(
        new Journal(layer, path, std::move(file), static_cast<char *>(mapping), *slots));
}

void Journal::note(qsizetype operation, const Record::Entry &entry)
{
    const qsizetype place = slots_.begin + operation * JournalFormat::slotSize;
    if (place >= slots_.end)
        return;
    if (mapping_) {
        JournalFormat::fill(mapping_ + place, entry);
        return;
    }
    std::array<char, JournalFormat::slotSize> slot = {};
    JournalFormat::fill(slot.data(), entry);
    const ssize_t written = layer_.pwrite(file_.get(), slot.data(), slot.size(), place);
    if (written != ssize_t(slot.size()) && error_.isEmpty())
        error_ = cannotUse(path_, written == -1 ? errno : EIO);
}

Result<> Journal::store() const
{
    if (!error_.isEmpty())
        return Result<>::failure(error_);
    // Some file systems say here only that there was no room for what was written.
    return layer_.fsync(file_.get()) == 0 ? Result<>() : Result<>::failure(cannotUse(path_, errno));
}

} // namespace Creation
