// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/BinaryPropertyListReader.h"

#include "Platform/PropertyLists/BinaryPropertyListCheck.h"
#include "Platform/PropertyLists/BinaryPropertyListFormat.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

using namespace BinaryPropertyListFormat;
namespace Limits = PropertyList::Limits;

bool BinaryPropertyListReader::recognises(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArrayView(header.data(), header.size()));
}

PropertyListDocument::Ptr BinaryPropertyListReader::parse(const QByteArray &bytes, QString *error)
{
    std::unique_ptr<BinaryPropertyListReader> reader(new BinaryPropertyListReader(bytes));
    if (!reader->readTrailer() || !Check(*reader).run()) {
        *error = reader->error_;
        return nullptr;
    }
    const Handle top = reader->top_;
    return std::make_shared<const PropertyListDocument>(std::move(reader), top);
}

BinaryPropertyListReader::BinaryPropertyListReader(const QByteArray &bytes)
    : bytes_(bytes)
    , data_(reinterpret_cast<const uchar *>(bytes_.constData()))
{
}

bool BinaryPropertyListReader::refuse(const QString &reason)
{
    error_ = QStringLiteral("binary property list: ") + reason;
    return false;
}

bool BinaryPropertyListReader::readTrailer()
{
    if (bytes_.size() > Limits::inputSize)
        return refuse(QStringLiteral("larger than %1 bytes").arg(Limits::inputSize));
    if (!recognises(bytes_) || bytes_.size() < qsizetype(header.size()) + trailerSize)
        return refuse(QStringLiteral("no header or no trailer"));
    const quint64 trailer = quint64(bytes_.size() - trailerSize);
    const uchar *const fields = data_ + trailer;
    const int offsetSize = fields[trailerOffsetSize];
    referenceSize_ = fields[trailerReferenceSize];
    const quint64 objects = load(fields + trailerObjectCount, 8);
    const quint64 top = load(fields + trailerTopObject, 8);
    const quint64 table = load(fields + trailerOffsetTable, 8);
    if (offsetSize < 1 || offsetSize > 8 || referenceSize_ < 1 || referenceSize_ > 8)
        return refuse(QStringLiteral("offsets or references of an impossible size"));
    if (table < header.size() || table > trailer || objects > (trailer - table) / quint64(offsetSize))
        return refuse(QStringLiteral("the offset table is not within the file"));
    if (top >= objects)
        return refuse(QStringLiteral("no top object"));
    if (objects > table - header.size() || (offsetSize < 8 && objects > quint64(1) << 8 * offsetSize))
        return refuse(QStringLiteral("more objects than the file has room for"));

    objectsEnd_ = table;
    top_ = Object(top);
    offsets_.resize(objects);
    const uchar *end = data_ + table;
    for (quint32 &offset : offsets_) {
        end += offsetSize;
        const quint64 place = loadBefore(end, quint64(offsetSize));
        if (place < header.size() || place >= objectsEnd_)
            return refuse(QStringLiteral("an object outside the file"));
        offset = quint32(place);
    }
    return true;
}

BinaryPropertyListReader::Content BinaryPropertyListReader::content(Object object) const
{
    const quint64 offset = offsets_[object];
    const quint8 low = data_[offset] & 0xf;
    if (low != countFollows)
        return {offset + 1, low};
    const int size = 1 << (data_[offset + 1] & 0xf);
    return {offset + 2 + quint64(size), load(data_ + offset + 2, size)};
}

BinaryPropertyListReader::Object BinaryPropertyListReader::reference(quint64 start, quint64 index) const
{
    const quint64 size = quint64(referenceSize_);
    const quint64 number = loadBefore(data_ + start + (index + 1) * size, size);
    return Object(std::min<quint64>(number, std::numeric_limits<Object>::max()));
}

PropertyListType BinaryPropertyListReader::type(Handle node) const
{
    const quint8 marker = this->marker(Object(node));
    switch (marker >> 4) {
    case Type::simple:
        return marker == nullMarker ? PropertyListType::Null : PropertyListType::Boolean;
    case Type::integer:
        return PropertyListType::Integer;
    case Type::real:
        return PropertyListType::Real;
    case Type::date:
        return PropertyListType::Date;
    case Type::data:
        return PropertyListType::Data;
    case Type::uid:
        return PropertyListType::UID;
    case Type::array:
        return PropertyListType::Array;
    case Type::dictionary:
        return PropertyListType::Dictionary;
    default:
        return PropertyListType::String;
    }
}

QVariant BinaryPropertyListReader::scalar(Handle node) const
{
    const Object object = Object(node);
    const quint8 marker = this->marker(object);
    const uchar *const start = data_ + offsets_[object] + 1;
    switch (marker >> 4) {
    case Type::simple:
        return marker == nullMarker ? QVariant() : QVariant(marker == trueMarker);
    case Type::integer: {
        const int size = 1 << (marker & 0xf);
        const quint64 number = load(size == 16 ? start + 8 : start, std::min(size, 8));
        const bool isUnsigned =
            size == 16 && start[0] == 0 && number > quint64(std::numeric_limits<qint64>::max());
        return isUnsigned ? QVariant(qulonglong(number)) : QVariant(qlonglong(number));
    }
    case Type::real:
        if (marker == floatMarker)
            return double(std::bit_cast<float>(qFromBigEndian<quint32>(start)));
        return std::bit_cast<double>(qFromBigEndian<quint64>(start));
    case Type::date:
        return PropertyList::dateValue(std::bit_cast<double>(qFromBigEndian<quint64>(start)));
    case Type::data: {
        QByteArray &payload = payloads_[notes_[object]];
        if (payload.isNull()) {
            const Content content = this->content(object);
            payload = QByteArray(bytes_.constData() + content.start, qsizetype(content.count));
        }
        return payload;
    }
    case Type::uid:
        return QVariant::fromValue(PropertyList::UID{load(start, (marker & 0xf) + 1)});
    default:
        return string(node);
    }
}

const QString &BinaryPropertyListReader::string(Handle node) const
{
    const Object object = Object(node);
    QString &text = strings_[notes_[object]];
    if (text.isNull())
        text = decoded(object);
    return text;
}

QString BinaryPropertyListReader::decoded(Object string) const
{
    const Content content = this->content(string);
    const uchar *const from = data_ + content.start;
    if (marker(string) >> 4 == Type::asciiString)
        return QString::fromLatin1(reinterpret_cast<const char *>(from), qsizetype(content.count));
    QString text(qsizetype(content.count), Qt::Uninitialized);
    qFromBigEndian<quint16>(from, qsizetype(content.count), text.data());
    return text;
}

bool BinaryPropertyListReader::boolean(Handle node) const
{
    return marker(Object(node)) == trueMarker;
}

quint64 BinaryPropertyListReader::uid(Handle node) const
{
    const uchar *const start = data_ + offsets_[Object(node)];
    return load(start + 1, (*start & 0xf) + 1);
}

qsizetype BinaryPropertyListReader::count(Handle node) const
{
    if (!lastEntries_.isEmpty()) {
        const auto entries = lastEntries_.constFind(Object(node));
        if (entries != lastEntries_.constEnd())
            return qsizetype(entries->size());
    }
    return qsizetype(content(Object(node)).count);
}

quint64 BinaryPropertyListReader::entry(Object dictionary, qsizetype index) const
{
    if (!lastEntries_.isEmpty()) {
        const auto entries = lastEntries_.constFind(dictionary);
        if (entries != lastEntries_.constEnd())
            return (*entries)[std::size_t(index)];
    }
    return quint64(index);
}

PropertyListSource::Handle BinaryPropertyListReader::element(Handle array, qsizetype index) const
{
    return reference(content(Object(array)).start, quint64(index));
}

std::size_t BinaryPropertyListReader::uids(Handle array, qsizetype index, std::span<quint64> values) const
{
    const Content content = this->content(Object(array));
    const std::size_t most = std::min(values.size(), std::size_t(content.count) - std::size_t(index));
    for (std::size_t i = 0; i < most; ++i) {
        const Object element = reference(content.start, quint64(index) + i);
        if (marker(element) >> 4 != Type::uid)
            return i;
        values[i] = uid(element);
    }
    return most;
}

PropertyListSource::Handle BinaryPropertyListReader::key(Handle dictionary, qsizetype index) const
{
    return reference(content(Object(dictionary)).start, entry(Object(dictionary), index));
}

PropertyListSource::Handle BinaryPropertyListReader::valueAt(Handle dictionary, qsizetype index) const
{
    const Content content = this->content(Object(dictionary));
    return reference(content.start, content.count + entry(Object(dictionary), index));
}
