// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringView>

/// The user's application-support folder of the product: `$XDG_DATA_HOME/Quenby` (default
/// `~/.local/share/Quenby`). It holds "File Content" and "Scripts". Found on the first call and kept for the
/// life of the process.
QString QNBApplicationSupportPath();

/// The product's identifier: names the preference domain and the pane's bundle.
QString QNBProductIdentifier();

/// \a string without the UTF-16 units that are in \a characters; the order of the rest is unchanged.
QString stringByRemovingCharactersInSet(const QString &string, QStringView characters);

/// \a string without "/", "~" and ":", safe as a file name (but perhaps empty).
QString stringByDeletingFileSystemEntities(const QString &string);
