// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/ContentBytes.h"

#include "Helper/Creation/SupportFile.h"

#include <cerrno>

namespace Creation {

namespace {

constexpr size_t rangeSize = size_t(1) << 30;

} // namespace

bool ContentBytes::writeTo(int file, qint32 content)
{
    if (const auto kept = kept_.constFind(content); kept != kept_.cend())
        return write(file, *kept);
    const Content &source = plan_.contents()[static_cast<std::size_t>(content)];
    const SupportFile from(layer_, plan_.contentFolder(), source.name);
    if (!from.isOpen() || FileIdentity(from.information()) != source.identity) {
        errno = from.isOpen() ? ESTALE : from.error();
        return false;
    }
    const qsizetype size = from.information().st_size;
    const bool isSmall = size <= mostOfOne && size <= mostOfAll - keptSize_;
    // Where the file systems cannot do it themselves, none of it is done.
    ssize_t copied = 0;
    while (!isSmall && (copied = layer_.copy_file_range(from.descriptor(), file, rangeSize)) > 0) {
    }
    return copy(from.descriptor(), file, content, isSmall);
}

/// Copies from where \a from stands to its end. It may have become longer since it was looked at.
bool ContentBytes::copy(int from, int file, qint32 content, bool keep)
{
    QByteArray all;
    QByteArray block(mostOfOne, Qt::Uninitialized);
    ssize_t size = 0;
    while ((size = layer_.read(from, block.data(), static_cast<size_t>(block.size()))) > 0) {
        const QByteArray bytes = block.first(size);
        if (!write(file, bytes))
            return false;
        keep = keep && all.size() + size <= mostOfOne;
        if (keep)
            all.append(bytes);
    }
    if (size == 0 && keep) {
        keptSize_ += all.size();
        kept_.insert(content, all);
    }
    return size == 0;
}

bool ContentBytes::write(int file, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            layer_.write(file, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (written <= 0) {
            // None of it written, and no reason: the next call might say the same, for ever.
            errno = written == 0 ? EIO : errno;
            return false;
        }
        done += written;
    }
    return true;
}

} // namespace Creation
