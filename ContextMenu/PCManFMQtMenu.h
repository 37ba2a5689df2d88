// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManagerWithFiles.h"

/// PCManFM-Qt: a menu, and an action for each preset in it. They are read when the program starts.
class PCManFMQtMenu final : public FileManagerWithFiles
{
public:
    QString name() const override;
    QString program() const override;
    QList<File> files(const PresetMenu &menu) const override;

protected:
    QString configurationFolder() const override;
};
