// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/Pasteboard.h"

#include "Platform/PropertyLists/PropertyList.h"
#include "Toolkit/LocalPath.h"

#include <QLoggingCategory>
#include <QMimeData>
#include <QUrl>
#include <QUuid>

Q_LOGGING_CATEGORY(logPasteboard, "quenby.toolkit.pasteboard")

namespace {

const QString markOfOrigin = QStringLiteral("application/x-quenby-process");

const QByteArray &tokenOfThisProcess()
{
    static const QByteArray token = QUuid::createUuid().toRfc4122().toHex();
    return token;
}

QVariant localPaths(const QList<QUrl> &urls)
{
    QVariantList paths;
    for (const QUrl &url : urls) {
        const QString path = localPathOfUrl(url);
        if (!path.isEmpty())
            paths.append(path);
    }
    return paths.isEmpty() ? QVariant() : QVariant(paths);
}

QList<QUrl> urlsOfPaths(const QVariantList &paths)
{
    QList<QUrl> urls;
    for (const QVariant &path : paths)
        urls.append(QUrl::fromLocalFile(path.toString()));
    return urls;
}

} // namespace

Pasteboard::Pasteboard(QMimeData &data)
    : data_(&data)
    , writableData_(&data)
{
}

Pasteboard::Pasteboard(const QMimeData &data)
    : data_(&data)
    , writableData_(nullptr)
{
}

void Pasteboard::declareTypes(const QStringList &types)
{
    if (!writableData_)
        return;
    writableData_->clear();
    for (const QString &type : types)
        writableData_->setData(type, {});
    writableData_->setData(markOfOrigin, tokenOfThisProcess());
}

void Pasteboard::setDataForType(const QByteArray &data, const QString &type)
{
    if (writableData_)
        writableData_->setData(type, data);
}

void Pasteboard::setPropertyListForType(const QVariant &value, const QString &type)
{
    if (!writableData_)
        return;
    if (type == PasteboardType::filenames) {
        writableData_->setUrls(urlsOfPaths(value.toList()));
        return;
    }
    const PropertyList::WriteResult written = PropertyList::write(value, PropertyList::Form::XML);
    if (written)
        writableData_->setData(type, *written.bytes);
    else
        qCWarning(logPasteboard) << "no data for" << type << "because" << written.error;
}

QStringList Pasteboard::types() const
{
    QStringList types = data_->formats();
    types.removeAll(markOfOrigin);
    return types;
}

bool Pasteboard::hasDataForType(const QString &type) const
{
    return data_->hasFormat(type);
}

QByteArray Pasteboard::dataForType(const QString &type) const
{
    const QByteArray data = data_->data(type);
    return data.isEmpty() ? QByteArray() : data;
}

QVariant Pasteboard::propertyListForType(const QString &type) const
{
    if (type == PasteboardType::filenames)
        return localPaths(data_->urls());
    const QByteArray data = dataForType(type);
    return data.isNull() ? QVariant() : PropertyList::read(data).value.value_or(QVariant());
}

bool Pasteboard::isFromThisProcess() const
{
    return data_->data(markOfOrigin) == tokenOfThisProcess();
}
