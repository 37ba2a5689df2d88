// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Rules/SourceTree.h"

#include <QSet>

/// Who may know whom: one table of the rooms, and a core without widgets.
namespace IncludeRules {

/// The innermost room that holds a path: "Platform/Files", "Source/Model"; empty for anything else.
QString roomOf(const QString &path);

/// The includes of \a file that its room may not have, each with the line and what the rule is for.
QStringList violationsOfDirection(const SourceFile &file);

/// The headers of Qt's widget and gui modules that \a file includes although it belongs to the core.
QStringList violationsOfCoreWithoutWidgets(const SourceFile &file, const QSet<QString> &widgetHeaders);

/// The name of every header below Qt's include folders for QtGui, QtWidgets and QtSvg: "QColor", "qcolor.h".
QSet<QString> widgetHeaders();

} // namespace IncludeRules
