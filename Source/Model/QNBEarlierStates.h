// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/Preferences.h"
#include "Source/Model/QNBPresetRecord.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

/// The presets as they were stored at another time.
struct QNBEarlierState
{
    /// UTC.
    QDateTime saved;
    QList<QNBPresetRecordPtr> presets;
};

/// What becomes of a list of presets that gives way to another one, by labels. Presets of the same label are
/// taken for the same one, in their order.
struct QNBPresetsDifference
{
    QStringList added;
    QStringList removed;
    QStringList changed;
    /// They also stand in another order.
    bool isReordered = false;

    bool isNone() const { return added.isEmpty() && removed.isEmpty() && changed.isEmpty() && !isReordered; }
};

namespace QNBEarlierStates {

/// Those that are kept of the domain, the youngest first; what holds no presets is left out.
QList<QNBEarlierState> all(const Preferences &preferences);

QNBPresetsDifference difference(const QList<QNBPresetRecordPtr> &now, const QList<QNBPresetRecordPtr> &then);

} // namespace QNBEarlierStates
