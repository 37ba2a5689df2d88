// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ContextMenu/PresetMenu.h"
#include "Platform/Files/DurableFileWriter.h"

#include <QByteArray>

/// The menu in the file managers of this user, as a whole. What fails in one file manager keeps none of the
/// others from being done; every reason is told, in one line. Where nothing fails, what is left to know is
/// given: a sentence for each thing that is not as it was wished.
///
/// One of these at a time: processes wait for each other, for a moment.
namespace Registration {

/// Writes the entries of every file manager that is present. They call \a helper; while that is empty, which
/// is no failure, the file managers are noted, to be written by the first refresh().
Result<QStringList> registerWith(const QByteArray &helper);

/// Brings what is registered up to the presets of now, in every file manager that is present by now. Does
/// nothing if nothing is registered.
Result<QStringList> refresh(const QByteArray &helper);

/// Removes what was written.
Result<QStringList> unregister();

/// A line for each file manager that is present or has entries: its name, a tab, and "yes" if it has them,
/// else "no".
Result<QStringList> list();

/// The presets of the user, or those that the pane of \a helper comes with if none were ever stored. Fails
/// while the user's cannot be read.
Result<PresetMenu> menuFor(const QByteArray &helper);

} // namespace Registration
