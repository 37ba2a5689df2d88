// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListNode.h"

/// Property lists as QVariant, without recursion: QVariant's own destructor and comparison descend once for
/// each level, which at the nesting that Limits::depth allows is more stack than a thread may have.
namespace PropertyList {

/// What the value is as a property list; none if it is none. Integers of every width and float count.
std::optional<PropertyListType> typeOf(const QVariant &value);

/// The array or the dictionary in the value, or null.
const QVariantList *arrayIn(const QVariant &value);
const QVariantMap *dictionaryIn(const QVariant &value);

/// Same types, same structure, same scalars; reals and dates by their bits. 1, true and 1.0 differ; the
/// widths of integers do not count.
bool equal(const QVariant &left, const QVariant &right);

/// Leaves \a value null. Takes it apart from the top, container by container, as far as nobody else shares
/// it.
void destroy(QVariant &value);

} // namespace PropertyList
