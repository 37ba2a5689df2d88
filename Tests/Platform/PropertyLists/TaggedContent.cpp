// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Platform/PropertyLists/TaggedContent.h"

#include "Platform/PropertyLists/PropertyList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QVariant scalarFromTag(const QString &tag, const QJsonValue &content)
{
    const QString text = content.toString();
    if (tag == u"$int") {
        bool isSigned = false;
        const qlonglong number = text.toLongLong(&isSigned);
        return isSigned ? QVariant(number) : QVariant(text.toULongLong());
    }
    if (tag == u"$real")
        return text.toDouble();
    if (tag == u"$date")
        return PropertyList::dateValue(text.toDouble());
    if (tag == u"$data")
        return QByteArray::fromBase64(text.toLatin1());
    return {};
}

QVariant fromTagged(const QJsonValue &value)
{
    if (value.isArray()) {
        QVariantList list;
        for (const QJsonValue element : value.toArray())
            list.append(fromTagged(element));
        return list;
    }
    if (!value.isObject())
        return value.toVariant();
    const QJsonObject object = value.toObject();
    if (object.size() == 1 && object.begin().key().startsWith(u'$')) {
        const QString tag = object.begin().key();
        return tag == u"$set" ? fromTagged(object.begin().value())
                              : scalarFromTag(tag, object.begin().value());
    }
    QVariantMap map;
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        map.insert(entry.key(), fromTagged(entry.value()));
    return map;
}

QString quoted(const QString &text)
{
    QString result = QStringLiteral("\"");
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit >= 0x20 && unit < 0x7f && unit != u'"' && unit != u'\\')
            result += character;
        else
            result += QStringLiteral("\\u%1").arg(uint(unit), 4, 16, QLatin1Char('0'));
    }
    return result + QLatin1Char('"');
}

void append(QString &text, const QVariant &value, const QString &indent)
{
    const QString deeper = indent + QStringLiteral("  ");
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        text += QStringLiteral("null");
        return;
    case QMetaType::Bool:
        text += value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        return;
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        text += QStringLiteral("integer ") + value.toString();
        return;
    case QMetaType::Double:
        text += QStringLiteral("real ") + QString::number(value.toDouble(), 'g', 17);
        return;
    case QMetaType::QString:
        text += quoted(value.toString());
        return;
    case QMetaType::QByteArray:
        text += QStringLiteral("data ") + QString::fromLatin1(value.toByteArray().toHex());
        return;
    case QMetaType::QVariantList:
        text += QStringLiteral("[\n");
        for (const QVariant &element : value.toList()) {
            text += deeper;
            append(text, element, deeper);
            text += QLatin1Char('\n');
        }
        text += indent + QLatin1Char(']');
        return;
    case QMetaType::QVariantMap: {
        text += QStringLiteral("{\n");
        const QVariantMap map = value.toMap();
        for (auto entry = map.begin(); entry != map.end(); ++entry) {
            text += deeper + quoted(entry.key()) + QStringLiteral(": ");
            append(text, entry.value(), deeper);
            text += QLatin1Char('\n');
        }
        text += indent + QLatin1Char('}');
        return;
    }
    default:
        break;
    }
    if (const std::optional<double> seconds = PropertyList::dateSeconds(value))
        text += QStringLiteral("date ") + QString::number(*seconds, 'g', 17);
    else
        text += QStringLiteral("a value of type ") + QString::fromLatin1(value.typeName());
}

} // namespace

std::optional<QVariant> TaggedContent::fromJson(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        return std::nullopt;
    return fromTagged(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()));
}

QString TaggedContent::canonical(const QVariant &value)
{
    QString text;
    append(text, value, {});
    return text;
}
