// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/HelperService.h"
#include "Helper/Launcher/Launcher.h"
#include "Helper/Running/CreationWorker.h"

/// What the orders of other programs mean, by the presets as they are stored now: nobody need have told of
/// the last changes. Of any thread. Each fails, with the reason for people, if the order makes no sense.
namespace BusOrders {

/// What is to be done to create \a preset in \a folders.
Result<QList<CreationOrder>> creations(const HelperService::Preset &preset, const QStringList &folders);

/// What the launcher shows for \a folders, which may be none, but for those that were used before; without
/// labels while the presets cannot be read.
Result<Launcher::Content> launcher(const QStringList &folders);

} // namespace BusOrders
