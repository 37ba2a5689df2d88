// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/FileManager.h"

/// A file manager that takes files of ours.
class FileManagerWithFiles : public FileManager
{
public:
    struct File
    {
        QString path;
        QByteArray content;
        bool isExecutable = false;
    };

    bool hasEntries(const Manifest &manifest) const final;
    Result<QStringList> write(const PresetMenu &menu, Manifest &manifest) const final;
    Result<QStringList> remove(Manifest &manifest) const final;

    /// What there should be for \a menu.
    virtual QList<File> files(const PresetMenu &menu) const = 0;

private:
    Result<QStringList> synchronize(const QList<File> &files, Manifest &manifest) const;
};
