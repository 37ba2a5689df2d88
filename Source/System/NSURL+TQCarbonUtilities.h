// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileCatalog.h"

#include <QPointF>
#include <QString>
#include <QUrl>

/// What the file system's catalogue knows of the entry that a file URL names. The URL names the entry itself:
/// of a symbolic link the link, in any operation but resolveAliasFile. Every operation fails, silently, for a
/// URL that is of no file of this machine or names nothing; null is an empty URL or a null string.

bool getFSRef(const QUrl &url, FSRef &reference);
bool getFSSpec(const QUrl &url, FSSpec &fileSpec);
/// The URL from which the reference was made (without "." and ".." on the way); null if the entry is there no
/// longer.
QUrl URLWithFSRef(const FSRef &reference);

/// The folder that the entry is in; null for the root, which is in none.
QUrl URLByDeletingLastPathComponent(const QUrl &url);

/// The path with colons between its components, from the name of the root's volume on:
/// "/home/a:b/file" is "Root:home:a/b:file". Names may hold a slash there, and none a colon; the two stand
/// for each other. Ends with a colon exactly for a folder. Null also for a name that is not UTF-8.
QString fileSystemPathHFSStyle(const QUrl &url);

/// The way back, whether or not anything is there: the URL ends with a slash exactly if the path ends with a
/// colon. Null for a path of another volume, for one that does not begin with a volume (":file", "file"), and
/// for one with a component that is no name: an empty one, "." or "..", or what UTF-8 cannot spell.
QUrl URLWithFileSystemPathHFSStyle(const QString &path);

/// Aliases are symbolic links: what a link leads to in the end, \a url itself if it is no link, null for a
/// link into nothing or in a circle.
QUrl resolveAliasFile(const QUrl &url);

/// Into those of the three that are not null; nothing is filled in on failure.
bool finderInfoFlagsTypeCreator(const QUrl &url, quint16 *flags, quint32 *type, quint32 *creator);

/// Sets the flags in \a mask to those of \a flags, clears "has been inited" in every case, so that the file
/// manager looks at the entry again, and sets type and creator.
bool setFinderInfoFlagsMaskTypeCreator(const QUrl &url, quint16 flags, quint16 mask, quint32 type,
                                       quint32 creator);

/// The icon's position, horizontal and vertical; the zero point on failure.
QPointF finderLocation(const QUrl &url);

/// Stores whole numbers of 16 bits with a sign: the fraction is cut off towards zero, and what is beyond the
/// range becomes its end. Fails for a coordinate that is not a number.
bool setFinderLocation(const QUrl &url, QPointF location);

bool hasCustomIcon(const QUrl &url);
