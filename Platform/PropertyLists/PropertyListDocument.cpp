// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListDocument.h"

#include "Platform/PropertyLists/BinaryPropertyListReader.h"
#include "Platform/PropertyLists/PropertyListValues.h"
#include "Platform/PropertyLists/XMLPropertyListReader.h"

PropertyListDocument::Ptr PropertyListDocument::parse(const QByteArray &bytes, QString *error)
{
    return BinaryPropertyListReader::recognises(bytes) ? BinaryPropertyListReader::parse(bytes, error)
                                                       : XMLPropertyListReader::parse(bytes, error);
}

PropertyListDocument::Ptr PropertyListDocument::fromVariant(const QVariant &value)
{
    auto values = std::make_unique<PropertyListValues>();
    const PropertyListSource::Handle root = values->addValue(value);
    return std::make_shared<const PropertyListDocument>(std::move(values), root);
}

PropertyListDocument::PropertyListDocument(std::unique_ptr<const PropertyListSource> source,
                                           PropertyListSource::Handle root)
    : source_(std::move(source))
    , root_(root)
{
}
