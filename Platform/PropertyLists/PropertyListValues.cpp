// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListValues.h"

#include "Platform/PropertyLists/DictionaryEntries.h"
#include "Platform/PropertyLists/PropertyListVariant.h"

namespace {

struct Frame
{
    const QVariantList *array = nullptr;
    const QVariantMap *dictionary = nullptr;
    QVariantList::const_iterator nextElement;
    QVariantMap::const_iterator nextEntry;
    std::size_t firstHandle = 0;
};

} // namespace

PropertyListSource::Handle PropertyListValues::add(const Node &node)
{
    nodes_.push_back(node);
    return nodes_.size() - 1;
}

PropertyListSource::Handle PropertyListValues::addScalar(PropertyListType type, const QVariant &value)
{
    scalars_.push_back(value);
    return add({quint32(scalars_.size() - 1), 0, type});
}

PropertyListSource::Handle PropertyListValues::addString(const QString &text)
{
    strings_.push_back(text);
    return add({quint32(strings_.size() - 1), 0, PropertyListType::String});
}

PropertyListSource::Handle PropertyListValues::addKey(const QString &text)
{
    const auto known = keys_.constFind(text);
    if (known != keys_.constEnd())
        return *known;
    const Handle handle = addString(text);
    keys_.insert(text, handle);
    return handle;
}

PropertyListSource::Handle PropertyListValues::addArray(const Handle *elements, std::size_t count)
{
    const quint32 first = quint32(references_.size());
    references_.insert(references_.end(), elements, elements + count);
    return add({first, quint32(count), PropertyListType::Array});
}

PropertyListSource::Handle PropertyListValues::addDictionary(const Handle *entries, std::size_t count)
{
    const quint32 first = quint32(references_.size());
    keysOfOne_.clear();
    for (std::size_t i = 0; i < count; ++i)
        keysOfOne_.push_back(quint32(entries[2 * i]));
    if (!DictionaryEntries::hasRepeatedKey(keysOfOne_)) {
        references_.insert(references_.end(), entries, entries + 2 * count);
        return add({first, quint32(count), PropertyListType::Dictionary});
    }
    const std::vector<quint32> last = DictionaryEntries::positionsOfLast(keysOfOne_);
    for (const std::size_t position : last)
        references_.insert(references_.end(), entries + 2 * position, entries + 2 * position + 2);
    return add({first, quint32(last.size()), PropertyListType::Dictionary});
}

PropertyListSource::Handle PropertyListValues::addLeaf(const QVariant &value)
{
    const PropertyListType type = PropertyList::typeOf(value).value_or(PropertyListType::Null);
    if (type == PropertyListType::String)
        return addString(value.toString());
    return addScalar(type, type == PropertyListType::Null ? QVariant() : value);
}

PropertyListSource::Handle PropertyListValues::addValue(const QVariant &value)
{
    std::vector<Frame> stack;
    // Of the containers on the stack: finished elements, or keys and values in turn.
    std::vector<Handle> handles;
    const QVariant *next = &value;
    for (;;) {
        if (const auto *array = PropertyList::arrayIn(*next)) {
            stack.push_back({array, nullptr, array->cbegin(), {}, handles.size()});
        } else if (const auto *dictionary = PropertyList::dictionaryIn(*next)) {
            stack.push_back({nullptr, dictionary, {}, dictionary->cbegin(), handles.size()});
        } else {
            handles.push_back(addLeaf(*next));
        }
        next = nullptr;
        while (!next && !stack.empty()) {
            Frame &frame = stack.back();
            if (frame.array && frame.nextElement != frame.array->cend()) {
                next = &*frame.nextElement++;
            } else if (frame.dictionary && frame.nextEntry != frame.dictionary->cend()) {
                handles.push_back(addKey(frame.nextEntry.key()));
                next = &frame.nextEntry.value();
                ++frame.nextEntry;
            } else {
                const std::size_t count = handles.size() - frame.firstHandle;
                const Handle *const own = handles.data() + frame.firstHandle;
                const Handle done = frame.array ? addArray(own, count) : addDictionary(own, count / 2);
                handles.resize(frame.firstHandle);
                handles.push_back(done);
                stack.pop_back();
            }
        }
        if (!next)
            return handles.front();
    }
}

QVariant PropertyListValues::scalar(Handle node) const
{
    const Node &found = nodes_[node];
    return found.type == PropertyListType::String ? QVariant(strings_[found.first]) : scalars_[found.first];
}

PropertyListSource::Handle PropertyListValues::element(Handle array, qsizetype index) const
{
    return references_[nodes_[array].first + std::size_t(index)];
}

PropertyListSource::Handle PropertyListValues::key(Handle dictionary, qsizetype index) const
{
    return references_[nodes_[dictionary].first + 2 * std::size_t(index)];
}

PropertyListSource::Handle PropertyListValues::valueAt(Handle dictionary, qsizetype index) const
{
    return references_[nodes_[dictionary].first + 2 * std::size_t(index) + 1];
}
