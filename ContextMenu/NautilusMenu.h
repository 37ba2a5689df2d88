// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// Nautilus: scripts, which it shows for selected items only. It sees at once when they change.
class NautilusMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QString program() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString configurationFolder() const override;
};
