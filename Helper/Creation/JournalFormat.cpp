// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/JournalFormat.h"

#include "Helper/Creation/ItemName.h"

#include <QDataStream>
#include <QFile>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstring>

namespace Creation {

namespace {

constexpr std::array<char, 8> magic = {'Q', 'N', 'B', 'J', 'r', 'n', 'l', '1'};
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;

struct Head
{
    std::array<char, 8> magic;
    quint64 textSize;
    quint64 operations;
    quint64 namesSize;
    qint64 begun;
    quint8 isTold;
    std::array<char, 7> unused;
};

struct PackedOperation
{
    quint64 device;
    quint64 number;
    qint32 folder;
    qint32 content;
    quint32 nameSize;
    quint16 mode;
    quint8 kind;
    quint8 label;
};

struct Slot
{
    quint64 device;
    quint64 number;
    qint64 size;
    qint64 seconds;
    quint32 nanoseconds;
    quint16 mode;
    /// Of the other fields; 0 in an empty slot only.
    quint16 check;
    std::array<char, 24> unused;
};
// Never on two pages of which only one may come to the disk.
static_assert(sizeof(Slot) == JournalFormat::slotSize);

quint16 checkOf(const Slot &slot)
{
    quint64 sum = slot.device;
    for (const quint64 field : {slot.number, quint64(slot.size), quint64(slot.seconds),
                                quint64(slot.nanoseconds) << 16 | slot.mode})
        sum = (sum ^ field) * 0x9E37'79B9'7F4A'7C15U;
    return static_cast<quint16>(sum >> 48) | 1U;
}

qsizetype slotsAt(const Head &head)
{
    const auto end =
        qsizetype(sizeof(Head) + head.textSize + head.operations * sizeof(PackedOperation) + head.namesSize);
    return (end + JournalFormat::slotSize - 1) / JournalFormat::slotSize * JournalFormat::slotSize;
}

/// None if the bytes are no journal, or too short for what the head promises.
std::optional<Head> headOf(const char *bytes, qsizetype size)
{
    Head head = {};
    if (size < qsizetype(sizeof head))
        return {};
    std::memcpy(&head, bytes, sizeof head);
    const auto most = quint64(size);
    if (head.magic != magic || head.textSize > most || head.namesSize > most ||
        head.operations > most / sizeof(PackedOperation) ||
        sizeof(Head) + head.textSize + head.operations * sizeof(PackedOperation) + head.namesSize > most)
        return {};
    return head;
}

std::optional<Record::Entry> entryIn(const char *bytes)
{
    Slot slot = {};
    std::memcpy(&slot, bytes, sizeof slot);
    if (slot.check != checkOf(slot))
        return {};
    Record::Entry entry;
    entry.identity = FileIdentity(static_cast<dev_t>(slot.device), static_cast<ino_t>(slot.number));
    entry.mode = slot.mode;
    entry.size = slot.size;
    entry.modified = {static_cast<time_t>(slot.seconds), static_cast<long>(slot.nanoseconds)};
    return entry;
}

} // namespace

qsizetype JournalFormat::toldOffset()
{
    return offsetof(Head, isTold);
}

QByteArray JournalFormat::write(const JournalContent &content)
{
    const Plan &plan = content.plan;
    QByteArray text;
    QDataStream stream(&text, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << content.id << content.label << plan.target_ << plan.resolvedTarget_
           << static_cast<quint64>(plan.targetIdentity_.device)
           << static_cast<quint64>(plan.targetIdentity_.number) << plan.contentFolder_
           << static_cast<quint32>(plan.contents_.size());
    for (const Content &needed : plan.contents_)
        stream << needed.name << static_cast<quint64>(needed.identity.device)
               << static_cast<quint64>(needed.identity.number);

    Head head = {magic, quint64(text.size()), plan.operations_.size(), 0, content.begun, 0, {}};
    for (const Operation &operation : plan.operations_)
        head.namesSize += quint64(operation.name.size());
    const qsizetype firstSlot = slotsAt(head);
    QByteArray bytes(firstSlot + qsizetype(head.operations * sizeof(Slot)), '\0');
    char *place = bytes.data();
    const auto put = [&place](const void *data, std::size_t size) {
        std::memcpy(place, data, size);
        place += size;
    };
    put(&head, sizeof head);
    put(text.constData(), std::size_t(text.size()));
    for (const Operation &operation : plan.operations_) {
        const PackedOperation packed = {operation.identity.device,
                                        operation.identity.number,
                                        operation.folder,
                                        operation.content,
                                        static_cast<quint32>(operation.name.size()),
                                        operation.mode,
                                        static_cast<quint8>(operation.kind),
                                        operation.label};
        put(&packed, sizeof packed);
    }
    for (const Operation &operation : plan.operations_)
        put(operation.name.constData(), std::size_t(operation.name.size()));
    return bytes;
}

bool JournalFormat::readPlan(const QByteArray &bytes, JournalContent &content)
{
    const Head head = *headOf(bytes.constData(), bytes.size());
    Plan &plan = content.plan;
    QDataStream stream(bytes.mid(sizeof head, qsizetype(head.textSize)));
    stream.setVersion(streamVersion);
    quint64 device = 0;
    quint64 number = 0;
    quint32 contents = 0;
    stream >> content.id >> content.label >> plan.target_ >> plan.resolvedTarget_ >> device >> number >>
        plan.contentFolder_ >> contents;
    plan.targetIdentity_ = FileIdentity(static_cast<dev_t>(device), static_cast<ino_t>(number));
    while (stream.status() == QDataStream::Ok && plan.contents_.size() < contents) {
        Content needed;
        stream >> needed.name >> device >> number;
        needed.identity = FileIdentity(static_cast<dev_t>(device), static_cast<ino_t>(number));
        plan.contents_.push_back(needed);
    }
    if (stream.status() != QDataStream::Ok || !plan.resolvedTarget_.startsWith('/') ||
        plan.resolvedTarget_.contains('\0'))
        return false;

    const char *place = bytes.constData() + sizeof head + head.textSize;
    const char *name = place + head.operations * sizeof(PackedOperation);
    const char *namesEnd = name + head.namesSize;
    for (quint64 i = 0; i < head.operations; ++i, place += sizeof(PackedOperation)) {
        PackedOperation packed = {};
        std::memcpy(&packed, place, sizeof packed);
        if (packed.kind > static_cast<quint8>(Operation::Kind::FinishFolder) ||
            packed.nameSize > quint64(namesEnd - name) || packed.content < Operation::noContent ||
            packed.content >= qint64(contents))
            return false;
        Operation operation;
        operation.kind = static_cast<Operation::Kind>(packed.kind);
        operation.label = packed.label;
        operation.mode = packed.mode;
        operation.folder = packed.folder;
        operation.content = packed.content;
        operation.name = QByteArray(name, qsizetype(packed.nameSize));
        operation.identity =
            FileIdentity(static_cast<dev_t>(packed.device), static_cast<ino_t>(packed.number));
        name += packed.nameSize;
        const bool isFinish = operation.kind == Operation::Kind::FinishFolder;
        const auto isFolder = [&plan](qint32 folder) {
            if (folder < 0 || quint64(folder) >= plan.operations_.size())
                return false;
            const Operation::Kind kind = plan.operations_[std::size_t(folder)].kind;
            return kind == Operation::Kind::MakeFolder || kind == Operation::Kind::UseFolder;
        };
        if (!(isFolder(operation.folder) || (!isFinish && operation.folder == Operation::noOperation)) ||
            (!isFinish && !ItemName::problem(QFile::decodeName(operation.name), operation.name).isEmpty()))
            return false;
        plan.operations_.push_back(operation);
    }
    return true;
}

std::optional<JournalContent> JournalFormat::read(const QByteArray &bytes)
{
    const std::optional<Head> head = headOf(bytes.constData(), bytes.size());
    JournalContent content;
    if (!head || !readPlan(bytes, content))
        return {};
    content.begun = head->begun;
    content.isTold = head->isTold != 0;
    const auto operations = qsizetype(head->operations);
    content.made.resize(std::size_t(operations));
    const qsizetype firstSlot = slotsAt(*head);
    const qsizetype whole = (bytes.size() - firstSlot) / qsizetype(sizeof(Slot));
    for (qsizetype i = 0; i < std::min(operations, whole); ++i)
        content.made[std::size_t(i)] = entryIn(bytes.constData() + firstSlot + i * qsizetype(sizeof(Slot)));
    return content;
}

qsizetype JournalFormat::firstSlot(const char *bytes, qsizetype size)
{
    const std::optional<Head> head = headOf(bytes, size);
    return head ? slotsAt(*head) : -1;
}

void JournalFormat::fill(char *slot, const Record::Entry &entry)
{
    Slot filled = {entry.identity.device,
                   entry.identity.number,
                   entry.size,
                   entry.modified.tv_sec,
                   static_cast<quint32>(entry.modified.tv_nsec),
                   entry.mode,
                   0,
                   {}};
    // Empty first: one that is filled again is never half the one and half the other. Nobody else reads it
    // now, and a kill comes between two steps of this thread as a signal does.
    std::memcpy(slot + offsetof(Slot, check), &filled.check, sizeof filled.check);
    std::atomic_signal_fence(std::memory_order_release);
    std::memcpy(slot, &filled, offsetof(Slot, check));
    std::atomic_signal_fence(std::memory_order_release);
    filled.check = checkOf(filled);
    std::memcpy(slot + offsetof(Slot, check), &filled.check, sizeof filled.check);
}

} // namespace Creation
