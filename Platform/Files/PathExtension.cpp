// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/PathExtension.h"

/// The length of the path before the full stop of its extension; the whole length if it has none.
static qsizetype lengthBeforeExtension(const QString &path)
{
    const qsizetype name = path.lastIndexOf(u'/') + 1;
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot > name && dot + 1 < path.size() ? dot : path.size();
}

QString pathExtension(const QString &path)
{
    return path.mid(lengthBeforeExtension(path) + 1);
}

QString stringByDeletingPathExtension(const QString &path)
{
    return path.left(lengthBeforeExtension(path));
}
