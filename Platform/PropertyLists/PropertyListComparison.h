// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListNode.h"

namespace PropertyListComparison {

/// Whether both nodes hold the same values of the same types, however they are stored: the order of a
/// dictionary's entries counts for nothing. Never recurses; the time is that of reading both, less if they
/// differ.
bool areEqual(const PropertyListNode &one, const PropertyListNode &other);

} // namespace PropertyListComparison
