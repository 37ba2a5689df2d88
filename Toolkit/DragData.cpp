// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DragData.h"

#include "Toolkit/LocalPath.h"

#include <utility>

DragData::DragData(std::unique_ptr<QMimeData> declared, DragOperations mask,
                   std::shared_ptr<PromisedFile> promised, std::weak_ptr<PromisedFiles> delivered)
    : declared_(std::move(declared))
    , mask_(mask)
    , promised_(std::move(promised))
    , delivered_(std::move(delivered))
{
}

DragData::~DragData() = default;

const QMimeData &DragData::declaredBy(const QMimeData &data)
{
    const DragData *own = from(data);
    return own ? *own->declared_ : data;
}

const DragData *DragData::from(const QMimeData &data)
{
    return dynamic_cast<const DragData *>(&data);
}

void DragData::announcePromise()
{
    if (promised_ && DirectSave::isAvailable())
        directSave_.announce(promised_->probableName());
}

void DragData::drop()
{
    if (!promised_)
        return;
    promised_->drop();
    const std::shared_ptr<PromisedFiles> delivered = delivered_.lock();
    if (delivered && (delivered->empty() || delivered->back() != promised_))
        delivered->push_back(promised_);
}

bool DragData::hasFormat(const QString &format) const
{
    return formats().contains(format);
}

QStringList DragData::formats() const
{
    QStringList formats = declared_->formats();
    if (!promised_)
        return formats;
    if (DirectSave::isAvailable())
        formats.append(DirectSave::format);
    formats.append(PasteboardType::filenames);
    return formats;
}

QVariant DragData::retrieveData(const QString &format, QMetaType) const
{
    if (promised_ && format == DirectSave::format)
        return saveDirectly();
    if (promised_ && format == PasteboardType::filenames)
        return uriList();
    return declared_->data(format);
}

QByteArray DragData::saveDirectly() const
{
    const QString path = localPathOfUrl(directSave_.wantedUrl());
    if (path.isEmpty())
        return DirectSave::unsupported;
    return promised_->writeTo(path) ? DirectSave::saved : DirectSave::failed;
}

QByteArray DragData::uriList() const
{
    const QUrl url = promised_->url();
    return url.isValid() ? url.toEncoded() + "\r\n" : QByteArray();
}
