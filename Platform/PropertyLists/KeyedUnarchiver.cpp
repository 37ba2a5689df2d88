// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedUnarchiver.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/PropertyLists/KeyedArchiveReader.h"

PropertyListDocument::Ptr KeyedUnarchiver::unarchivedDocument(const QByteArray &bytes, QString *error)
{
    QString reason;
    PropertyListDocument::Ptr document = PropertyListDocument::parse(bytes, &reason);
    if (document)
        document = KeyedArchiveReader(document, bytes.size()).read(&reason);
    if (!document && error)
        *error = reason;
    return document;
}

PropertyList::ReadResult KeyedUnarchiver::unarchiveObject(const QByteArray &bytes)
{
    PropertyList::ReadResult result;
    if (const PropertyListDocument::Ptr document = unarchivedDocument(bytes, &result.error))
        result.value = document->root().toVariant();
    return result;
}

PropertyListDocument::Ptr KeyedUnarchiver::unarchivedDocumentWithFile(const QString &path, QString *error)
{
    const Result<QByteArray> bytes = BoundedFile::read(path, PropertyList::Limits::inputSize);
    if (bytes)
        return unarchivedDocument(*bytes, error);
    if (error)
        *error = bytes.error;
    return {};
}
