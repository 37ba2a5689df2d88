// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBHierarchyItem.h"

#include <QByteArray>
#include <QString>

/// A tree to create: folders of nine files each, every file with the same content of 1 KiB, and the other
/// ways to make it.
class CreationTree
{
public:
    static constexpr int filesPerFolder = 9;

    /// \a items in all, a tenth of them folders. The content file is put into \a contentFolder.
    CreationTree(int items, const QString &contentFolder);

    const QNBHierarchyItemPtr &root() const { return root_; }
    int items() const { return folders_ * (1 + filesPerFolder); }

    /// Whether everything is in \a target, with its modes and bytes, and nothing else.
    bool isIn(const QByteArray &target) const;

    /// Makes it in \a target with nothing but system calls in a loop: each folder and file is made, filled
    /// and given its mode.
    bool makeWithBareCalls(const QByteArray &target) const;

private:
    QByteArray folderName(int folder) const;
    static QByteArray fileName(int file);

    int folders_;
    QByteArray content_;
    QNBHierarchyItemPtr root_;
};
