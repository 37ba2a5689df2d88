// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Creation/FileIdentity.h"

#include <QByteArray>
#include <QString>

namespace Creation {

/// One step of a plan.
struct Operation
{
    enum class Kind : quint8 {
        /// Makes a folder. Gives it its label, and its mode too unless a FinishFolder does so later.
        MakeFolder,
        /// Makes nothing: goes into a folder that is there already. It keeps its mode and its label.
        UseFolder,
        /// Makes a file, with its bytes, label and mode.
        MakeFile,
        /// Gives a folder its mode after all that is in it was made, because its owner may not do that (or
        /// not find out about it) once the mode is set.
        FinishFolder,
    };

    Kind kind = Kind::MakeFile;
    /// The file manager's number of the label, 0 for none.
    quint8 label = 0;
    /// Read, write and execute of owner, group and others.
    quint16 mode = 0;
    /// The number of the operation that makes or uses the folder in which this one works; in FinishFolder the
    /// folder itself. noOperation for the target.
    qint32 folder = noOperation;
    /// The place of the content in Plan::contents(); noContent for an empty file.
    qint32 content = noContent;
    /// In the form in which the file system gets it.
    QByteArray name;
    /// Of the folder that is there, in UseFolder.
    FileIdentity identity;

    static constexpr qint32 noOperation = -1;
    static constexpr qint32 noContent = -1;
};

/// A content file that a plan needs, as it was found.
struct Content
{
    /// As the items name it, relative to the folder of content files.
    QString name;
    FileIdentity identity;
};

} // namespace Creation
