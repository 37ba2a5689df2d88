// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/PreferenceValues.h"

#include "Platform/LineText.h"
#include "Platform/PropertyLists/PropertyListComparison.h"

#include <QLoggingCategory>

#include <algorithm>
#include <vector>

namespace {

Q_LOGGING_CATEGORY(lcValues, "quenby.preferences.values")

using Ref = BinaryPropertyListWriter::Ref;

PropertyListDocument::Ptr documentOf(const EncodedPreference &encoded)
{
    const PropertyList::WriteResult written = encoded.writer.finish(encoded.top);
    QString error = written.error;
    PropertyListDocument::Ptr document;
    if (written)
        document = PropertyListDocument::parse(*written.bytes, &error);
    if (!document)
        qCWarning(lcValues, "a value that was set is no property list: %ls",
                  qUtf16Printable(lineText(error)));
    return document;
}

/// A value as a document of its own; null for none.
PropertyListDocument::Ptr documentOf(const QVariant &value)
{
    return value.isValid() ? PropertyListDocument::fromVariant(value) : nullptr;
}

} // namespace

const PropertyListDocument::Ptr &PreferenceValues::Encoded::read()
{
    if (!document)
        document = documentOf(preference);
    return document;
}

void PreferenceValues::set(const QString &key, const QVariant &value)
{
    pending_.insert_or_assign(key, value);
}

void PreferenceValues::set(const QString &key, EncodedPreference value)
{
    pending_.insert_or_assign(key, std::make_unique<Encoded>(Encoded{std::move(value), nullptr}));
}

QVariant PreferenceValues::value(const QString &key)
{
    if (const auto found = pending_.find(key); found != pending_.end()) {
        if (const auto *variant = std::get_if<QVariant>(&found->second))
            return *variant;
    }
    PropertyListDocument::Ptr keepAlive;
    return node(key, &keepAlive).toVariant();
}

PropertyListNode PreferenceValues::node(const QString &key, PropertyListDocument::Ptr *keepAlive)
{
    const auto whole = [keepAlive](const PropertyListDocument::Ptr &document) {
        *keepAlive = document;
        return document ? document->root() : PropertyListNode();
    };
    if (const auto found = pending_.find(key); found != pending_.end()) {
        if (const auto *variant = std::get_if<QVariant>(&found->second))
            return whole(documentOf(*variant));
        return whole(std::get<std::unique_ptr<Encoded>>(found->second)->read());
    }
    if (const auto found = saved_.find(key); found != saved_.end()) {
        if (const auto *variant = std::get_if<QVariant>(&found->second))
            return whole(documentOf(*variant));
        readSavedBytes();
    }
    *keepAlive = document_;
    return document_ ? document_->root().value(key) : PropertyListNode();
}

void PreferenceValues::setFile(const QByteArray &bytes, const PropertyListDocument::Ptr &document)
{
    if (document) {
        document_ = document;
        saved_.clear();
        isForeign_ = true;
    }
    bytes_ = bytes;
}

void PreferenceValues::forgetFile()
{
    document_.reset();
    saved_.clear();
    bytes_.clear();
    isForeign_ = true;
}

bool PreferenceValues::replacesOthers()
{
    readSavedBytes();
    const PropertyListNode root = document_ ? document_->root() : PropertyListNode();
    return std::any_of(pending_.begin(), pending_.end(), [&root](const auto &entry) {
        const auto &[key, value] = entry;
        const PropertyListNode present = root.value(key);
        if (present.isNull())
            return false;
        const auto *variant = std::get_if<QVariant>(&value);
        const PropertyListDocument::Ptr document =
            variant ? documentOf(*variant) : std::get<std::unique_ptr<Encoded>>(value)->read();
        return !document || !PropertyListComparison::areEqual(document->root(), present);
    });
}

/// The largest value that is encoded already is where the others are added, and is left as it was.
PropertyList::WriteResult PreferenceValues::merged()
{
    for (const auto &[key, value] : saved_) {
        if (std::holds_alternative<InBytes>(value) && !pending_.contains(key)) {
            readSavedBytes();
            break;
        }
    }

    Encoded *base = nullptr;
    for (const auto &[key, value] : pending_) {
        const auto *encoded = std::get_if<std::unique_ptr<Encoded>>(&value);
        if (encoded &&
            (!base || (*encoded)->preference.writer.mark().bytes > base->preference.writer.mark().bytes))
            base = encoded->get();
    }
    BinaryPropertyListWriter own;
    BinaryPropertyListWriter &writer = base ? base->preference.writer : own;
    const BinaryPropertyListWriter::Mark mark = writer.mark();
    PropertyList::WriteResult result = merged(writer, base);
    writer.rewind(mark);
    return result;
}

PropertyList::WriteResult PreferenceValues::merged(BinaryPropertyListWriter &writer,
                                                   const Encoded *base) const
{
    std::map<QString, PropertyListNode> kept;
    const PropertyListNode root = document_ ? document_->root() : PropertyListNode();
    for (qsizetype i = 0, count = root.isDictionary() ? root.count() : 0; i < count; ++i) {
        const QString &key = root.keyAt(i);
        if (!pending_.contains(key) && !saved_.contains(key))
            kept[key] = root.valueAt(i);
    }

    std::vector<Ref> keys;
    std::vector<Ref> values;
    const auto add = [&](const QString &key, Ref value) {
        keys.push_back(writer.string(key));
        values.push_back(value);
    };
    BinaryPropertyListWriter::WrittenNodes written;
    for (const auto &[key, node] : kept)
        add(key, writer.value(node, written));
    for (const auto &[key, value] : saved_) {
        const auto *variant = std::get_if<QVariant>(&value);
        if (variant && variant->isValid() && !pending_.contains(key))
            add(key, writer.value(*variant));
    }
    for (const auto &[key, value] : pending_) {
        if (const auto *variant = std::get_if<QVariant>(&value)) {
            if (variant->isValid())
                add(key, writer.value(*variant));
            continue;
        }
        const auto &encoded = std::get<std::unique_ptr<Encoded>>(value);
        if (encoded.get() == base) {
            add(key, base->preference.top);
            continue;
        }
        const PropertyListDocument::Ptr other = documentOf(encoded->preference);
        if (!other)
            return {std::nullopt, QStringLiteral("the value of %1 is no property list").arg(key)};
        add(key, writer.value(other->root()));
    }
    return writer.finish(writer.dictionary(keys, values));
}

void PreferenceValues::settle(const QByteArray &written)
{
    for (const auto &[key, value] : pending_) {
        if (const auto *variant = std::get_if<QVariant>(&value))
            saved_.insert_or_assign(key, *variant);
        else
            saved_.insert_or_assign(key, InBytes());
    }
    pending_.clear();
    isForeign_ = isForeign_ && written == bytes_;
    bytes_ = written;
}

bool PreferenceValues::saysTheSame(const QByteArray &merged)
{
    if (bytes_.isEmpty() || merged == bytes_)
        return !bytes_.isEmpty();
    // What this class wrote has the same size for the same values. Other writers may use another form.
    if (!isForeign_ && merged.size() != bytes_.size())
        return false;
    QString error;
    const PropertyListDocument::Ptr document = PropertyListDocument::parse(merged, &error);
    readSavedBytes();
    return document && document_ && PropertyListComparison::areEqual(document->root(), document_->root());
}

/// Makes the document that of the bytes; they were written here, so they can be read.
void PreferenceValues::readSavedBytes()
{
    if (saved_.empty())
        return;
    QString error;
    document_ = PropertyListDocument::parse(bytes_, &error);
    if (!document_)
        qCCritical(lcValues, "what was saved cannot be read: %ls", qUtf16Printable(lineText(error)));
    saved_.clear();
}
