// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// The extension of a path is what follows the last full stop of its last component. A component that begins
/// with that full stop, or ends with it, has none: ".profile", "done.".

/// Without the full stop; empty if there is none.
QString pathExtension(const QString &path);
/// Without extension and full stop; the whole path if there is none.
QString stringByDeletingPathExtension(const QString &path);
