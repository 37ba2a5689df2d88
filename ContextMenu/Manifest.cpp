// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/Manifest.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(lcManifest, "quenby.contextmenu.manifest")

const QString fileManagersKey = QStringLiteral("fileManagers");
const QString foldersKey = QStringLiteral("folders");
const QString filesKey = QStringLiteral("files");
const QString sharedFilesKey = QStringLiteral("sharedFiles");

/// Ten thousand presets, in every file manager, take a tenth of that.
constexpr qint64 largestManifest = qint64(64) << 20;

bool isThere(const QString &path)
{
    const QFileInfo information(path);
    return information.exists() || information.isSymLink();
}

Manifest::Entries entriesFrom(const QVariantMap &stored)
{
    Manifest::Entries entries;
    const QVariantMap files = stored.value(filesKey).toMap();
    for (auto file = files.begin(); file != files.end(); ++file)
        entries.files.insert(file.key(), file.value().toStringList());
    const QVariantMap sharedFiles = stored.value(sharedFilesKey).toMap();
    for (auto file = sharedFiles.begin(); file != sharedFiles.end(); ++file)
        entries.sharedFiles.insert(file.key(), file.value().toString());
    return entries;
}

QVariantList variantList(const QStringList &strings)
{
    return {strings.begin(), strings.end()};
}

QVariantMap stored(const Manifest::Entries &entries)
{
    QVariantMap files;
    for (auto file = entries.files.begin(); file != entries.files.end(); ++file)
        files.insert(file.key(), variantList(file.value()));
    QVariantMap sharedFiles;
    for (auto file = entries.sharedFiles.begin(); file != entries.sharedFiles.end(); ++file)
        sharedFiles.insert(file.key(), file.value());
    return {{filesKey, files}, {sharedFilesKey, sharedFiles}};
}

} // namespace

Manifest::Manifest(QString path)
    : path_(std::move(path))
{
    // Of a run that was killed while it saved.
    DurableFileWriter().removeStrayTemporaries(path_);
    read();
}

void Manifest::read()
{
    if (!isThere(path_))
        return;
    const Result<QByteArray> bytes = BoundedFile::read(path_, largestManifest);
    const PropertyList::ReadResult list = bytes ? PropertyList::read(*bytes) : PropertyList::ReadResult();
    if (!list || list.value->typeId() != QMetaType::QVariantMap) {
        readError_ = bytes ? QStringLiteral("%1 is no list of what was written").arg(path_) : bytes.error;
        qCWarning(lcManifest) << readError_ << list.error;
        return;
    }
    const QVariantMap content = list.value->toMap();
    isRegistered_ = true;
    saved_ = *bytes;
    folders_ = content.value(foldersKey).toStringList();
    const QVariantMap fileManagers = content.value(fileManagersKey).toMap();
    for (auto manager = fileManagers.begin(); manager != fileManagers.end(); ++manager)
        entries_.insert(manager.key(), entriesFrom(manager.value().toMap()));
}

void Manifest::setEntries(const QString &fileManager, const Entries &entries)
{
    entries_.insert(fileManager, entries);
}

void Manifest::removeEntries(const QString &fileManager)
{
    entries_.remove(fileManager);
}

void Manifest::noteMissingFolders(const QString &folder)
{
    QStringList missing;
    for (QString path = QDir::cleanPath(folder); !isThere(path); path = QFileInfo(path).path())
        missing.prepend(path);
    for (const QString &path : std::as_const(missing)) {
        if (!folders_.contains(path))
            folders_.append(path);
    }
}

void Manifest::removeEmptyFolders()
{
    // The innermost first. One that is still of use stays, and stays noted.
    std::sort(folders_.begin(), folders_.end());
    for (qsizetype index = folders_.size() - 1; index >= 0; --index) {
        const QString &folder = folders_.at(index);
        // Not through a link: that was not made here.
        if (!isThere(folder) || (!QFileInfo(folder).isSymLink() && QDir().rmdir(folder)))
            folders_.removeAt(index);
    }
}

QString Manifest::hashOf(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

Result<> Manifest::save()
{
    isRegistered_ = true;
    noteMissingFolders(QFileInfo(path_).path());
    QVariantMap fileManagers;
    for (auto manager = entries_.begin(); manager != entries_.end(); ++manager)
        fileManagers.insert(manager.key(), stored(manager.value()));
    const PropertyList::WriteResult list = PropertyList::write(
        QVariantMap{{fileManagersKey, fileManagers}, {foldersKey, variantList(folders_)}});
    if (!list)
        return Result<>::failure(list.error);
    if (*list.bytes == saved_)
        return {};
    const DurableFileWriter writer;
    if (Result<> made = writer.makeFolder(QFileInfo(path_).path()); !made)
        return made;
    Result<> written = writer.write(path_, *list.bytes);
    if (written)
        saved_ = *list.bytes;
    return written;
}

Result<> Manifest::remove()
{
    // As long as the list is there, they are known.
    removeEmptyFolders();
    if (Result<> removed = DurableFileWriter().remove(path_); !removed)
        return removed;
    isRegistered_ = false;
    saved_.clear();
    removeEmptyFolders();
    folders_.clear();
    return {};
}
