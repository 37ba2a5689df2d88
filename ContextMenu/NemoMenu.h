// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// Nemo: scripts, which it shows for items and for the background, and of which it sees at once when they
/// change. Its actions are shown higher up in the menu, but know no submenus.
class NemoMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QString program() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString configurationFolder() const override;
};
