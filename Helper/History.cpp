// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/History.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <QDateTime>
#include <QFileInfo>

#include <utility>

namespace {

const QString historyFile = QStringLiteral("LastCreation.plist");
const QString undoingFile = QStringLiteral("LastCreation-undoing.plist");
const QString lockSuffix = QStringLiteral(".lock");

const QString idKey = QStringLiteral("id");
const QString labelKey = QStringLiteral("label");
const QString recordsKey = QStringLiteral("records");
/// Of the one folder, as the first version wrote it.
const QString recordKey = QStringLiteral("record");
const QString begunKey = QStringLiteral("begun");

const QString noFolder = QStringLiteral("there is no folder for the program's state");

/// In milliseconds. Undoing a large creation takes as long as making it.
constexpr int lockTimeout = 30'000;
constexpr qint64 nanosecondsInMillisecond = 1'000'000;

/// None if one of them is no record, or there is none.
std::optional<Creation::Records> recordsIn(const QVariantMap &stored)
{
    QVariantList list = stored.value(recordsKey).toList();
    if (list.isEmpty())
        list.append(stored.value(recordKey));
    Creation::Records records;
    for (const QVariant &element : std::as_const(list)) {
        std::optional<Creation::Record> record = Creation::Record::fromVariant(element.toMap());
        if (!record)
            return std::nullopt;
        records.push_back(std::move(*record));
    }
    return records;
}

QString asideOf(const QString &file, const QString &id)
{
    return file + QStringLiteral(".before-") + id;
}

} // namespace

History::History()
    : History(DesktopFolders::stateFolder())
{
}

History::History(QString folder)
    : folder_(std::move(folder))
{
}

QString History::path() const
{
    return folder_ + u'/' + historyFile;
}

QString History::undoingPath() const
{
    return folder_ + u'/' + undoingFile;
}

Result<> History::store(const Creation &creation) const
{
    QVariantList records;
    for (const ::Creation::Record &record : creation.records)
        records.append(record.toVariant());
    const PropertyList::WriteResult bytes = PropertyList::write(QVariantMap{
        {idKey, creation.id}, {labelKey, creation.label}, {begunKey, creation.begun}, {recordsKey, records}});
    if (!bytes)
        return Result<>::failure(bytes.error);
    return DurableFileWriter().write(creation.isBeingUndone ? undoingPath() : path(), *bytes.bytes);
}

Result<> History::beginUndo() const
{
    return QFileInfo::exists(path()) ? DurableFileWriter().rename(path(), undoingPath()) : Result<>();
}

Result<> History::endUndo() const
{
    return DurableFileWriter().rename(undoingPath(), path());
}

Result<std::optional<History::Creation>> History::read() const
{
    using Read = Result<std::optional<Creation>>;
    const bool isBeingUndone = !QFileInfo::exists(path());
    const QString file = isBeingUndone ? undoingPath() : path();
    if (!QFileInfo::exists(file))
        return Read(std::nullopt);
    const Result<QByteArray> bytes = BoundedFile::read(file, PropertyList::Limits::inputSize);
    if (!bytes)
        return Read::failure(bytes.error);
    const PropertyList::ReadResult result = PropertyList::read(*bytes);
    const QVariantMap stored = result ? result.value->toMap() : QVariantMap();
    const std::optional<::Creation::Records> records = recordsIn(stored);
    if (!records)
        return Read::failure(
            file + QStringLiteral(": ") +
            (result.error.isEmpty() ? QStringLiteral("not a record of a creation") : result.error));
    // The first version did not say when; it wrote the file right after.
    const qint64 written = QFileInfo(file).lastModified().toMSecsSinceEpoch() * nanosecondsInMillisecond;
    return std::optional(Creation{stored.value(idKey).toString(), stored.value(labelKey).toString(), *records,
                                  isBeingUndone, stored.value(begunKey, written).toLongLong()});
}

bool History::hasCreation() const
{
    return QFileInfo::exists(path()) || QFileInfo::exists(undoingPath());
}

Result<> History::forget() const
{
    const DurableFileWriter writer;
    const Result<> removed = writer.remove(undoingPath());
    return removed ? writer.remove(path()) : removed;
}

Result<> History::setAside(const QString &id) const
{
    Result<> result;
    for (const QString &file : {undoingPath(), path()}) {
        if (result && QFileInfo::exists(file))
            result = DurableFileWriter().rename(file, asideOf(file, id));
    }
    return result;
}

Result<> History::bringBack(const QString &id) const
{
    if (hasCreation())
        return forgetAside(id);
    Result<> result;
    for (const QString &file : {undoingPath(), path()}) {
        if (const QString aside = asideOf(file, id); result && QFileInfo::exists(aside))
            result = DurableFileWriter().rename(aside, file);
    }
    return result;
}

Result<> History::forgetAside(const QString &id) const
{
    const DurableFileWriter writer;
    const Result<> removed = writer.remove(asideOf(undoingPath(), id));
    return removed ? writer.remove(asideOf(path(), id)) : removed;
}

Result<FileLock> History::lock() const
{
    const DurableFileWriter writer;
    if (const Result<> made = folder_.isEmpty() ? Result<>::failure(noFolder) : writer.makeFolder(folder_);
        !made)
        return Result<FileLock>::failure(made.error);
    Result<FileLock> lock = FileLock::acquire(FileLayer::real(), path() + lockSuffix, lockTimeout);
    if (lock) {
        for (const QString &file : {path(), undoingPath()})
            writer.removeStrayTemporaries(file);
    }
    return lock;
}
