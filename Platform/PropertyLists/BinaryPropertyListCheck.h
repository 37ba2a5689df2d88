// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListReader.h"

#include <algorithm>
#include <optional>
#include <vector>

/// The check of a document before any of its values is asked for. Follows every reference from the top
/// object, each object once.
class BinaryPropertyListReader::Check
{
public:
    /// Of a \a reader that has read its trailer.
    explicit Check(BinaryPropertyListReader &reader);

    /// False if anything is wrong; the reader has the reason. Else it has a place for each string and payload
    /// that was met, and knows the entries of dictionaries that repeat a key.
    bool run();

private:
    /// What is known of an object: not met yet, being followed, or its levels of containers plus 1.
    using Progress = quint16;

    /// A container that is being followed.
    struct Frame
    {
        /// The references to elements or values that are still to be followed.
        const uchar *next = nullptr;
        const uchar *end = nullptr;
        quint64 cost = 0;
        Object object = 0;
        Progress levels = 0;

        void add(Progress itsLevels, quint32 itsCost)
        {
            levels = std::max(levels, itsLevels);
            cost += itsCost;
        }
    };

    bool follow();
    bool begin(Object container);
    bool meetScalar(Object object);
    bool checkKeys(Object dictionary, const Content &content);
    bool meetKey(Object object);
    void noteLastEntries(Object dictionary, const Content &content);
    std::optional<Content> takeContent(Object object, quint64 unit);

    bool refuse(QLatin1StringView reason);
    bool refuseDepth();

    BinaryPropertyListReader &reader_;
    const uchar *const data_;
    const quint32 *const offsets_;
    const quint64 objects_;
    const quint64 objectsEnd_;
    const quint64 referenceSize_;
    /// Objects that overlap could have more content together than the file has bytes, and cost time and
    /// memory out of proportion.
    quint64 bytesLeft_;
    /// What the document costs with each container counted once.
    quint64 ownCost_ = 0;
    /// What it costs with every reference followed, in the end.
    quint64 topCost_ = 0;
    std::vector<Progress> progress_;
    /// From the top to the container that is looked at.
    std::vector<Frame> stack_;
    quint32 strings_ = 0;
    quint32 payloads_ = 0;
    /// The strings that are keys, each text one of them.
    QHash<QString, quint32> keys_;
    /// Of each of these the dictionary that it was met in last, plus 1; 0 of other strings.
    std::vector<quint32> metIn_;
};
