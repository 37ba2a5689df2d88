// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RecentFolders.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileLayer.h"
#include "Platform/Files/FileLock.h"
#include "Platform/PropertyLists/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(lcFolders, "quenby.helper.folders")

const QString fileName = QStringLiteral("RecentFolders.plist");
/// Many times what mostKept paths can take.
constexpr qint64 largestFile = 1 << 20;

const QString lockSuffix = QStringLiteral(".lock");
/// Many times what another writer takes, in milliseconds.
constexpr int lockTimeout = 1000;

/// \a folders, the last of \a added being the first of them now.
QStringList merged(QStringList folders, const QStringList &added)
{
    for (const QString &folder : added) {
        folders.removeAll(folder);
        folders.prepend(folder);
    }
    return folders.mid(0, RecentFolders::mostKept);
}

} // namespace

RecentFolders::RecentFolders(const QString &stateFolder)
    : path_(QDir(stateFolder).filePath(fileName))
{
}

void RecentFolders::add(const QStringList &folders)
{
    unwritten_.append(folders);
    unwritten_ = unwritten_.last(std::min(unwritten_.size(), mostKept));
    if (const Result<> written = write(); written)
        unwritten_.clear();
    else
        qCWarning(lcFolders) << "not remembered:" << written.error;
}

QStringList RecentFolders::existing() const
{
    QStringList found;
    for (const QString &folder : merged(read(), unwritten_)) {
        if (found.size() < mostShown && QFileInfo(folder).isDir())
            found.append(folder);
    }
    return found;
}

QStringList RecentFolders::read() const
{
    if (!QFile::exists(path_))
        return {};
    const Result<QByteArray> bytes = BoundedFile::read(path_, largestFile);
    const PropertyList::ReadResult list = bytes ? PropertyList::read(*bytes) : PropertyList::ReadResult();
    if (!list) {
        qCWarning(lcFolders) << path_ << (bytes ? list.error : bytes.error);
        return {};
    }
    QStringList folders;
    const QVariantList values = list.value->toList();
    for (const QVariant &value : values) {
        const QString folder = value.toString();
        if (QDir::isAbsolutePath(folder) && folders.size() < mostKept)
            folders.append(folder);
    }
    return folders;
}

Result<> RecentFolders::write() const
{
    const DurableFileWriter writer;
    if (const Result<> made = writer.makeFolder(QFileInfo(path_).path()); !made)
        return made;
    const Result<FileLock> lock = FileLock::acquire(FileLayer::real(), path_ + lockSuffix, lockTimeout);
    if (!lock)
        return Result<>::failure(lock.error);
    writer.removeStrayTemporaries(path_);
    const QStringList before = read();
    const QStringList folders = merged(before, unwritten_);
    if (folders == before)
        return {};
    const PropertyList::WriteResult list =
        PropertyList::write(QVariantList(folders.begin(), folders.end()), PropertyList::Form::Binary);
    return list ? writer.write(path_, *list.bytes) : Result<>::failure(list.error);
}
