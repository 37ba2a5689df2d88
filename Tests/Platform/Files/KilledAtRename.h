// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"

/// Leaves the disk as a process does that is killed before it renames a temporary file.
class KilledAtRename : public FileLayer
{
public:
    int rename(const QByteArray & /*from*/, const QByteArray & /*to*/) override { return -1; }
    int unlink(const QByteArray & /*path*/) override { return -1; }
};
