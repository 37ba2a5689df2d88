// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListNode.h"

/// A parsed property list that keeps its values in the form they came in until a node is asked for.
/// Immutable; share it freely on the thread that made it.
class PropertyListDocument
{
public:
    using Ptr = std::shared_ptr<const PropertyListDocument>;

    /// Reads either form. The whole document is checked here (limits of PropertyList.h, ranges, cycles, keys
    /// that are strings, encodings), so that nodes cannot fail later. Null on failure, with the reason in \a
    /// error.
    static Ptr parse(const QByteArray &bytes, QString *error);

    /// A document of a value that is already in memory; never null. A part that is no property list reads as
    /// Null.
    static Ptr fromVariant(const QVariant &value);

    /// A document whose nodes come from \a source.
    PropertyListDocument(std::unique_ptr<const PropertyListSource> source, PropertyListSource::Handle root);

    PropertyListNode root() const { return {source_.get(), root_}; }

private:
    std::unique_ptr<const PropertyListSource> source_;
    PropertyListSource::Handle root_;
};
