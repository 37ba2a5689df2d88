// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// What commands call the preset at \a index of the list if its label does not tell it from the others.
inline QString QNBNumberedPresetName(qsizetype index)
{
    return u'#' + QString::number(index + 1);
}
