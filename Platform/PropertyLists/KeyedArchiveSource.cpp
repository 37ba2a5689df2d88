// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/KeyedArchiveSource.h"

#include "Platform/PropertyLists/PropertyList.h"

KeyedArchiveSource::KeyedArchiveSource(PropertyListDocument::Ptr archive)
    : archive_(std::move(archive))
    , properties_(*archive_->root().source())
{
}

QVariant KeyedArchiveSource::scalar(Handle node) const
{
    const Object &object = objects_[node];
    if (object.type == PropertyListType::Null)
        return {};
    switch (object.storage) {
    case Storage::Seconds:
        return PropertyList::dateValue(number(object));
    case Storage::Truth:
        return boolean(node);
    case Storage::Real:
        return number(object);
    case Storage::Text:
        return texts_[object.first];
    case Storage::Property:
        break;
    }
    return properties_.scalar(object.property);
}

const QString &KeyedArchiveSource::string(Handle node) const
{
    const Object &object = objects_[node];
    return object.storage == Storage::Text ? texts_[object.first] : properties_.string(object.property);
}

bool KeyedArchiveSource::boolean(Handle node) const
{
    const Object &object = objects_[node];
    return object.storage == Storage::Truth ? number(object) != 0 : properties_.boolean(object.property);
}

double KeyedArchiveSource::number(const Object &object) const
{
    return properties_.scalar(object.property).toDouble();
}
