// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

/// What kind of system this is.
namespace Gestalt {

/// The system version, coded in binary: two digits of the major version, one of the minor, one of the
/// correction, 0x1058 for 10.5.8. A desktop of today is newer than the last system that loads contextual-menu
/// plug-ins, 10.5.x.
constexpr qint32 systemVersion()
{
    return 0x1060;
}

} // namespace Gestalt
