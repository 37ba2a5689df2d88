// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

/// The standard input, output and error, which whoever starts a program may have closed.
namespace StandardStreams {

/// Occupies those that are closed, in such a way that using them fails as before: a file that is opened later
/// must not be taken for one of them, and be written to.
void occupyClosed();

/// Whoever reads them may end first: then writing fails, and does not end this program in the middle of what
/// it is making.
void outliveReaders();

} // namespace StandardStreams
