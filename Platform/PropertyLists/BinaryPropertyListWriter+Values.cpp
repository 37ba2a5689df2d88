// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/PropertyListVariant.h"

#include <QHash>

namespace {

using Ref = BinaryPropertyListWriter::Ref;

struct VariantFrame
{
    const QVariantList *array = nullptr;
    const QVariantMap *dictionary = nullptr;
    QVariantList::const_iterator nextElement;
    QVariantMap::const_iterator nextEntry;
    std::size_t firstKey = 0;
    std::size_t firstValue = 0;
    /// What it is; kept to be known if it is met again.
    const QVariant *value = nullptr;
};

struct NodeFrame
{
    PropertyListNode node;
    qsizetype next = 0;
    qsizetype count = 0;
    bool isArray = false;
    std::size_t firstKey = 0;
    std::size_t firstValue = 0;
};

/// The finished parts of the containers under way, and what closes the innermost of them.
struct Parts
{
    std::vector<Ref> keys;
    std::vector<Ref> values;

    Ref close(BinaryPropertyListWriter &writer, bool isArray, std::size_t firstKey, std::size_t firstValue)
    {
        const std::span<const Ref> own(values.data() + firstValue, values.size() - firstValue);
        const Ref done = isArray ? writer.array(own)
                                 : writer.dictionary({keys.data() + firstKey, keys.size() - firstKey}, own);
        keys.resize(firstKey);
        values.resize(firstValue);
        return done;
    }
};

} // namespace

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::scalar(PropertyListType type, const QVariant &value)
{
    switch (type) {
    case PropertyListType::Null:
        return null();
    case PropertyListType::Boolean:
        return boolean(value.toBool());
    case PropertyListType::Integer:
        return value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong
                   ? unsignedInteger(value.toULongLong())
                   : integer(value.toLongLong());
    case PropertyListType::Real:
        return real(value.toDouble());
    case PropertyListType::Date:
        return date(PropertyList::Date{*PropertyList::dateSeconds(value)});
    case PropertyListType::Data:
        return data(value.toByteArray());
    case PropertyListType::String:
        return string(value.toString());
    case PropertyListType::UID:
        return uid(value.value<PropertyList::UID>().value);
    case PropertyListType::Array:
    case PropertyListType::Dictionary:
        break;
    }
    Q_UNREACHABLE();
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::value(const QVariant &value)
{
    std::vector<VariantFrame> stack;
    Parts parts;
    const QVariant *next = &value;
    for (;;) {
        const std::optional<PropertyListType> type = PropertyList::typeOf(*next);
        if (!type) {
            parts.values.push_back(invalid(QStringLiteral("a value of type %1 is no property list")
                                               .arg(QString::fromLatin1(next->metaType().name()))));
        } else if (const std::optional<Ref> known = known_.find(KnownParts::identity(*next))) {
            parts.values.push_back(*known);
        } else if (*type == PropertyListType::Array) {
            const QVariantList *array = PropertyList::arrayIn(*next);
            stack.push_back(
                {array, nullptr, array->cbegin(), {}, parts.keys.size(), parts.values.size(), next});
        } else if (*type == PropertyListType::Dictionary) {
            const QVariantMap *dictionary = PropertyList::dictionaryIn(*next);
            stack.push_back({nullptr,
                             dictionary,
                             {},
                             dictionary->cbegin(),
                             parts.keys.size(),
                             parts.values.size(),
                             next});
        } else {
            parts.values.push_back(scalar(*type, *next));
        }
        next = nullptr;
        while (!next && !stack.empty()) {
            VariantFrame &frame = stack.back();
            if (frame.array && frame.nextElement != frame.array->cend()) {
                next = &*frame.nextElement++;
            } else if (frame.dictionary && frame.nextEntry != frame.dictionary->cend()) {
                parts.keys.push_back(string(frame.nextEntry.key()));
                next = &frame.nextEntry.value();
                ++frame.nextEntry;
            } else {
                const Ref done = parts.close(*this, frame.array, frame.firstKey, frame.firstValue);
                known_.add(KnownParts::identity(*frame.value), *frame.value, done);
                parts.values.push_back(done);
                stack.pop_back();
            }
        }
        if (!next)
            return parts.values.front();
    }
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::value(const PropertyListNode &node)
{
    WrittenNodes written;
    return value(node, written);
}

BinaryPropertyListWriter::Ref BinaryPropertyListWriter::value(const PropertyListNode &node,
                                                              WrittenNodes &written)
{
    std::vector<NodeFrame> stack;
    Parts parts;
    PropertyListNode next = node;
    for (;;) {
        const PropertyListType type = next.type();
        if (type == PropertyListType::Array || type == PropertyListType::Dictionary) {
            if (const auto known = written.constFind(next.handle()); known != written.constEnd())
                parts.values.push_back(*known);
            else
                stack.push_back({next, 0, next.count(), type == PropertyListType::Array, parts.keys.size(),
                                 parts.values.size()});
        } else if (type == PropertyListType::String) {
            parts.values.push_back(string(next.string()));
        } else {
            parts.values.push_back(
                type == PropertyListType::Null ? null() : scalar(type, next.source()->scalar(next.handle())));
        }
        while (!stack.empty() && stack.back().next == stack.back().count) {
            const NodeFrame frame = stack.back();
            stack.pop_back();
            const Ref done = parts.close(*this, frame.isArray, frame.firstKey, frame.firstValue);
            written.insert(frame.node.handle(), done);
            parts.values.push_back(done);
        }
        if (stack.empty())
            return parts.values.front();
        NodeFrame &frame = stack.back();
        if (!frame.isArray)
            parts.keys.push_back(string(frame.node.keyAt(frame.next)));
        next = frame.isArray ? frame.node.at(frame.next) : frame.node.valueAt(frame.next);
        ++frame.next;
    }
}
