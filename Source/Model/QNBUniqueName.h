// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <cstdint>
#include <vector>

class QNBHierarchyItem;

/// Finds the name that a new thing gets among others. Comparison ignores case; empty names are in nobody's
/// way. Takes one look at each of the others, however many of them are numbered already.
class QNBUniqueNameSearch
{
public:
    /// For \a base with \a extension (if that is not empty), or else the first of "base-1.extension",
    /// "base-2.extension" …
    QNBUniqueNameSearch(const QString &base, const QString &extension);

    void addTaken(const QString &name);
    /// The first of these names that is not taken.
    QString uniqueName() const;

private:
    QString base_;
    /// With its full stop.
    QString suffix_;
    /// The lower-case forms of the name without a number, and of what stands before and behind a number.
    QString plain_;
    QString prefix_;
    QString tail_;
    /// No longer name is in the way.
    qsizetype longest_;
    /// Thousands of items may share one.
    QString lastLongName_;
    bool isPlainTaken_ = false;
    std::vector<std::uint32_t> takenNumbers_;
};

/// "base-number.extension", as such a name is written.
QString QNBNumberedName(const QString &base, const QString &extension, qsizetype number);

template <class Names>
QString QNBUniqueName(const QString &base, const QString &extension, const Names &names)
{
    QNBUniqueNameSearch search(base, extension);
    for (const QString &name : names)
        search.addTaken(name);
    return search.uniqueName();
}

/// The unique name among the children of \a level, of which \a forItem (by uid; may be null) does not count.
QString uniqueNameForLevel(const QNBHierarchyItem &level, const QString &baseName,
                           const QNBHierarchyItem *forItem, const QString &extension = {});
/// The same for a name with its extension, before which a number is put.
QString uniqueNameForFilename(const QString &filename, const QNBHierarchyItem &level,
                              const QNBHierarchyItem *forItem);
