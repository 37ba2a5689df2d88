// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Fuzz/PropertyListChecks.h"
#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/KeyedUnarchiver.h"

#include <cstdint>
#include <cstdlib>

namespace {

PropertyList::WriteResult archived(const PropertyListDocument::Ptr &document)
{
    KeyedArchiver archiver;
    return archiver.finish(archiver.value(document->root()));
}

/// What we wrote is read.
PropertyListDocument::Ptr readAgain(const PropertyList::WriteResult &archive)
{
    QString reason;
    PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(*archive.bytes, &reason);
    if (!document)
        std::abort();
    return document;
}

} // namespace

/// What is read can be walked and materialised; what of it is written again is read again, to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString reason;
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocument(bytes, &reason);
    if (!document) {
        if (reason.isEmpty())
            std::abort();
        return 0;
    }
    document->root().toVariant();

    // An archive as we write it is smaller, so that it may stand for fewer values.
    const PropertyList::WriteResult first = archived(document);
    if (!first) {
        if (!PropertyListChecks::mayBeRefusedInArchive(first.error))
            std::abort();
        return 0;
    }
    const PropertyList::WriteResult second = archived(readAgain(first));
    if (second && archived(readAgain(second)).bytes != second.bytes)
        std::abort();
    return 0;
}
