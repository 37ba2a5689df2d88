// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>

/// What a delegate may still decide about one cell of a list or an outline when it is about to be shown.
struct ViewCell
{
    /// Drawn before the text.
    QIcon image;
};
