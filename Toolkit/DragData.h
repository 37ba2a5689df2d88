// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/DirectSave.h"
#include "Toolkit/DraggingInfo.h"
#include "Toolkit/PromisedFile.h"

#include <QList>
#include <QMimeData>
#include <QUrl>
#include <memory>

/// The data of a drag that begins in one of our views.
///
/// Our own views see just what was declared for them. Other programs also see a promised file, as the types
/// that bring it to them: the direct-save protocol where there is one, and a list of URLs.
class DragData final : public QMimeData
{
public:
    /// \a mask is what our own views may do with it. What was \a promised, if anything, comes to what was
    /// \a delivered once another program takes it.
    DragData(std::unique_ptr<QMimeData> declared, DragOperations mask, std::shared_ptr<PromisedFile> promised,
             std::weak_ptr<PromisedFiles> delivered);
    ~DragData() override;

    /// What was declared when \a data is of such a drag, else \a data.
    static const QMimeData &declaredBy(const QMimeData &data);
    static const DragData *from(const QMimeData &data);

    DragOperations mask() const { return mask_; }
    /// The drag has begun: other programs may ask how the promised file is called, or for the file itself
    /// where nobody tells us of the drop before they do.
    void announcePromise();
    /// Another program takes it.
    void drop();

    bool hasFormat(const QString &format) const override;
    QStringList formats() const override;

protected:
    QVariant retrieveData(const QString &format, QMetaType type) const override;

private:
    QByteArray saveDirectly() const;
    QList<QUrl> promisedUrls() const;
    QByteArray uriList() const;

    std::unique_ptr<QMimeData> declared_;
    DragOperations mask_;
    std::shared_ptr<PromisedFile> promised_;
    std::weak_ptr<PromisedFiles> delivered_;
    DirectSave directSave_;
};
