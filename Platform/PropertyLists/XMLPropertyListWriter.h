// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyList.h"

/// Writes XML property lists, indented by tabs, in UTF-8.
namespace XMLPropertyListWriter {

/// Fails as a whole for a value that this form cannot hold: null, UID, a string with lone surrogates, control
/// characters or U+FFFE and U+FFFF. A date loses its fraction of a second.
PropertyList::WriteResult write(const QVariant &value);

} // namespace XMLPropertyListWriter
