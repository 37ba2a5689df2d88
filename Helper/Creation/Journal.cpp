// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Journal.h"

#include <QFile>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace Creation {

Journal::Journal(QString path, FileDescriptor file, char *bytes, const JournalFormat::Slots &slots)
    : path_(std::move(path))
    , file_(std::move(file))
    , bytes_(bytes)
    , slots_(slots)
{
}

Journal::~Journal()
{
    ::munmap(bytes_, static_cast<size_t>(slots_.end));
    // Before closing: a child between its fork and its exec has the file open too.
    FileLayer::real().flock(file_.get(), LOCK_UN);
}

Result<std::shared_ptr<Journal>> Journal::open(const QString &path)
{
    using Opened = Result<std::shared_ptr<Journal>>;
    FileLayer &layer = FileLayer::real();
    const auto failed = [&path](int errorNumber) {
        return Opened::failure(
            systemError(QStringLiteral("cannot use the journal %1").arg(path), errorNumber));
    };
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
    void *bytes =
        ::mmap(nullptr, static_cast<size_t>(slots->end), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (bytes == MAP_FAILED)
        return failed(errno);
    return std::shared_ptr<Journal>(new Journal(path, std::move(file), static_cast<char *>(bytes), *slots));
}

void Journal::note(qsizetype operation, const Record::Entry &entry)
{
    const qsizetype place = slots_.begin + operation * JournalFormat::slotSize;
    if (place < slots_.end)
        JournalFormat::fill(bytes_ + place, entry);
}

} // namespace Creation
