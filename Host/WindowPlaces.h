// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"

#include <QByteArray>
#include <QString>

/// Where the window of each pane was, as QWidget::saveGeometry() tells it. Kept in the file `preferences.ini`
/// of the state folder, which only its owner may read. What earlier versions kept elsewhere is taken over
/// once.
namespace WindowPlaces {

/// Empty if nothing is known.
QByteArray placeOf(const QString &panePath);

Result<> remember(const QString &panePath, const QByteArray &place);

} // namespace WindowPlaces
