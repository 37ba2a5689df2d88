// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FinderInfo.h"

#include <QByteArray>
#include <QStringView>
#include <optional>
#include <sys/stat.h>

/// A file-system reference: an entry that was there when the reference was made, known by its disk and its
/// number there, and the path that led to it. It promises that an operation through it reaches that entry or
/// fails, also after something else has taken its place; it does not follow an entry that is moved, and it
/// does not keep a removed one (whose number may be given to another, in the same place as well).
struct FSRef
{
    dev_t device = 0;
    ino_t number = 0;
    /// Which kind of entry, one of S_IFMT.
    mode_t kind = 0;
    /// Absolute, without "." and "..", without a slash at the end.
    QByteArray path;

    bool isFolder() const { return S_ISDIR(kind); }
    bool isLink() const { return S_ISLNK(kind); }
    /// The path of the folder it is in; the root is in itself.
    QByteArray folder() const;
    /// The last component of the path; empty for the root.
    QByteArray name() const;

    /// Whether both are one entry, by whatever paths.
    friend bool operator==(const FSRef &a, const FSRef &b)
    {
        return a.device == b.device && a.number == b.number;
    }
};

/// An old-style way to say which file is meant: a name in a folder that is known by its disk and its number
/// there. The root is in no folder: what says it is the name of its volume, in the root itself.
struct FSSpec
{
    dev_t volume = 0;
    ino_t parentDirectory = 0;
    QByteArray name;
};

/// The file system's catalogue: entries by reference, and what the file manager keeps of each in the extended
/// attribute `user.com.apple.FinderInfo`. A path means the entry that it names and not what that leads to, if
/// it is a symbolic link (these can have no such attribute). All fails silently, but for one log line for
/// each reason for which the system refused an attribute.
namespace FileCatalog {

/// What the disk of "/" is called in paths that begin with a disk.
inline constexpr QStringView rootVolumeName = u"Root";

inline constexpr char finderInfoAttribute[] = "user.com.apple.FinderInfo";

/// None if nothing is at the absolute \a path. A slash at its end is no part of the name.
std::optional<FSRef> reference(const QByteArray &path);

/// Whether the entry is where it was.
bool exists(const FSRef &reference);

std::optional<FSSpec> fileSpec(const FSRef &reference);

/// What a symbolic link leads to in the end, over any number of further links; none for a link into nothing
/// or in a circle. An entry that is no link is its own answer.
std::optional<FSRef> resolveAlias(const FSRef &reference);

/// An entry without the attribute has information that is all zero.
std::optional<FinderInfo> finderInfo(const FSRef &reference);
bool setFinderInfo(const FSRef &reference, const FinderInfo &information);

} // namespace FileCatalog
