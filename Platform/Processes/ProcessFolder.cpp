// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/ProcessFolder.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

const QString deletedNote = QStringLiteral(" (deleted)");

/// More than the kernel writes: of a name, and of the some fifty numbers of `stat`.
constexpr size_t commandCapacity = 256;
constexpr size_t statusCapacity = 4096;

/// Before the numbers of the users in `status`: the real one first, blanks between them. A line end in the
/// name of the process is escaped there.
constexpr QByteArrayView usersLine = "\nUid:\t";

/// The fields of `stat` behind the name, the state being the first.
enum StatusField { State = 0, Parent = 1, Threads = 17, StartTime = 19, FieldCount = 20 };

template <typename Number>
std::optional<Number> numberIn(QByteArrayView text)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace

ssize_t readProcessFile(int folder, const char *path, char *buffer, size_t capacity)
{
    const int file = ::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file == -1)
        return -1;
    ssize_t size = 0;
    do {
        size = ::read(file, buffer, capacity);
    } while (size == -1 && errno == EINTR);
    ::close(file);
    return size;
}

std::optional<ProcessStatus> ProcessStatus::parse(QByteArrayView stat)
{
    const qsizetype nameEnd = stat.lastIndexOf(')');
    // A last number without an end may be the beginning of a longer one.
    if (nameEnd == -1 || !(stat.endsWith('\n') || stat.endsWith(' ')))
        return std::nullopt;
    std::array<QByteArrayView, FieldCount> fields;
    qsizetype start = nameEnd + 2;
    for (QByteArrayView &field : fields) {
        if (start >= stat.size())
            return std::nullopt;
        qsizetype end = start;
        while (end < stat.size() && stat[end] != ' ' && stat[end] != '\n')
            ++end;
        field = stat.sliced(start, end - start);
        start = end + 1;
    }
    const auto parent = numberIn<pid_t>(fields[Parent]);
    const auto threads = numberIn<long>(fields[Threads]);
    const auto startTime = numberIn<quint64>(fields[StartTime]);
    if (fields[State].size() != 1 || !parent || !threads || !startTime)
        return std::nullopt;
    const char state = fields[State].front();
    // While it has other threads, a process whose first one has ended goes on.
    const bool isZombie = state == 'X' || state == 'x' || (state == 'Z' && *threads <= 1);
    return ProcessStatus{*parent, *startTime, isZombie};
}

std::optional<ProcessFolder> ProcessFolder::open(int root, pid_t pid)
{
    std::array<char, 16> name;
    std::snprintf(name.data(), name.size(), "%d", int(pid));
    FileDescriptor folder(FileLayer::real(), ::openat(root, name.data(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
        return std::nullopt;
    return ProcessFolder(std::move(folder));
}

std::optional<ProcessStatus> ProcessFolder::status() const
{
    std::array<char, statusCapacity> buffer;
    const ssize_t size = readProcessFile(folder_.get(), "stat", buffer.data(), buffer.size());
    if (size <= 0)
        return std::nullopt;
    return ProcessStatus::parse(QByteArrayView(buffer.data(), size));
}

std::optional<uid_t> ProcessFolder::realUser() const
{
    std::array<char, statusCapacity> buffer;
    const ssize_t size = readProcessFile(folder_.get(), "status", buffer.data(), buffer.size());
    const QByteArrayView status(buffer.data(), std::max<ssize_t>(size, 0));
    const qsizetype line = status.indexOf(usersLine);
    if (line == -1)
        return std::nullopt;
    const QByteArrayView users = status.sliced(line + usersLine.size());
    const qsizetype end = users.indexOf('\t');
    return end == -1 ? std::nullopt : numberIn<uid_t>(users.first(end));
}

std::optional<QByteArray> ProcessFolder::command() const
{
    std::array<char, commandCapacity> buffer;
    const ssize_t size = readProcessFile(folder_.get(), "comm", buffer.data(), buffer.size());
    if (size < 0)
        return std::nullopt;
    QByteArray command(buffer.data(), size);
    // The one line end that the kernel adds; others are part of the name.
    if (command.endsWith('\n'))
        command.chop(1);
    return command;
}

QString ProcessFolder::executable() const
{
    std::array<char, PATH_MAX> buffer;
    const ssize_t size = ::readlinkat(folder_.get(), "exe", buffer.data(), buffer.size());
    if (size <= 0 || size_t(size) == buffer.size() || buffer.front() != '/')
        return {};
    const QString path = QFile::decodeName(QByteArray(buffer.data(), size));
    // A file may be named like that, too.
    return path.endsWith(deletedNote) && !QFileInfo::exists(path) ? path.chopped(deletedNote.size()) : path;
}

QString ProcessFolder::name() const
{
    const std::optional<QByteArray> known = command();
    if (!known)
        return {};
    if (known->size() == longestCommand) {
        const QString file = executable().section(u'/', -1);
        if (QFile::encodeName(file).startsWith(*known))
            return file;
    }
    // A process may be named "", which is not the same as having no name.
    return known->isEmpty() ? QStringLiteral("") : QString::fromLocal8Bit(*known);
}
