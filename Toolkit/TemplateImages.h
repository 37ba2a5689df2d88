// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QColor>
#include <QIcon>

/// Small symbols in one colour, at any scale.
namespace TemplateImages {

/// A diagonal cross: take away, none.
QIcon stopProgress(const QColor &color);

} // namespace TemplateImages
