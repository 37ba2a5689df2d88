// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QColor>

/// Whether what stands on \a ground has to be light to be seen.
inline bool isDarkGround(const QColor &ground)
{
    constexpr int middle = 128;
    return ground.lightness() < middle;
}
