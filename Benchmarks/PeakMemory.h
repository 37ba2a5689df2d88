// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

/// The memory that a piece of work needs on top of what the process had, from the kernel's own count of the
/// process's resident pages.
class PeakMemory
{
public:
    /// Starts to count.
    PeakMemory();
    /// The most bytes that were resident at once since, above the start.
    qint64 peak() const;
    /// The bytes that are resident now, above the start.
    qint64 current() const;

private:
    qint64 before_;
};
