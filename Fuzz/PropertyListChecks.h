// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/PropertyListDocument.h"
#include "Platform/PropertyLists/PropertyListVariant.h"

/// What must hold for any bytes at all. Run by the fuzz targets on what they make up, and by the tests on
/// what was found once.
namespace PropertyListChecks {

/// Whether what was read may be refused with \a error when it is written: without the padding of a contrived
/// file its shared parts may be over the limit.
inline bool mayBeRefused(const QString &error)
{
    return error.contains(QLatin1String("shared parts"));
}

/// The same in an archive, which nests deeper than what is in it.
inline bool mayBeRefusedInArchive(const QString &error)
{
    return mayBeRefused(error) || error.contains(QLatin1String("levels of nesting"));
}

/// What reads, writes and reads back equal: through nodes, and as values.
/// The answer is what went wrong, or empty.
inline QString readsBackEqual(const QByteArray &bytes)
{
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &error);
    if (!document)
        return error.isEmpty() ? QStringLiteral("refused without a reason") : QString();

    QVariant value = document->root().toVariant();
    BinaryPropertyListWriter writer;
    const PropertyList::WriteResult written = writer.finish(writer.value(document->root()));
    QString complaint;
    if (written) {
        PropertyList::ReadResult again = PropertyList::read(*written.bytes);
        if (!again)
            complaint = QStringLiteral("what was written is refused: ") + again.error;
        else if (!PropertyList::equal(value, *again.value))
            complaint = QStringLiteral("what was written reads back otherwise");
        if (again)
            PropertyList::destroy(*again.value);
    } else if (!mayBeRefused(written.error)) {
        complaint = QStringLiteral("what was read cannot be written: ") + written.error;
    }

    // XML has no place for everything, but what it takes it keeps; of dates, the whole seconds.
    if (const PropertyList::WriteResult xml = PropertyList::write(value, PropertyList::Form::XML)) {
        PropertyList::ReadResult again = PropertyList::read(*xml.bytes);
        const PropertyList::WriteResult xmlAgain =
            again ? PropertyList::write(*again.value, PropertyList::Form::XML) : PropertyList::WriteResult();
        if (!xmlAgain || *xmlAgain.bytes != *xml.bytes)
            complaint = QStringLiteral("XML reads back otherwise: ") + again.error;
        if (again)
            PropertyList::destroy(*again.value);
    }
    PropertyList::destroy(value);
    return complaint;
}

} // namespace PropertyListChecks
