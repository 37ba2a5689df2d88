// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FolderLayer.h"

/// Makes the real calls as on a disk that takes names for the same which differ in case, or in composition,
/// only.
class BlindDisk : public FolderLayer
{
public:
    /// How it can be told from others.
    enum class Sign { Type, Flag, None };
    explicit BlindDisk(Sign sign)
        : sign_(sign)
    {
    }

    int openat(int folder, const char *name, int flags, mode_t mode) override;
    int mkdirat(int folder, const char *name, mode_t mode) override;
    int unlinkat(int folder, const char *name, int flags) override;
    int fstatat(int folder, const char *name, struct stat *result, int flags) override;
    int fstatfs(int descriptor, struct statfs *result) override;
    std::optional<int> flagsOf(int folder) override;

private:
    QByteArray found(int folder, const char *name);

    const Sign sign_;
};
