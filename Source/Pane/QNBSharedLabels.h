// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QCoreApplication>
#include <QHash>
#include <QObject>
#include <QString>

class ArrayController;
struct ViewCell;

/// Presets may share a label. The list says of each of them what commands call it then.
class QNBSharedLabels
{
    Q_DECLARE_TR_FUNCTIONS(QNBSharedLabels)

public:
    /// The presets are those of \a controller from now on; to be called before a view hears of its changes.
    void observe(const ArrayController &controller);
    /// Marks the cell of the label of the preset at \a row, if it has to be.
    void mark(ViewCell &cell, int row);

private:
    void count();

    const ArrayController *controller_ = nullptr;
    /// Those to the controller, which may outlive this, end with it.
    QObject connections_;
    /// How many presets have each label; counted when it is asked for after a change.
    QHash<QString, int> presets_;
    bool isCounted_ = false;
};
