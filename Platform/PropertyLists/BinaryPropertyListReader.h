// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyListDocument.h"

#include <QHash>
#include <vector>

/// Reads binary property lists. Values stay in the bytes until they are asked for; only strings are kept
/// once decoded. Handles are object numbers.
///
/// Everything that the top object reaches is checked first, once for each object, however often it is
/// referred to: time and memory are linear in the bytes. Sets, which are no property list, are refused.
class BinaryPropertyListReader final : public PropertyListSource
{
public:
    /// Whether the first bytes are those of this form.
    static bool recognises(const QByteArray &bytes);
    /// Null on failure, with the reason in \a error.
    static PropertyListDocument::Ptr parse(const QByteArray &bytes, QString *error);

    PropertyListType type(Handle node) const override;
    QVariant scalar(Handle node) const override;
    const QString &string(Handle node) const override;
    bool boolean(Handle node) const override;
    quint64 uid(Handle node) const override;
    qsizetype count(Handle node) const override;
    Handle element(Handle array, qsizetype index) const override;
    std::size_t uids(Handle array, qsizetype index, std::span<quint64> values) const override;
    Handle key(Handle dictionary, qsizetype index) const override;
    Handle valueAt(Handle dictionary, qsizetype index) const override;

private:
    using Object = quint32;

    /// Where an object's content begins, and how many bytes, units, elements or entries it has.
    struct Content
    {
        quint64 start = 0;
        quint64 count = 0;
    };

    explicit BinaryPropertyListReader(const QByteArray &bytes);

    class Check;

    bool readTrailer();
    bool refuse(const QString &reason);

    quint8 marker(Object object) const { return data_[offsets_[object]]; }
    Content content(Object object) const;
    Object reference(quint64 start, quint64 index) const;
    /// Where in the bytes the entry stands.
    quint64 entry(Object dictionary, qsizetype index) const;
    /// The text of a string.
    QString decoded(Object string) const;

    QByteArray bytes_;
    const uchar *data_;
    quint64 objectsEnd_ = 0;
    int referenceSize_ = 0;
    Object top_ = 0;
    std::vector<quint32> offsets_;
    /// Of a string or data its place in strings_ or payloads_; while the objects are checked, of a container
    /// its cost (see PropertyList::Limits).
    std::vector<quint32> notes_;
    /// Null until asked for.
    mutable std::vector<QString> strings_;
    mutable std::vector<QByteArray> payloads_;
    /// Of dictionaries that repeat a key: which entries count.
    QHash<Object, std::vector<quint32>> lastEntries_;
    QString error_;
};
