// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/Record.h"

#include "Helper/Creation/ItemName.h"
#include "Platform/LineText.h"

#include <QDataStream>
#include <QFile>
#include <algorithm>

namespace Creation {

namespace {

namespace Key {
const QString target = QStringLiteral("target");
const QString device = QStringLiteral("device");
const QString number = QStringLiteral("number");
const QString entries = QStringLiteral("entries");
} // namespace Key

/// Of the form in which entries are packed.
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;

QDataStream &operator<<(QDataStream &stream, const Record::Entry &entry)
{
    return stream << static_cast<quint8>(entry.kind) << entry.mode << entry.folder << entry.name
                  << static_cast<quint64>(entry.identity.device)
                  << static_cast<quint64>(entry.identity.number) << entry.size
                  << static_cast<qint64>(entry.modified.tv_sec)
                  << static_cast<qint64>(entry.modified.tv_nsec);
}

QDataStream &operator>>(QDataStream &stream, Record::Entry &entry)
{
    quint8 kind = 0;
    quint64 device = 0;
    quint64 number = 0;
    qint64 seconds = 0;
    qint64 nanoseconds = 0;
    stream >> kind >> entry.mode >> entry.folder >> entry.name >> device >> number >> entry.size >> seconds >>
        nanoseconds;
    if (kind > static_cast<quint8>(Record::Entry::Kind::UsedFolder))
        stream.setStatus(QDataStream::ReadCorruptData);
    entry.kind = static_cast<Record::Entry::Kind>(kind);
    entry.identity = FileIdentity(static_cast<dev_t>(device), static_cast<ino_t>(number));
    entry.modified.tv_sec = static_cast<time_t>(seconds);
    entry.modified.tv_nsec = static_cast<long>(nanoseconds);
    return stream;
}

bool isSound(const std::vector<Record::Entry> &entries, const Record::Entry &next)
{
    const auto isPlace = [&](qint32 folder) {
        return folder == Record::inTarget ||
               (folder >= 0 && static_cast<std::size_t>(folder) < entries.size() &&
                entries[static_cast<std::size_t>(folder)].isFolder());
    };
    return isPlace(next.folder) && ItemName::problem(QFile::decodeName(next.name), next.name).isEmpty();
}

} // namespace

bool Record::isEmpty() const
{
    return std::none_of(entries.cbegin(), entries.cend(), [](const Entry &entry) { return entry.isMade(); });
}

Record Record::only(const std::vector<qsizetype> &numbers) const
{
    std::vector<bool> isWanted(entries.size());
    for (const qsizetype number : numbers) {
        for (auto entry = static_cast<qint32>(number);
             entry != inTarget && !isWanted[static_cast<std::size_t>(entry)];
             entry = entries[static_cast<std::size_t>(entry)].folder)
            isWanted[static_cast<std::size_t>(entry)] = true;
    }
    Record chosen{target, targetIdentity, {}};
    std::vector<qint32> places(entries.size(), inTarget);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!isWanted[i])
            continue;
        places[i] = static_cast<qint32>(chosen.entries.size());
        Entry &entry = chosen.entries.emplace_back(entries[i]);
        if (entry.folder != inTarget)
            entry.folder = places[static_cast<std::size_t>(entry.folder)];
    }
    return chosen;
}

QString Record::path(qsizetype entry) const
{
    QList<QString> components;
    qsizetype size = 0;
    while (entry != inTarget && size <= ItemName::mostShown) {
        const Entry &step = entries[static_cast<std::size_t>(entry)];
        components.append(lineText(step.name));
        size += components.constLast().size() + 1;
        entry = step.folder;
    }
    return ItemName::shownPath(components, entry != inTarget);
}

QVariantMap Record::toVariant() const
{
    QByteArray packed;
    QDataStream stream(&packed, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    for (const Entry &entry : entries)
        stream << entry;
    return {
        {Key::target, target},
        {Key::device, static_cast<qulonglong>(targetIdentity.device)},
        {Key::number, static_cast<qulonglong>(targetIdentity.number)},
        {Key::entries, packed},
    };
}

std::optional<Record> Record::fromVariant(const QVariantMap &stored)
{
    Record record;
    record.target = stored.value(Key::target).toByteArray();
    record.targetIdentity = FileIdentity(static_cast<dev_t>(stored.value(Key::device).toULongLong()),
                                         static_cast<ino_t>(stored.value(Key::number).toULongLong()));
    if (!record.target.startsWith('/') || record.target.contains('\0'))
        return {};
    const QByteArray packed = stored.value(Key::entries).toByteArray();
    QDataStream stream(packed);
    stream.setVersion(streamVersion);
    while (!stream.atEnd()) {
        Entry entry;
        stream >> entry;
        if (stream.status() != QDataStream::Ok || !isSound(record.entries, entry))
            return {};
        record.entries.push_back(entry);
    }
    return record;
}

} // namespace Creation
