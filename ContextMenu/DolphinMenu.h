// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// Dolphin: one service menu, an action of it for each preset. It is read each time a menu is opened, and has
/// to be executable: without that its actions are shown, and denied to everyone but root.
class DolphinMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QString program() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString configurationFolder() const override;
};
