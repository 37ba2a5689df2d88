// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Record.h"

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

namespace Creation {

/// What a journal says of a creation: what was going to be made, written before the first call, and what was
/// made, noted meanwhile.
struct JournalContent
{
    /// Of the creation among all; the same in the journals of one creation in several folders.
    QString id;
    /// Of the preset.
    QString label;
    /// In nanoseconds since 1970, by the clock that file systems use. Nothing that was made is older.
    qint64 begun = 0;
    /// Whether the user has been told that the creation was interrupted.
    bool isTold = false;
    Plan plan;
    /// For each operation what it made or used, as far as that was noted. Only identity, mode, size and time
    /// are filled in.
    std::vector<std::optional<Record::Entry>> made = {};
};

/// The bytes of a journal, for this machine only: a head, the plan, and for each operation a slot of a fixed
/// size, in which what was made is noted. An empty slot is zeros. A slot says by itself whether it is whole:
/// after a power failure any of them may be empty, or not there at all.
class JournalFormat
{
public:
    /// How a journal begins: without its slots. What it says of \a content is all but `made`.
    static QByteArray write(const JournalContent &content);
    /// None if that is no journal. Slots that the bytes are too short for are empty.
    static std::optional<JournalContent> read(const QByteArray &bytes);

    /// Where in a journal its slots are, one after the other.
    struct Slots
    {
        qsizetype begin = 0;
        qsizetype end = 0;
    };
    /// None if that is no journal. \a bytes are its first headSize ones, at least; it has \a size.
    static std::optional<Slots> slotsOf(const char *bytes, qsizetype size);
    static constexpr qsizetype headSize = 48;
    static constexpr qsizetype slotSize = 32;
    /// Fills a slot. A process that is killed meanwhile leaves it empty or whole.
    static void fill(char *slot, const Record::Entry &entry);
    /// Where the byte is that is not 0 once the user was told.
    static qsizetype toldOffset();

private:
    static bool readPlan(const QByteArray &bytes, JournalContent &content);
};

} // namespace Creation
