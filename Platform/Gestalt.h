// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

/// What kind of system this is.
namespace Gestalt {

/// The version whose file-manager plug-in interface this layer provides, coded in binary: two digits of the
/// major version, one of the minor, one of the correction (10.5.8).
inline constexpr qint32 providedSystemVersion = 0x1058;

/// The system version, coded like that.
qint32 systemVersion();

} // namespace Gestalt
