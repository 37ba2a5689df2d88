// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QColor>

/// The opaque colour whose red, green and blue are the last six digits of \a hexadecimal, which may begin
/// with "0x" and ends for this purpose at the first character that is no digit. A string that begins
/// otherwise,
/// "#" included, is black.
QColor colorFromHexRGB(const QString &hexadecimal);
