// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringView>
#include <limits>

/// The user's application-support folder of the product: `$XDG_DATA_HOME/Quenby` (default
/// `~/.local/share/Quenby`). It holds "File Content" and "Scripts". Found on the first call and kept for the
/// life of the process.
QString QNBApplicationSupportPath();

/// The product's identifier: names the preference domain and the pane's bundle.
QString QNBProductIdentifier();

/// What the running helper is called on the session bus.
QString QNBHelperServiceName();

/// \a string without the UTF-16 units that are in \a characters; the order of the rest is unchanged.
QString stringByRemovingCharactersInSet(const QString &string, QStringView characters);

/// \a string without "/", "~" and ":", safe as a file name (but perhaps empty).
QString stringByDeletingFileSystemEntities(const QString &string);

/// The label number of a file manager for no name that is a label colour.
inline constexpr quint64 QNBNotFound = static_cast<quint64>(std::numeric_limits<qint64>::max());

/// The number of a label colour, 0 for none (the empty or null name) to 7; QNBNotFound for any other name.
/// Upper and lower case are not the same.
quint64 QNBFinderLabelForColor(const QString &colorName);

/// The colour of a label number, empty for 0 and for a number that is no label's.
QString QNBColorForFinderLabel(quint64 label);

/// \a flags of the file manager with this label, of which the low three bits count; all other flags stay.
quint16 QNBFinderFlagsWithLabel(quint16 flags, quint64 label);

/// Gives the file or folder at \a path the label, as above. Whether it could is not told: nothing may be
/// there, it may be a symbolic link, or the disk may keep no labels.
void QNBSetFinderLabelForPath(quint64 label, const QString &path);

/// The state of a check box as a number.
enum QNBButtonState : int {
    QNBMixedState = -1,
    QNBOffState = 0,
    QNBOnState = 1,
};

QNBButtonState QNBButtonStateForBool(bool value);
/// Mixed counts as false.
bool QNBBoolForButtonState(QNBButtonState state);

/// Between these numbers and those of our widgets.
Qt::CheckState QNBCheckStateForButtonState(QNBButtonState state);
QNBButtonState QNBButtonStateForCheckState(Qt::CheckState state);
