// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

class QDialog;
class QObject;

/// Dialogs that nobody waits for.
namespace OwnedWindow {

/// Shows \a dialog, which goes when it is closed or when \a owner does.
void show(QDialog *dialog, QObject *owner);

} // namespace OwnedWindow
