// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Model/QNBPresetImport.h"
#include "Toolkit/PaneNotice.h"

#include <QCoreApplication>

/// What the user is told of the files that an import has left out.
class QNBImportNotice
{
    Q_DECLARE_TR_FUNCTIONS(QNBImportNotice)

public:
    /// How many files the details name.
    static constexpr qsizetype mostNamed = 20;

    /// The first file, why it was left out, and how many more there are; with path and reason of each in the
    /// details, a line each. \a leftOut is not empty.
    static PaneNotice of(const QList<QNBPresetImport::LeftOut> &leftOut);
};
