// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListNode.h"

#include "Platform/PropertyLists/PropertyList.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

struct Frame
{
    PropertyListNode node;
    qsizetype next = 0;
    qsizetype count = 0;
    QVariantList array;
    QVariantMap dictionary;

    void add(const QVariant &value)
    {
        if (node.isArray())
            array.append(value);
        else
            dictionary.insert(node.keyAt(next), value);
        ++next;
    }
};

} // namespace

PropertyListSource::~PropertyListSource() = default;

quint64 PropertyListSource::uid(Handle node) const
{
    return scalar(node).value<PropertyList::UID>().value;
}

std::size_t PropertyListSource::uids(Handle array, qsizetype index, std::span<quint64> values) const
{
    const std::size_t most = std::min(values.size(), std::size_t(count(array) - index));
    for (std::size_t i = 0; i < most; ++i) {
        const Handle node = element(array, index + qsizetype(i));
        if (type(node) != PropertyListType::UID)
            return i;
        values[i] = uid(node);
    }
    return most;
}

PropertyListNode PropertyListNode::value(QStringView key) const
{
    if (!isDictionary())
        return {};
    for (qsizetype i = 0, entries = count(); i < entries; ++i) {
        if (keyAt(i) == key)
            return valueAt(i);
    }
    return {};
}

QVariant PropertyListNode::toVariant() const
{
    MadeValues made;
    return toVariant(made);
}

// What is referred to twice is one value: references can stand for far more values than memory holds.
QVariant PropertyListNode::toVariant(MadeValues &made) const
{
    if (!source_)
        return {};
    std::vector<Frame> stack;
    PropertyListNode node = *this;
    for (;;) {
        const bool isContainer = node.isArray() || node.isDictionary();
        const auto known = isContainer ? made.constFind(node.handle_) : made.constEnd();
        if (isContainer && known == made.constEnd()) {
            stack.push_back({node, 0, node.count(), {}, {}});
            if (node.isArray())
                stack.back().array.reserve(node.count());
        } else {
            QVariant value = isContainer ? *known : source_->scalar(node.handle_);
            if (stack.empty())
                return value;
            stack.back().add(value);
        }
        while (stack.back().next == stack.back().count) {
            const Frame done = std::move(stack.back());
            stack.pop_back();
            QVariant value = done.node.isArray() ? QVariant(done.array) : QVariant(done.dictionary);
            made.insert(done.node.handle_, value);
            if (stack.empty())
                return value;
            stack.back().add(value);
        }
        const Frame &frame = stack.back();
        node = frame.node.isArray() ? frame.node.at(frame.next) : frame.node.valueAt(frame.next);
    }
}
