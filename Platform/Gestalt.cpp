// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Gestalt.h"

qint32 Gestalt::systemVersion()
{
    return providedSystemVersion;
}
