// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListDocument.h"

/// Reads XML property lists, in UTF-8 or, by their byte-order mark, in UTF-16 and UTF-32, or as declared.
///
/// Strict where data could be lost (numbers, dates and data that are malformed, stray text, unknown elements,
/// text that is not valid in its encoding), lenient where nothing can be (any attributes, no "plist" element,
/// comments, no blanks or many). No entity but XML's own five is ever expanded: a document type with
/// declarations of its own is refused, as is a tag of more than 4,096 characters.
namespace XMLPropertyListReader {

/// Null on failure, with the reason in \a error.
PropertyListDocument::Ptr parse(const QByteArray &bytes, QString *error);

} // namespace XMLPropertyListReader
