// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/FileManagerWithFiles.h"

#include "ContextMenu/Outcome.h"
#include "Platform/Files/BoundedFile.h"

#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <sys/stat.h>

namespace {

/// One of ours has a few kilobytes.
constexpr qint64 largestFile = qint64(64) << 20;

/// What is at a path, as far as it matters here.
struct Present
{
    bool isThere = false;
    /// None if that cannot be read: it is not what we wrote.
    std::optional<QByteArray> content;

    bool isOneOf(const QStringList &hashes) const
    {
        return content && hashes.contains(Manifest::hashOf(*content));
    }
};

Present present(const QString &path)
{
    const QFileInfo information(path);
    if (!information.exists() && !information.isSymLink())
        return {};
    return {true, BoundedFile::read(path, largestFile).value};
}

QString leftAlone(const QString &path)
{
    return QStringLiteral("%1 was changed since it was written, and is left alone").arg(path);
}

} // namespace

bool FileManagerWithFiles::hasEntries(const Manifest &manifest) const
{
    const QStringList paths = manifest.entries(program()).files.keys();
    return std::any_of(paths.begin(), paths.end(),
                       [](const QString &path) { return QFileInfo::exists(path); });
}

Result<QStringList> FileManagerWithFiles::write(const PresetMenu &menu, Manifest &manifest) const
{
    return synchronize(files(menu), manifest);
}

Result<QStringList> FileManagerWithFiles::remove(Manifest &manifest) const
{
    Result<QStringList> result = synchronize({}, manifest);
    if (result)
        manifest.removeEntries(program());
    return result;
}

Result<QStringList> FileManagerWithFiles::synchronize(const QList<File> &files, Manifest &manifest) const
{
    const Manifest::Entries before = manifest.entries(program());
    Manifest::Entries after;
    Outcome outcome;

    // Whatever happens from here on, what we write is known.
    Manifest::Entries meanwhile = before;
    QList<File> changed;
    for (const File &file : files) {
        const QString hash = Manifest::hashOf(file.content);
        const Present current = present(file.path);
        if (current.isThere && current.content != file.content &&
            !current.isOneOf(before.files.value(file.path))) {
            outcome.remark(leftAlone(file.path));
            if (before.files.contains(file.path))
                after.files.insert(file.path, before.files.value(file.path));
            continue;
        }
        after.files.insert(file.path, {hash});
        QStringList &hashes = meanwhile.files[file.path];
        if (!hashes.contains(hash))
            hashes.append(hash);
        manifest.noteMissingFolders(QFileInfo(file.path).path());
        if (current.content != file.content)
            changed.append(file);
    }
    manifest.setEntries(program(), meanwhile);
    if (Result<> saved = manifest.save(); !saved)
        return Result<QStringList>::failure(saved.error);

    const DurableFileWriter writer;
    for (const File &file : std::as_const(changed)) {
        Result<> written = writer.makeFolder(QFileInfo(file.path).path());
        if (written) {
            writer.removeStrayTemporaries(file.path);
            const int mode = file.isExecutable ? S_IRWXU : S_IRUSR | S_IWUSR;
            written = writer.write(file.path, file.content, {.newFileMode = mode});
        }
        // It may hold either content now.
        if (!written)
            after.files[file.path] = meanwhile.files.value(file.path);
        outcome.add(written);
    }
    for (auto old = before.files.begin(); old != before.files.end(); ++old) {
        if (after.files.contains(old.key()))
            continue;
        writer.removeStrayTemporaries(old.key());
        const Present current = present(old.key());
        if (!current.isThere)
            continue;
        if (!current.isOneOf(old.value())) {
            outcome.remark(leftAlone(old.key()));
            continue;
        }
        const Result<> removed = writer.remove(old.key());
        if (!removed)
            after.files.insert(old.key(), old.value());
        outcome.add(removed);
    }
    manifest.setEntries(program(), after);
    manifest.removeEmptyFolders();
    outcome.add(manifest.save());
    return outcome.result();
}
