// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>
#include <QString>

/// What a delegate may still decide about one cell of a list or an outline when it is about to be shown.
struct ViewCell
{
    /// Drawn before the text.
    QIcon image;
    /// Shown behind the text of a list, of which it is no part: it cannot be edited. Lists alone show these
    /// two.
    QString note;
    /// Shown while the pointer rests on the cell; empty for that of the view.
    QString toolTip;
};
