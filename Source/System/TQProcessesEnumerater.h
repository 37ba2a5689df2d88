// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/System/TQProcess.h"

/// Walks the table of processes. Those that start and end meanwhile may be seen or not.
class TQProcessesEnumerater
{
public:
    static TQProcessesEnumerater processesEnumerater() { return init(); }
    /// Stands before the first process.
    static TQProcessesEnumerater init() { return {}; }

    /// None at the end.
    std::optional<TQProcess> nextObject();
    /// The rest.
    QList<TQProcess> allObjects();

private:
    TQProcessesEnumerater() = default;

    ProcessSerialNumber currentProcessSerialNumber_ = kNoProcess;
};
