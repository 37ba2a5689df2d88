// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListVariant.h"

#include <utility>
#include <vector>

namespace PropertyList {

std::optional<PropertyListType> typeOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return PropertyListType::Null;
    case QMetaType::Bool:
        return PropertyListType::Boolean;
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return PropertyListType::Integer;
    case QMetaType::Float:
    case QMetaType::Double:
        return PropertyListType::Real;
    case QMetaType::QDateTime:
        return value.toDateTime().isValid() ? std::optional(PropertyListType::Date) : std::nullopt;
    case QMetaType::QByteArray:
        return PropertyListType::Data;
    case QMetaType::QString:
        return PropertyListType::String;
    case QMetaType::QVariantList:
        return PropertyListType::Array;
    case QMetaType::QVariantMap:
        return PropertyListType::Dictionary;
    default:
        if (value.metaType() == QMetaType::fromType<Date>())
            return PropertyListType::Date;
        if (value.metaType() == QMetaType::fromType<UID>())
            return PropertyListType::UID;
        return std::nullopt;
    }
}

const QVariantList *arrayIn(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantList ? static_cast<const QVariantList *>(value.constData())
                                                     : nullptr;
}

const QVariantMap *dictionaryIn(const QVariant &value)
{
    return value.typeId() == QMetaType::QVariantMap ? static_cast<const QVariantMap *>(value.constData())
                                                    : nullptr;
}

namespace {

bool isUnsigned(const QVariant &integer)
{
    return integer.typeId() == QMetaType::ULongLong || integer.typeId() == QMetaType::ULong;
}

bool equalScalars(PropertyListType type, const QVariant &left, const QVariant &right)
{
    switch (type) {
    case PropertyListType::Null:
        return true;
    case PropertyListType::Integer:
        // Two numbers with the same 64 bits differ when just one of them is negative.
        return left.toULongLong() == right.toULongLong() &&
               (!isUnsigned(left) && left.toLongLong() < 0) == (!isUnsigned(right) && right.toLongLong() < 0);
    case PropertyListType::Real:
        return std::bit_cast<quint64>(left.toDouble()) == std::bit_cast<quint64>(right.toDouble());
    case PropertyListType::Date:
        return Date{*dateSeconds(left)} == Date{*dateSeconds(right)};
    default:
        return left == right;
    }
}

} // namespace

bool equal(const QVariant &left, const QVariant &right)
{
    std::vector<std::pair<const QVariant *, const QVariant *>> pending{{&left, &right}};
    while (!pending.empty()) {
        const auto [one, other] = pending.back();
        pending.pop_back();
        const std::optional<PropertyListType> type = typeOf(*one);
        if (!type || type != typeOf(*other))
            return false;
        if (*type == PropertyListType::Array) {
            const QVariantList &ones = *arrayIn(*one);
            const QVariantList &others = *arrayIn(*other);
            if (ones.size() != others.size())
                return false;
            for (qsizetype i = 0; i < ones.size(); ++i)
                pending.emplace_back(&ones[i], &others[i]);
        } else if (*type == PropertyListType::Dictionary) {
            const QVariantMap &ones = *dictionaryIn(*one);
            const QVariantMap &others = *dictionaryIn(*other);
            if (ones.size() != others.size())
                return false;
            for (auto i = ones.cbegin(), j = others.cbegin(); i != ones.cend(); ++i, ++j) {
                if (i.key() != j.key())
                    return false;
                pending.emplace_back(&i.value(), &j.value());
            }
        } else if (!equalScalars(*type, *one, *other)) {
            return false;
        }
    }
    return true;
}

void destroy(QVariant &value)
{
    std::vector<QVariant> pending;
    pending.push_back(std::exchange(value, QVariant()));
    // Containers that nobody else shares hand over those inside them before they go themselves.
    const auto take = [&pending](QVariant &part) {
        if (part.typeId() == QMetaType::QVariantList || part.typeId() == QMetaType::QVariantMap)
            pending.push_back(std::exchange(part, QVariant()));
    };
    while (!pending.empty()) {
        QVariant current = std::exchange(pending.back(), QVariant());
        pending.pop_back();
        // Inside a QVariant the container itself may be shared; data() would not tell, and copy nothing.
        if (current.typeId() == QMetaType::QVariantList) {
            auto &elements = *static_cast<QVariantList *>(current.data());
            for (qsizetype i = 0; elements.isDetached() && i < elements.size(); ++i)
                take(elements[i]);
        } else if (current.typeId() == QMetaType::QVariantMap) {
            auto &entries = *static_cast<QVariantMap *>(current.data());
            if (!entries.isDetached())
                continue;
            for (QVariant &entry : entries)
                take(entry);
        }
    }
}

} // namespace PropertyList
