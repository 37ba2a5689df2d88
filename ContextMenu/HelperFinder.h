// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"

#include <QByteArray>
#include <QString>
#include <optional>

/// Where the helper is. This plug-in is copied out of the pane that both came with, so it has to look.
namespace HelperFinder {

/// The absolute path of the helper's executable, in the file system's own bytes; empty if there is none.
/// Looked for is, in this order: the helper beside the plug-in whose executable is \a ownPath, and the
/// installed ones: the one that is a login item, the ones in the panes of the user and of the system, the one
/// in the search path. A process proves nothing by its name, so none is asked.
QByteArray find(const QString &ownPath);

/// The pane that the executable \a helper lies in, links resolved.
std::optional<Bundle> paneOf(const QByteArray &helper);

} // namespace HelperFinder
