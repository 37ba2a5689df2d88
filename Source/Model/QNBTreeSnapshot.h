// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/LargeBlockAllocator.h"

#include <QString>
#include <array>
#include <cstdint>

class QNBHierarchyItem;

/// A tree as it stood at one moment, to be written on any thread while its items change. It has what is
/// stored of them, and shares their texts; made by QNBHierarchyItem::snapshot().
class QNBTreeSnapshot
{
public:
    /// The same as QNBHierarchyItem::encode() at that moment.
    BinaryPropertyListWriter::Ref encode(BinaryPropertyListWriter &writer) const;

private:
    friend class QNBHierarchyItem;

    struct Item
    {
        QString filename;
        QString colorName;
        QString contentFilename;
        std::array<std::uint32_t, 3> permissions;
        bool hasPermissions;
        bool isFolder;
        std::uint32_t childCount;
    };

    /// Children before their parent.
    LargeArray<Item> items_;
};
