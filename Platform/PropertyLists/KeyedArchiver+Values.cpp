// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The part of the archiver that takes whole values. Neither way recurses: values may be nested to the limit.

#include "Platform/PropertyLists/KeyedArchiver.h"

namespace {

using Ref = KeyedArchiver::Ref;

/// A container whose parts are being archived. Finished parts stand on one stack for all; a dictionary's are
/// its keys and its values in turn.
struct ValueFrame
{
    QVariantList elements;
    QVariantMap entries;
    bool isDictionary = false;
    qsizetype next = 0;
    QVariantMap::const_iterator nextEntry = {};
    std::size_t firstPart = 0;
    /// Where it is known if it is met again.
    const void *identity = nullptr;
    QVariant value() const { return isDictionary ? QVariant(entries) : QVariant(elements); }
};

struct NodeFrame
{
    PropertyListNode container;
    qsizetype next = 0;
    std::size_t firstPart = 0;
};

/// Takes what \a parts hold from \a first on as a dictionary's.
Ref takeDictionary(KeyedArchiver &archiver, std::vector<Ref> &parts, std::size_t first)
{
    std::vector<Ref> keys;
    std::vector<Ref> values;
    for (std::size_t i = first; i < parts.size(); i += 2) {
        keys.push_back(parts[i]);
        values.push_back(parts[i + 1]);
    }
    parts.resize(first);
    return archiver.dictionary(keys, values);
}

Ref takeArray(KeyedArchiver &archiver, std::vector<Ref> &parts, std::size_t first)
{
    const Ref array = archiver.array(std::span(parts).subspan(first));
    parts.resize(first);
    return array;
}

} // namespace

KeyedArchiver::Ref KeyedArchiver::value(const QVariant &value)
{
    std::vector<ValueFrame> frames;
    std::vector<Ref> parts;
    const QVariant *current = &value;
    while (true) {
        const void *const identity = KnownParts::identity(*current);
        if (const std::optional<Ref> known = known_.find(identity)) {
            parts.push_back(*known);
        } else if (current->typeId() == QMetaType::QVariantList ||
                   current->typeId() == QMetaType::QVariantMap) {
            if (frames.size() >= std::size_t(PropertyList::Limits::depth))
                return invalid(
                    QStringLiteral("more than %1 levels of nesting").arg(PropertyList::Limits::depth));
            ValueFrame frame;
            frame.isDictionary = current->typeId() == QMetaType::QVariantMap;
            frame.firstPart = parts.size();
            frame.identity = identity;
            if (frame.isDictionary)
                frame.entries = current->toMap();
            else
                frame.elements = current->toList();
            frames.push_back(std::move(frame));
            frames.back().nextEntry = frames.back().entries.constBegin();
        } else {
            parts.push_back(scalar(*current));
        }
        while (!frames.empty()) {
            ValueFrame &frame = frames.back();
            if (frame.isDictionary && frame.nextEntry != frame.entries.constEnd()) {
                parts.push_back(string(frame.nextEntry.key()));
                current = &(frame.nextEntry++).value();
                break;
            }
            if (frame.next < frame.elements.size()) {
                current = &frame.elements.at(frame.next++);
                break;
            }
            const Ref done = frame.isDictionary ? takeDictionary(*this, parts, frame.firstPart)
                                                : takeArray(*this, parts, frame.firstPart);
            known_.add(frame.identity, frame.value(), done);
            parts.push_back(done);
            frames.pop_back();
        }
        if (frames.empty())
            return parts.front();
    }
}

KeyedArchiver::Ref KeyedArchiver::value(const PropertyListNode &node)
{
    QHash<PropertyListSource::Handle, Ref> done;
    std::vector<NodeFrame> frames;
    std::vector<Ref> parts;
    PropertyListNode current = node;
    while (true) {
        if (!current.isArray() && !current.isDictionary())
            parts.push_back(scalar(current));
        else if (const auto known = done.constFind(current.handle()); known != done.constEnd())
            parts.push_back(*known);
        else
            frames.push_back({current, 0, parts.size()});
        while (!frames.empty()) {
            NodeFrame &frame = frames.back();
            const bool isDictionary = frame.container.isDictionary();
            if (frame.next < frame.container.count()) {
                const qsizetype index = frame.next++;
                if (isDictionary)
                    parts.push_back(string(frame.container.keyAt(index)));
                current = isDictionary ? frame.container.valueAt(index) : frame.container.at(index);
                break;
            }
            const Ref ref = isDictionary ? takeDictionary(*this, parts, frame.firstPart)
                                         : takeArray(*this, parts, frame.firstPart);
            done.insert(frame.container.handle(), ref);
            parts.push_back(ref);
            frames.pop_back();
        }
        if (frames.empty())
            return parts.front();
    }
}

KeyedArchiver::Ref KeyedArchiver::scalar(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return null();
    case QMetaType::Bool:
        return boolean(value.toBool());
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return integer(value.toLongLong());
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return unsignedInteger(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return real(value.toDouble());
    case QMetaType::QString:
        return string(value.toString());
    case QMetaType::QByteArray:
        return data(value.toByteArray());
    case QMetaType::QDateTime:
        return date(value.toDateTime());
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<PropertyList::Date>())
        return date(value.value<PropertyList::Date>());
    return invalid(QStringLiteral("a value of type %1, which an archive cannot hold")
                       .arg(QLatin1String(value.typeName())));
}

KeyedArchiver::Ref KeyedArchiver::scalar(const PropertyListNode &node)
{
    switch (node.type()) {
    case PropertyListType::Null:
        return null();
    case PropertyListType::String:
        return string(node.string());
    case PropertyListType::Boolean:
        return boolean(node.boolean());
    default:
        return scalar(node.toVariant());
    }
}
