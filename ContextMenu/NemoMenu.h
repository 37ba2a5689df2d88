// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// Nemo: for each preset one action on a folder, and one on the background of a window. Its actions know no
/// submenus, so each is named after the submenu as well as after its preset. They are read again when they
/// change.
class NemoMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString program() const override;
    QString configurationFolder() const override;
};
