// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/FileIdentity.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <ctime>
#include <optional>
#include <vector>

class FolderLayer;

namespace Creation {

/// What one run made, and where.
struct Record
{
    struct Entry
    {
        enum class Kind : quint8 {
            File,
            Folder,
            /// A folder that had been there before: not made, but something was made in it.
            UsedFolder,
        };

        Kind kind = Kind::File;
        /// With the bits above the permissions.
        quint16 mode = 0;
        /// The place of the folder it is in among the entries, before its own; inTarget for the target.
        qint32 folder = inTarget;
        QByteArray name;
        FileIdentity identity;
        /// Of files only, as the time of modification.
        qint64 size = 0;
        timespec modified = {};

        bool isFolder() const { return kind != Kind::File; }
        bool isMade() const { return kind != Kind::UsedFolder; }
    };
    static constexpr qint32 inTarget = -1;

    /// Absolute, without links.
    QByteArray target;
    FileIdentity targetIdentity;
    /// In the order in which they were made.
    std::vector<Entry> entries;

    /// Whether nothing was made.
    bool isEmpty() const;
    /// Some of the entries, by their numbers, and the folders that they are in.
    Record only(const std::vector<qsizetype> &numbers) const;
    /// The path of an entry below the target, in one line for people.
    QString path(qsizetype entry) const;

    /// For storing.
    QVariantMap toVariant() const;
    /// None if that is no record: names that are paths, folders that are files …
    static std::optional<Record> fromVariant(const QVariantMap &stored);
};

/// What one creation made, in several folders, in the order in which it went to them.
using Records = std::vector<Record>;

struct UndoOutcome
{
    bool succeeded = false;
    /// For people: what stands in the way.
    QString error;
    /// What could not be removed after others were; none if nothing was touched.
    std::optional<Records> rest = {};
};

/// What became of earlier undos of the same record.
enum class EarlierUndo {
    None,
    /// One may have been ended in the middle, whatever by.
    Unfinished,
};

/// Removes what a run made, if that is all as the run left it: where it was, the same files and folders with
/// the same modes, the files of the same size and time of modification, nothing else in the folders. Else
/// nothing is removed. What is changed at the very moment of the removal is left alone and told.
///
/// After an unfinished undo the same holds for what that one has not come to. What it has removed are the
/// entries from some place to the end, because it goes from the last to the first; one that is missing among
/// the others was removed by somebody else.
UndoOutcome undo(const Record &record, EarlierUndo earlier = EarlierUndo::None);
/// The same with system calls of one's own.
UndoOutcome undo(const Record &record, FolderLayer &layer, EarlierUndo earlier = EarlierUndo::None);
/// The same of several, which are undone all or none, from the last to the first.
UndoOutcome undo(const Records &records, EarlierUndo earlier = EarlierUndo::None);
UndoOutcome undo(const Records &records, FolderLayer &layer, EarlierUndo earlier = EarlierUndo::None);

} // namespace Creation
