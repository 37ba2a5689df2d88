// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

/// SIGINT, SIGTERM and SIGHUP as a request to stop at a good moment, for a program without an event loop. One
/// object in a process, for its whole life; a second signal ends the process as usual.
class Interruption
{
public:
    Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool isRequested() const;
    /// Can be read from as soon as one is requested; for waiting. Nobody reads from it.
    int descriptor() const;
};
