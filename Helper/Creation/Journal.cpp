// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Journal.h"

#include "Helper/Creation/JournalFormat.h"

#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <utility>

namespace Creation {

Journal::Journal(QString path, FileDescriptor file, char *bytes, qsizetype size)
    : path_(std::move(path))
    , file_(std::move(file))
    , bytes_(bytes)
    , size_(size)
    , firstSlot_(JournalFormat::firstSlot(bytes, size))
{
}

Journal::~Journal()
{
    ::munmap(bytes_, static_cast<size_t>(size_));
    // Before closing: a child between its fork and its exec has the file open too.
    FileLayer::real().flock(file_.get(), LOCK_UN);
}

Result<std::shared_ptr<Journal>> Journal::open(const QString &path)
{
    using Opened = Result<std::shared_ptr<Journal>>;
    FileLayer &layer = FileLayer::real();
    const auto failed = [&path] {
        return Opened::failure(systemError(QStringLiteral("cannot use the journal %1").arg(path), errno));
    };
    FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_RDWR | O_NOFOLLOW, 0));
    struct stat information = {};
    if (!file.isOpen() || layer.flock(file.get(), LOCK_EX | LOCK_NB) == -1 ||
        layer.fstat(file.get(), &information) == -1)
        return failed();
    void *bytes = ::mmap(nullptr, static_cast<size_t>(information.st_size), PROT_READ | PROT_WRITE,
                         MAP_SHARED, file.get(), 0);
    if (bytes == MAP_FAILED)
        return failed();
    return std::shared_ptr<Journal>(
        new Journal(path, std::move(file), static_cast<char *>(bytes), information.st_size));
}

void Journal::note(qsizetype operation, const Record::Entry &entry)
{
    const qsizetype place = firstSlot_ + operation * JournalFormat::slotSize;
    if (firstSlot_ != -1 && place + JournalFormat::slotSize <= size_)
        JournalFormat::fill(bytes_ + place, entry);
}

} // namespace Creation
