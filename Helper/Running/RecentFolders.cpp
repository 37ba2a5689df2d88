// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/RecentFolders.h"

#include "Platform/BoundedFile.h"
#include "Platform/DurableFileWriter.h"
#include "Platform/PropertyList.h"

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

} // namespace

RecentFolders::RecentFolders(const QString &stateFolder)
    : folder_(stateFolder)
{
    const QString path = QDir(folder_).filePath(fileName);
    if (!QFile::exists(path))
        return;
    const Result<QByteArray> bytes = BoundedFile::read(path, largestFile);
    const PropertyList::ReadResult list = bytes ? PropertyList::read(*bytes) : PropertyList::ReadResult();
    if (!list) {
        qCWarning(lcFolders) << path << (bytes ? list.error : bytes.error);
        return;
    }
    const QVariantList values = list.value->toList();
    for (const QVariant &value : values) {
        const QString folder = value.toString();
        if (QDir::isAbsolutePath(folder) && folders_.size() < mostKept)
            folders_.append(folder);
    }
}

void RecentFolders::add(const QStringList &folders)
{
    const QStringList before = folders_;
    for (const QString &folder : folders.last(std::min(folders.size(), mostKept))) {
        folders_.removeAll(folder);
        folders_.prepend(folder);
    }
    folders_ = folders_.mid(0, mostKept);
    if (folders_ != before)
        write();
}

QStringList RecentFolders::existing() const
{
    QStringList found;
    for (const QString &folder : folders_) {
        if (found.size() < mostShown && QFileInfo(folder).isDir())
            found.append(folder);
    }
    return found;
}

void RecentFolders::write() const
{
    const PropertyList::WriteResult list =
        PropertyList::write(QVariantList(folders_.begin(), folders_.end()), PropertyList::Form::Binary);
    const DurableFileWriter writer;
    Result<> written = Result<>::failure(list.error);
    if (list)
        written = writer.makeFolder(folder_);
    if (written) {
        const QString path = QDir(folder_).filePath(fileName);
        // Only the one running helper writes here.
        writer.removeStrayTemporaries(path);
        written = writer.write(path, *list.bytes);
    }
    if (!written)
        qCWarning(lcFolders) << "not remembered:" << written.error;
}
