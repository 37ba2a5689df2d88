// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>

/// Small symbols in the colour of the palette's text, in light and dark and at any scale.
namespace TemplateImages {

/// A diagonal cross: take away, none.
QIcon stopProgress();

} // namespace TemplateImages
