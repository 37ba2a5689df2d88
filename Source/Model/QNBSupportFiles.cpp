// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBSupportFiles.h"

#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileOperations.h"
#include "Platform/LineText.h"
#include "Source/Model/QNBFolderMenu.h"
#include "Source/Model/QNBPresetRecord.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <vector>

#include <sys/stat.h>

namespace {

/// A template or a script is a page or two.
constexpr qint64 largestFile = qint64(64) * 1024 * 1024;

void appendOnce(QStringList &paths, const QString &folder, const QString &name)
{
    const QString path = folder + u'/' + name;
    if (!name.isEmpty() && !paths.contains(path))
        paths << path;
}

/// Whether \a path leads down from where it begins, part by part.
bool leadsDown(const QString &path)
{
    const QStringList parts = path.split(u'/');
    return !path.contains(QChar(u'\0')) && std::none_of(parts.begin(), parts.end(), [](const QString &part) {
        return part.isEmpty() || part == u"." || part == u"..";
    });
}

/// The folder above \a path, and those above that below \a root, that is a link; empty if none is.
QString linkAbove(const QString &path, const QString &root)
{
    for (QString folder = QFileInfo(path).path(); folder.size() > root.size();
         folder = QFileInfo(folder).path()) {
        if (QFileInfo(folder).isSymLink())
            return folder;
    }
    return {};
}

Result<> copyIfMissing(const QString &path, const QString &defaults, const QString &supportPath,
                       FileLayer &layer)
{
    if (!leadsDown(path))
        return Result<>::failure(QStringLiteral("the path leads out of the folder"));
    const QString target = supportPath + u'/' + path;
    if (FileOperations::exists(QFile::encodeName(target)))
        return {};
    if (const QString link = linkAbove(target, supportPath); !link.isEmpty())
        return Result<>::failure(QStringLiteral("%1 is a link").arg(link));

    const QString original = defaults + u'/' + path;
    const Result<QByteArray> bytes = BoundedFile::read(original, largestFile);
    struct stat information = {};
    if (!bytes || ::stat(QFile::encodeName(original).constData(), &information) != 0)
        return Result<>::failure(bytes ? QStringLiteral("%1 is gone").arg(original) : bytes.error);
    const DurableFileWriter writer(&layer);
    if (Result<> made = writer.makeFolder(QFileInfo(target).path()); !made)
        return made;
    const Result<bool> written =
        writer.writeIfFree(target, *bytes, static_cast<int>((information.st_mode & ACCESSPERMS) | S_IWUSR));
    return written ? Result<>() : Result<>::failure(written.error);
}

} // namespace

QStringList QNBSupportFiles::namedBy(const QNBPresetRecord &preset)
{
    QStringList paths;
    std::vector<const QNBHierarchyItem *> pending{preset.fileHierarchy().get()};
    while (!pending.empty()) {
        const QNBHierarchyItem *item = pending.back();
        pending.pop_back();
        if (!item)
            continue;
        if (!item->isDirectory())
            appendOnce(paths, QNBFolderMenu::fileContentFolder, item->contentFilename());
        for (auto child = item->children().crbegin(); child != item->children().crend(); ++child)
            pending.push_back(child->get());
    }
    appendOnce(paths, QNBFolderMenu::scriptsFolder, preset.valueForKey(QNBPresetKey::scriptFile).toString());
    return paths;
}

Result<> QNBSupportFiles::copyMissing(const QStringList &paths, const QString &defaults,
                                      const QString &supportPath, FileLayer &layer)
{
    QStringList failures;
    for (const QString &path : paths) {
        if (const Result<> copied = copyIfMissing(path, defaults, supportPath, layer); !copied)
            failures << lineText(QStringLiteral("%1: %2").arg(path, copied.error));
    }
    return failures.isEmpty() ? Result<>() : Result<>::failure(failures.join(u'\n'));
}
