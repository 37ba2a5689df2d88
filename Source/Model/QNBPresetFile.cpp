// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPresetFile.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Shared/Source/QNBShared.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPresetFile, "quenby.presetfile")

namespace {

const QString fileNameFormat = QStringLiteral("%1.%2");
const QString nameOfUnnamed = QStringLiteral("QNB Preset");

/// Without the extension; a name that is nothing but an extension stays whole.
QString labelForPath(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.left(dot) : name;
}

/// Why the list of presets could not be saved with this preset in it; empty if it could. An archive may be
/// nested a little deeper than a preset among others.
QString reasonAgainstStoring(const QNBPresetRecord &record)
{
    BinaryPropertyListWriter writer;
    const BinaryPropertyListWriter::Ref preset = record.encode(writer);
    const BinaryPropertyListWriter::Ref presets = writer.array({&preset, 1});
    const BinaryPropertyListWriter::Ref key = writer.string(QNBPresetKey::fileHierarchy);
    return writer.finish(writer.dictionary({&key, 1}, {&presets, 1})).error;
}

} // namespace

namespace QNBPresetFile {

QString fileNameForLabel(const QString &label)
{
    const QString safe = stringByDeletingFileSystemEntities(label);
    return fileNameFormat.arg(safe.isEmpty() ? nameOfUnnamed : safe, extension);
}

Result<> write(const QNBPresetRecord &record, const QString &folder, QString *fileName)
{
    *fileName = fileNameForLabel(record.label());
    // The system's calls would take the rest of the name for the end of it.
    if (fileName->contains(QChar(u'\0')))
        return Result<>::failure(QStringLiteral("the label holds a NUL character"));
    KeyedArchiver archiver;
    const PropertyList::WriteResult archive = archiver.finish(record.encode(archiver));
    if (!archive)
        return Result<>::failure(archive.error);
    return DurableFileWriter().give(QDir(folder).filePath(*fileName), *archive.bytes);
}

Result<QNBPresetRecordPtr> read(const QString &path)
{
    using Read = Result<QNBPresetRecordPtr>;
    QString error;
    const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocumentWithFile(path, &error);
    if (!document)
        return Read::failure(error);
    const PropertyListNode root = document->root();
    if (!root.isDictionary() || root.count() == 0)
        return Read::failure(QStringLiteral("the archive holds no preset record"));
    QNBPresetRecordPtr record = QNBPresetRecord::fromStored(root);
    if (const QNBHierarchyItem::ReadReport report = record->takeReadReport(); report.losses > 0)
        qCWarning(lcPresetFile) << path << "has" << report.losses
                                << "entries that its items have no place for, first under" << report.first;
    if (const QString reason = reasonAgainstStoring(*record); !reason.isEmpty())
        return Read::failure(reason);
    record->setValueForKey(labelForPath(path), QNBPresetKey::label);
    return record;
}

} // namespace QNBPresetFile
