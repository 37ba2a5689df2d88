// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Files/FileLayer.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

/// Cannot open one file to read it, unless errorNumber is 0.
class UnreadableFile : public FileLayer
{
public:
    UnreadableFile(const QString &folder, const QString &name)
        : path_(QFile::encodeName(QFileInfo(folder).canonicalFilePath() + u'/' + name))
    {
    }
    int errorNumber = EIO;
    int open(const QByteArray &opened, int flags, mode_t mode) override
    {
        if (errorNumber == 0 || opened != path_)
            return FileLayer::open(opened, flags, mode);
        errno = errorNumber;
        return -1;
    }

private:
    const QByteArray path_;
};
