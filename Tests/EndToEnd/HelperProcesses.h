// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>

/// The running processes of this user that are called like the helper, as the kernel lists them.
QList<qint64> helpers();
