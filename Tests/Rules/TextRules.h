// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Rules/SourceTree.h"

/// What every file looks like, and what a test does not do.
namespace TextRules {

/// Longer files hold more than one thing.
inline constexpr int longestFile = 500;

/// The two SPDX lines, in the comment style of the file, first (after an interpreter line, in a script).
QStringList violationsOfHeader(const SourceFile &file);
/// "#pragma once" in every header.
QStringList violationsOfGuard(const SourceFile &file);
QStringList violationsOfLength(const SourceFile &file);
/// Marks of unfinished work.
QStringList violationsOfLeftovers(const SourceFile &file);
/// Waits for a length of time where a condition should be waited for, in tests.
QStringList violationsOfWaiting(const SourceFile &file);
/// Changes of the process's environment, which everything inherits that it starts; in the product.
QStringList violationsOfEnvironment(const SourceFile &file);
/// Tests that are switched off.
QStringList violationsOfSkipping(const SourceFile &file);

/// The .cpp files of \a files that no build rule in their folder or one above it lists.
QStringList violationsOfListing(const QList<SourceFile> &files);

} // namespace TextRules
