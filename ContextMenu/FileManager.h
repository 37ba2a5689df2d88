// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/Manifest.h"
#include "ContextMenu/PresetMenu.h"

#include <memory>
#include <vector>

/// One of the desktop's file managers: where and how it takes menu entries of the user's own.
class FileManager
{
public:
    FileManager() = default;
    virtual ~FileManager();
    FileManager(const FileManager &) = delete;
    FileManager &operator=(const FileManager &) = delete;

    /// Those that are known.
    static std::vector<std::unique_ptr<FileManager>> all();

    /// By which it is known to people.
    virtual QString name() const = 0;
    /// Of its executable; by which it is known in the manifest.
    virtual QString program() const = 0;

    /// Whether the user has it: its program, or what it keeps of the user.
    bool isPresent() const;

    /// Whether something of what \a manifest notes for it is really there.
    virtual bool hasEntries(const Manifest &manifest) const = 0;

    /// Makes its entries show \a menu. What is as it should be is not written again. \a manifest is saved as
    /// needed. Gives what is not in the menu now and why, a sentence each: what its user has changed stays as
    /// it is.
    virtual Result<QStringList> write(const PresetMenu &menu, Manifest &manifest) const = 0;

    /// Removes what was written, and the file manager from \a manifest, which the caller saves. Gives a
    /// sentence for each thing that stays because its user has changed it.
    virtual Result<QStringList> remove(Manifest &manifest) const = 0;

protected:
    /// Where it keeps its settings.
    virtual QString configurationFolder() const = 0;
};
