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

constexpr std::array<char, 8> magic = {'Q', 'N', 'B', 'J', 'r', 'n', 'l', '2'};
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;

struct Head
{
    std::array<char, 8> magic;
    quint64 textSize;
    quint64 operations;
    /// Of what comes before the slots.
    quint64 planSize;
    qint64 begun;
    quint8 isTold;
    std::array<char, 7> unused;
};
static_assert(sizeof(Head) == JournalFormat::headSize);

struct PackedOperation
{
    qint32 folder;
    qint32 content;
    quint16 nameSize;
    quint16 mode;
    quint8 kind;
    quint8 label;
    std::array<char, 2> unused;
};

struct Slot
{
    quint64 number;
    qint64 size;
    /// In nanoseconds since 1970.
    quint64 modified;
    /// The kernel's numbers of devices have no more bits.
    quint32 device;
    quint16 mode;
    /// Of the other fields; 0 in an empty slot only.
    quint16 check;
};
// Never on two pages of which only one may come to the disk.
static_assert(sizeof(Slot) == JournalFormat::slotSize);
constexpr quint64 nanosecondsInSecond = 1'000'000'000;

quint16 checkOf(const Slot &slot)
{
    quint64 sum = quint64(slot.device) << 16 | slot.mode;
    for (const quint64 field : {slot.number, quint64(slot.size), slot.modified})
        sum = (sum ^ field) * 0x9E37'79B9'7F4A'7C15U;
    return static_cast<quint16>(sum >> 48) | 1U;
}

qsizetype slotsAt(const Head &head)
{
    return (qsizetype(head.planSize) + JournalFormat::slotSize - 1) / JournalFormat::slotSize *
           JournalFormat::slotSize;
}

/// None if the bytes are no journal, or too short for what the head promises.
std::optional<Head> headOf(const char *bytes, qsizetype size)
{
    Head head = {};
    if (size < qsizetype(sizeof head))
        return {};
    std::memcpy(&head, bytes, sizeof head);
    const auto most = quint64(size);
    if (head.magic != magic || head.planSize > most || head.planSize < sizeof head ||
        head.textSize > head.planSize - sizeof head ||
        head.operations > (head.planSize - sizeof head - head.textSize) / sizeof(PackedOperation))
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
    entry.modified = {static_cast<time_t>(slot.modified / nanosecondsInSecond),
                      static_cast<long>(slot.modified % nanosecondsInSecond)};
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
    // Few operations have one.
    for (const Operation &operation : plan.operations_) {
        if (operation.kind == Operation::Kind::UseFolder)
            stream << static_cast<quint64>(operation.identity.device)
                   << static_cast<quint64>(operation.identity.number);
    }

    std::size_t planSize = sizeof(Head) + std::size_t(text.size());
    for (const Operation &operation : plan.operations_)
        planSize += sizeof(PackedOperation) + std::size_t(operation.name.size());
    QByteArray bytes(qsizetype(planSize), Qt::Uninitialized);
    char *place = bytes.data();
    const auto put = [&place](const void *data, std::size_t size) {
        std::memcpy(place, data, size);
        place += size;
    };
    const Head head = {magic, quint64(text.size()), plan.operations_.size(), planSize, content.begun, 0, {}};
    put(&head, sizeof head);
    put(text.constData(), std::size_t(text.size()));
    // Each with its name behind it.
    for (const Operation &operation : plan.operations_) {
        const PackedOperation packed = {operation.folder,
                                        operation.content,
                                        static_cast<quint16>(operation.name.size()),
                                        operation.mode,
                                        static_cast<quint8>(operation.kind),
                                        operation.label,
                                        {}};
        put(&packed, sizeof packed);
        put(operation.name.constData(), std::size_t(operation.name.size()));
    }
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
    const char *const end = bytes.constData() + head.planSize;
    for (quint64 i = 0; i < head.operations; ++i) {
        PackedOperation packed = {};
        if (end - place < qsizetype(sizeof packed))
            return false;
        std::memcpy(&packed, place, sizeof packed);
        place += sizeof packed;
        if (packed.kind > static_cast<quint8>(Operation::Kind::FinishFolder) ||
            packed.nameSize > end - place || packed.content < Operation::noContent ||
            packed.content >= qint64(contents))
            return false;
        Operation operation;
        operation.kind = static_cast<Operation::Kind>(packed.kind);
        operation.label = packed.label;
        operation.mode = packed.mode;
        operation.folder = packed.folder;
        operation.content = packed.content;
        operation.name = QByteArray(place, packed.nameSize);
        if (operation.kind == Operation::Kind::UseFolder) {
            stream >> device >> number;
            operation.identity = FileIdentity(static_cast<dev_t>(device), static_cast<ino_t>(number));
        }
        place += packed.nameSize;
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
    return stream.status() == QDataStream::Ok;
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

std::optional<JournalFormat::Slots> JournalFormat::slotsOf(const char *bytes, qsizetype size)
{
    const std::optional<Head> head = headOf(bytes, size);
    if (!head)
        return {};
    return Slots{slotsAt(*head), slotsAt(*head) + qsizetype(head->operations) * slotSize};
}

void JournalFormat::fill(char *slot, const Record::Entry &entry)
{
    Slot filled = {entry.identity.number,
                   entry.size,
                   quint64(entry.modified.tv_sec) * nanosecondsInSecond + quint64(entry.modified.tv_nsec),
                   static_cast<quint32>(entry.identity.device),
                   entry.mode,
                   0};
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
