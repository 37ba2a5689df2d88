// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/KeyedArchiveSource.h"

#include <QHash>
#include <array>
#include <optional>

/// Turns the property list of a keyed archive into a KeyedArchiveSource, with all checks, in one pass over
/// the objects that the root reaches. Nothing recurses, and each object is read once however often it is
/// referred to.
class KeyedArchiveReader
{
public:
    /// \a size is the archive's in bytes: it bounds what the archive may cost (see PropertyList::Limits).
    KeyedArchiveReader(PropertyListDocument::Ptr archive, qsizetype size);

    /// The document of the root object; null on failure, with the reason in \a error. Call once.
    PropertyListDocument::Ptr read(QString *error);

private:
    using Handle = PropertyListSource::Handle;
    using Object = KeyedArchiveSource::Object;
    using Storage = KeyedArchiveSource::Storage;
    /// An index into the source's objects. 0 is null.
    using Slot = quint32;

    /// What an object's class makes of it.
    enum class Kind : quint8 { Dictionary, Array, String, Data, Date, Null, Number };
    enum Field : quint8 {
        Keys,
        Objects,
        String,
        Bytes,
        Data,
        Time,
        First,
        Number,
        Integer,
        Real,
        Boolean,
        Class,
        FieldCount,
        NumberedObject,
        NumberedKey,
        /// Another field that only an archiver writes.
        OtherField,
        /// No field of an archived object.
        PlainKey
    };
    struct Fields
    {
        std::array<Handle, FieldCount> values;
        quint32 present = 0;
        qsizetype numberedObjects = 0;
        qsizetype numberedKeys = 0;
        bool others = false;
        bool has(Field field) const { return present & (1U << field); }
    };
    enum class State : quint8 { New, Open, Done };
    struct Progress
    {
        quint32 cost = 1;
        /// Of a string that is a key: the same number as of every key that reads like it; else 0.
        quint32 key = 0;
        quint16 height = 0;
        State state = State::New;
    };
    /// A container whose parts are being visited.
    struct Visit
    {
        Slot slot;
        quint32 next;
        quint64 cost;
        quint16 height;
    };

    bool readHeader(Handle *root);
    bool readGraph(Slot root);
    bool enter(Slot slot);
    bool leave(const Visit &visit);
    bool checkKeys(Slot dictionary);
    quint32 numberOfKey(Slot string);

    bool readObject(Slot slot);
    bool readDictionaryProperty(Slot slot, Handle property);
    bool readPlainDictionary(Slot slot, Handle property);
    bool readDictionary(Slot slot, Handle property, const Fields &fields);
    bool readArray(Slot slot, Handle property, const Fields &fields);
    bool readString(Slot slot, const Fields &fields);
    bool readData(Slot slot, const Fields &fields);
    bool readDate(Slot slot, const Fields &fields);
    bool readNumber(Slot slot, const Fields &fields);
    Fields readFields(Handle property);
    Field fieldOf(Handle key);

    bool readReferences(Handle array, quint32 *first, quint32 *count);
    bool readNumbered(Handle property, Field wanted, QStringView prefix, qsizetype count, quint32 *first);
    std::optional<quint64> reference(Handle property) const;
    std::optional<Slot> slotForUID(quint64 uid);
    std::optional<Slot> slotFor(Handle property);
    Slot addObject(Handle property);
    std::optional<Handle> followed(Handle property);
    std::optional<Kind> kindOf(Handle description);

    void setContainer(Slot slot, PropertyListType type, quint32 first, quint32 firstValue, quint32 count);
    void setScalar(Slot slot, PropertyListType type, Storage storage, Handle property);
    /// Keeps the first reason. Always false.
    bool fail(const QString &reason);
    bool failMissing(QStringView className);

    std::unique_ptr<KeyedArchiveSource> source_;
    const PropertyListSource &properties_;
    qsizetype size_;
    QString error_;

    Handle archivedObjects_ = 0;
    std::vector<Slot> slotOfUID_;
    std::vector<Progress> progress_;
    std::vector<Visit> visits_;
    /// Each text that is a key, and its number.
    QHash<QString, quint32> keys_;
    /// The keys of the dictionary that is looked at, by their numbers.
    std::vector<quint32> keysOfOne_;
    /// How many parts the containers have that were entered, shared ones counted for each.
    quint64 parts_ = 0;
    /// Of the containers that were read.
    quint64 containersCost_ = 0;
    /// The texts that were decoded from bytes, as places in the source's texts_.
    QHash<Handle, quint32> decoded_;

    /// Values that stand where a reference usually does, so that a shared one is read once.
    QHash<Handle, Slot> inlined_;
    /// Where the references of arrays begin that are long enough for sharing to be an attack on memory.
    QHash<Handle, quint32> longArrays_;
    QHash<quint64, Kind> kindOfClass_;
    std::optional<std::pair<quint64, Kind>> lastClass_;
    struct KnownField
    {
        Handle key;
        Field field;
    };
    /// Binary archives hold each field name once: most are told by their handle.
    std::array<KnownField, 8> knownFields_;
    std::size_t knownFieldCount_ = 0;
};
