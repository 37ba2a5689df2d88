// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/LineText.h"

#include <QString>

/// \a text as a tool tip that shows every character of it, also where it looks like markup, on several lines
/// if it is long.
inline QString plainToolTip(const QString &text)
{
    return QStringLiteral("<span>%1</span>").arg(linesText(text).toHtmlEscaped());
}
