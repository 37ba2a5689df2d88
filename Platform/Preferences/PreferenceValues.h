// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/BinaryPropertyListWriter.h"
#include "Platform/PropertyLists/PropertyListDocument.h"

#include <QVariant>
#include <map>
#include <memory>
#include <variant>

/// A value already encoded for the domain: a snapshot that is written as it is.
struct EncodedPreference
{
    BinaryPropertyListWriter writer;
    BinaryPropertyListWriter::Ref top = 0;
};

/// The values of a preference domain as one process knows them: those of the file as it was read or written
/// last, and on top of them those that were set since, which are pending.
class PreferenceValues
{
public:
    /// An invalid QVariant takes the key away.
    void set(const QString &key, const QVariant &value);
    void set(const QString &key, EncodedPreference value);
    bool hasPending() const { return !pending_.empty(); }

    /// Pending, else of the file; invalid when there is none.
    QVariant value(const QString &key);
    /// The same without materialising it. The node is valid as long as \a keepAlive is held.
    PropertyListNode node(const QString &key, PropertyListDocument::Ptr *keepAlive);

    /// The bytes of the file as they are known; empty for no file.
    const QByteArray &bytes() const { return bytes_; }
    /// The file holds \a bytes now; \a document may be null if they are those that were known.
    void setFile(const QByteArray &bytes, const PropertyListDocument::Ptr &document);
    /// There is no file, as far as is known.
    void forgetFile();

    /// Whether a pending value differs from the one that the file has under its key.
    bool replacesOthers();

    /// The document of the file's values with the pending ones on top; changes nothing that can be seen.
    PropertyList::WriteResult merged();
    /// The file holds \a written now, which says what merged() gave: nothing is pending any more.
    void settle(const QByteArray &written);
    /// Whether \a merged, which merged() gave, says the same as the bytes of the file, in whatever order.
    bool saysTheSame(const QByteArray &merged);

private:
    /// A value that is encoded, and then, when somebody asked for it, read back.
    struct Encoded
    {
        EncodedPreference preference;
        PropertyListDocument::Ptr document;

        const PropertyListDocument::Ptr &read();
    };
    using Value = std::variant<QVariant, std::unique_ptr<Encoded>>;
    /// Stands in saved_ for a value that only the saved bytes hold.
    struct InBytes
    {
    };
    using Saved = std::variant<QVariant, InBytes>;

    PropertyList::WriteResult merged(BinaryPropertyListWriter &writer, const Encoded *base) const;
    void readSavedBytes();

    std::map<QString, Value> pending_;
    // What is known of the file: the bytes, the document as it was last parsed, and what was saved since.
    QByteArray bytes_;
    PropertyListDocument::Ptr document_;
    std::map<QString, Saved> saved_;
    /// The bytes are of another process, or of another run of this one.
    bool isForeign_ = true;
};
