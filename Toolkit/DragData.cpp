// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/DragData.h"

#include "Toolkit/LocalPath.h"

#include <utility>

namespace {

QVariant listOf(const QList<QUrl> &urls)
{
    return QVariantList(urls.begin(), urls.end());
}

} // namespace

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
    if (!promised_)
        return;
    // Elsewhere than on an X screen the release of the mouse is not told to the program that drags.
    if (DirectSave::isAvailable())
        directSave_.announce(promised_->probableName());
    else
        promised_->giveWhenAsked();
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

QVariant DragData::retrieveData(const QString &format, QMetaType type) const
{
    if (promised_ && format == DirectSave::format)
        return saveDirectly();
    // This is how the library asks for addresses, and it may take nothing else then; from bytes it makes all
    // other types.
    const bool asksForUrls = type == QMetaType::fromType<QVariantList>();
    if (promised_ && format == PasteboardType::filenames)
        return asksForUrls ? listOf(promisedUrls()) : QVariant(uriList());
    return asksForUrls ? listOf(declared_->urls()) : QVariant(declared_->data(format));
}

QByteArray DragData::saveDirectly() const
{
    const QString path = localPathOfUrl(directSave_.wantedUrl());
    if (path.isEmpty())
        return DirectSave::unsupported;
    return promised_->writeTo(path) ? DirectSave::saved : DirectSave::failed;
}

QList<QUrl> DragData::promisedUrls() const
{
    const QUrl url = promised_->url();
    return url.isValid() ? QList<QUrl>{url} : QList<QUrl>();
}

QByteArray DragData::uriList() const
{
    QByteArray list;
    for (const QUrl &url : promisedUrls())
        list += url.toEncoded() + "\r\n";
    return list;
}
