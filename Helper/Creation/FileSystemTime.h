// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <ctime>

/// Times as file systems note them, in nanoseconds since 1970.
namespace FileSystemTime {

inline qint64 of(const timespec &time)
{
    return qint64(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// By their clock, which stands still for a moment at a time.
inline qint64 now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
    return of(time);
}

} // namespace FileSystemTime
