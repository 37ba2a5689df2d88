// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Fuzz/PropertyListChecks.h"
#include "Platform/PropertyLists/BinaryPropertyListReader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Not copied, so that the sanitizer sees a read past the end.
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    if (!BinaryPropertyListReader::recognises(bytes))
        return 0;
    if (const QString complaint = PropertyListChecks::readsBackEqual(bytes); !complaint.isEmpty())
        qFatal("%s", qPrintable(complaint));
    return 0;
}
