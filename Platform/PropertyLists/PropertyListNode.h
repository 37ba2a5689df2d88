// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVariant>
#include <memory>
#include <span>

/// What a node of a property list is. Null is also what a missing value reports.
enum class PropertyListType : quint8 {
    Null,
    Boolean,
    Integer,
    Real,
    Date,
    Data,
    String,
    UID,
    Array,
    Dictionary
};

/// Gives access to the nodes of one parsed document. A handle means something to its own source only. Sources
/// are complete and checked before the first node is handed out: limits hold, no cycles, every handle valid,
/// and a dictionary has each key once. Where a document repeats a key, its last entry is the one that the
/// source has.
/// For PropertyListNode; see there for what each answers on a value of another type.
class PropertyListSource
{
public:
    using Handle = quintptr;

    PropertyListSource() = default;
    PropertyListSource(const PropertyListSource &) = delete;
    PropertyListSource &operator=(const PropertyListSource &) = delete;
    virtual ~PropertyListSource();

    virtual PropertyListType type(Handle node) const = 0;
    /// The scalar, as PropertyList.h lists the types. Not called for containers.
    virtual QVariant scalar(Handle node) const = 0;
    /// The text of a String; decoded once for each string object, however often it is referred to.
    virtual const QString &string(Handle node) const = 0;
    virtual bool boolean(Handle node) const = 0;
    /// Of a UID.
    virtual quint64 uid(Handle node) const;
    /// Of an Array or a Dictionary.
    virtual qsizetype count(Handle node) const = 0;
    virtual Handle element(Handle array, qsizetype index) const = 0;
    /// As many elements from \a index on as are UIDs, at most as \a values has room for; how many.
    virtual std::size_t uids(Handle array, qsizetype index, std::span<quint64> values) const;
    virtual Handle key(Handle dictionary, qsizetype index) const = 0;
    virtual Handle valueAt(Handle dictionary, qsizetype index) const = 0;
};

/// One value of a parsed property list, decoded when asked for: a light handle, cheap to copy, that is valid
/// as long as its document (see PropertyListDocument) lives. A default-constructed node is Null, as is a
/// missing value. Large trees are read through nodes, without making a QVariant for each value on the way.
class PropertyListNode
{
public:
    PropertyListNode() = default;
    PropertyListNode(const PropertyListSource *source, PropertyListSource::Handle handle)
        : source_(source)
        , handle_(handle)
    {
    }

    PropertyListType type() const { return source_ ? source_->type(handle_) : PropertyListType::Null; }
    bool isNull() const { return type() == PropertyListType::Null; }
    bool isString() const { return type() == PropertyListType::String; }
    bool isArray() const { return type() == PropertyListType::Array; }
    bool isDictionary() const { return type() == PropertyListType::Dictionary; }

    /// Requires isString().
    const QString &string() const { return source_->string(handle_); }
    /// Requires type() == Boolean.
    bool boolean() const { return source_->boolean(handle_); }

    /// Entries of an array or a dictionary; requires one of them.
    qsizetype count() const { return source_->count(handle_); }
    /// Requires isArray() and 0 <= index < count().
    PropertyListNode at(qsizetype index) const { return {source_, source_->element(handle_, index)}; }
    /// Require isDictionary() and 0 <= index < count(). Keys are strings, each there once.
    const QString &keyAt(qsizetype index) const { return source_->string(source_->key(handle_, index)); }
    PropertyListNode valueAt(qsizetype index) const { return {source_, source_->valueAt(handle_, index)}; }

    /// The value under the key; a Null node when there is none or this is no dictionary. Linear.
    PropertyListNode value(QStringView key) const;

    /// The whole value below this node, as PropertyList.h lists the types.
    QVariant toVariant() const;
    /// The containers of one document of which values have been made.
    using MadeValues = QHash<PropertyListSource::Handle, QVariant>;
    /// The same; what the document shares, the values share that are made with the same \a made.
    QVariant toVariant(MadeValues &made) const;

    const PropertyListSource *source() const { return source_; }
    PropertyListSource::Handle handle() const { return handle_; }

private:
    const PropertyListSource *source_ = nullptr;
    PropertyListSource::Handle handle_ = 0;
};
