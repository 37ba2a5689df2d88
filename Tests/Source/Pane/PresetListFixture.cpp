// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PresetListFixture.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Source/Model/QNBPresetFile.h"
#include "Source/Pane/QNBPresetListNames.h"
#include "Toolkit/ArrayController.h"

#include <QDir>

void PresetListFixture::SetUp()
{
    store({preset(a, {QStringLiteral("of A")}), preset(b, {QStringLiteral("of B")}),
           preset(c, {QStringLiteral("of C")})});
    openPane();
}

QStringList PresetListFixture::labels() const
{
    QStringList labels;
    for (int row = 0; row < controller().arrangedObjects().size(); ++row)
        labels << record(row)->label();
    return labels;
}

QNBPresetRecordPtr PresetListFixture::record(int row) const
{
    return std::static_pointer_cast<QNBPresetRecord>(controller().arrangedObjects().at(row));
}

QAction &PresetListFixture::action(const char *name) const
{
    return *outlet<QAction>(QString::fromLatin1(name));
}

QString PresetListFixture::presetFile(const QString &fileName)
{
    QDir().mkpath(path(QStringLiteral("files")));
    QString written;
    const QString inside = QStringLiteral("of ") + fileName;
    const Result<> result =
        QNBPresetFile::write(*preset(QStringLiteral("Inside"), {inside}), home.path(), &written);
    EXPECT_TRUE(result) << qPrintable(result.error);
    const QString file = path(QStringLiteral("files/") + fileName);
    EXPECT_TRUE(QFile::rename(path(written), file));
    return file;
}

QStringList PresetListFixture::drag(int row, const QString &folder)
{
    return pane->tableViewNamesOfPromisedFilesDroppedAtDestination(list(), QUrl::fromLocalFile(folder),
                                                                   {row});
}

std::unique_ptr<QMimeData> PresetListFixture::dragOfRow(int row)
{
    auto data = std::make_unique<QMimeData>();
    Pasteboard pasteboard(*data);
    EXPECT_TRUE(pane->tableViewWriteRowsWithIndexesToPasteboard(list(), {row}, pasteboard));
    return data;
}

std::unique_ptr<QMimeData> PresetListFixture::dragOfIndex(const QVariant &index)
{
    auto data = dragOfRow(0);
    const PropertyList::WriteResult archive = KeyedArchiver::archivedDataWithRootObject(index);
    EXPECT_TRUE(archive) << qPrintable(archive.error);
    Pasteboard(*data).setDataForType(archive.bytes.value_or(QByteArray()), QNBRowIndexDragType);
    return data;
}

std::unique_ptr<QMimeData> PresetListFixture::dragOfFiles(const QStringList &paths)
{
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    data->setUrls(urls);
    return data;
}

DragOperations PresetListFixture::validate(const QMimeData &data, TableDropOperation operation)
{
    return pane->tableViewValidateDrop(list(), DraggingInfo(data, DragOperation::Every), 1, operation);
}

bool PresetListFixture::accept(const QMimeData &data, int row, DragOperations mask)
{
    return pane->tableViewAcceptDrop(list(), DraggingInfo(data, mask), row, TableDropOperation::Above);
}
