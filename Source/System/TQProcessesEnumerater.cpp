// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/TQProcessesEnumerater.h"

std::optional<TQProcess> TQProcessesEnumerater::nextObject()
{
    const std::optional<ProcessSerialNumber> next = ProcessTable::getNextProcess(currentProcessSerialNumber_);
    if (!next || *next == kNoProcess)
        return std::nullopt;
    currentProcessSerialNumber_ = *next;
    return TQProcess::processWithProcessSerialNumber(*next);
}

QList<TQProcess> TQProcessesEnumerater::allObjects()
{
    QList<TQProcess> processes;
    for (const ProcessSerialNumber &next : ProcessTable::processesAfter(currentProcessSerialNumber_)) {
        currentProcessSerialNumber_ = next;
        processes.append(TQProcess::processWithProcessSerialNumber(next));
    }
    return processes;
}
