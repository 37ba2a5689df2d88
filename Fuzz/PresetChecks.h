// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Source/Model/QNBPresetRecord.h"

/// What both fuzz targets of presets compare.
namespace PresetChecks {

/// Ends the process, which the fuzzer takes for a finding.
inline void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

/// Whether both would be stored alike; without recursion, as trees may be deep.
inline bool sameStored(const QNBPresetRecord &left, const QNBPresetRecord &right)
{
    const auto stored = [](const QNBPresetRecord &record) {
        BinaryPropertyListWriter writer;
        return writer.finish(record.encode(writer)).bytes;
    };
    return stored(left) == stored(right);
}

} // namespace PresetChecks
