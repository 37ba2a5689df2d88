// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Rules/SourceTree.h"

/// Names come from strangers: what is put into a window, and into a message, shows them and obeys none.
namespace WindowTextRules {

/// Labels, message boxes and tool tips that could take a text for markup: all are made by
/// Toolkit/PlainText.h.
QStringList violationsOfPlainText(const SourceFile &file);
/// The same of an interface description.
QStringList violationsOfPlainInterface(const SourceFile &file);
/// Places of a text that are filled in one call after the other: the second finds those that came with the
/// first.
QStringList violationsOfFilling(const SourceFile &file);

/// Names that are written as they are, to the log or a terminal: LineText.h shows every character of them.
QStringList violationsOfPrinting(const SourceFile &file);

/// The code of a C++ file, as long as it is: without what is in comments and literals.
QString codeOf(const QString &text);

} // namespace WindowTextRules
