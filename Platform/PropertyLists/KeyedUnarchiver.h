// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListDocument.h"

/// Reads keyed archives, binary or XML, of the original platform and of its other implementations.
///
/// The objects that a property list can hold come back as such: dictionaries, arrays, sets and ordered sets
/// (as arrays), strings, data, dates, numbers, NSNull (null). An object of any other class, a cycle, or
/// anything over the limits of PropertyList.h makes the archive unreadable as a whole.
namespace KeyedUnarchiver {

/// The archived root object as a document whose nodes resolve the references; null on failure, with the
/// reason (an unknown class is named) in \a error.
PropertyListDocument::Ptr unarchivedDocument(const QByteArray &bytes, QString *error);

/// The archived root object as one value.
PropertyList::ReadResult unarchiveObject(const QByteArray &bytes);

/// Reads a file's bytes within Limits::inputSize (a sparse or endless file is refused before it fills
/// memory), then as above.
PropertyListDocument::Ptr unarchivedDocumentWithFile(const QString &path, QString *error);

} // namespace KeyedUnarchiver
