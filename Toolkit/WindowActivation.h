// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace WindowActivation {

/// Shows \a window before the others, with the keyboard. \a token is the desktop's leave to do that, see
/// ActivationToken; if it is empty the one that this process was started with counts, once. Without one the
/// desktop decides.
void bringToFront(QWidget &window, const QByteArray &token);

} // namespace WindowActivation
