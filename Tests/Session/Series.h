// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

/// How often a test repeats what chance decides: \a usual times, or \a whole times in the long run of
/// `scripts/test --long`.
inline int seriesOf(int usual, int whole)
{
    return qEnvironmentVariableIsSet("QUENBY_LONG_SERIES") ? whole : usual;
}
