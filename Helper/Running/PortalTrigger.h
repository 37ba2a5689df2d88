// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QKeyCombination>
#include <QString>

/// Key combinations as the desktop's portal writes them (XDG Shortcuts Specification).
namespace PortalTrigger {

/// "CTRL+ALT+p"; empty for a key that has no name there.
QString forKeys(QKeyCombination keys);

} // namespace PortalTrigger
