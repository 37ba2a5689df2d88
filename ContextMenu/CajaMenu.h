// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// Caja: scripts, which it shows for items and for the background. It sees at once when they change.
class CajaMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QString program() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString configurationFolder() const override;
};
