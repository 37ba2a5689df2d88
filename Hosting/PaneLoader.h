// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/PreferencePane.h"

#include <QString>

#include <memory>

/// Makes panes from bundles.
namespace PaneLoader {

/// The pane of the bundle at \a bundlePath, or a page that says why there is none; never null. The code stays
/// mapped for as long as the process runs, for a pane may have left timers and objects behind.
std::unique_ptr<PreferencePane> load(const QString &bundlePath);

/// What a window that shows the bundle is called: "CFBundleName", or the bundle's name on disk, as
/// lineText().
QString titleOf(const QString &bundlePath);

/// The picture that "CFBundleIconFile" names; empty without one. An icon theme may have one of the same name.
QString iconPathOf(const QString &bundlePath);

} // namespace PaneLoader
