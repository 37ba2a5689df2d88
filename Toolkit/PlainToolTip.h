// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// \a text as a tool tip that shows it as it is, also where it looks like markup, on several lines if it is
/// long.
inline QString plainToolTip(const QString &text)
{
    return QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
}
