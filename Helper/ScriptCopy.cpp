// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptCopy.h"

#include "Helper/ScriptFile.h"
#include "Platform/Desktop/DesktopFolders.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <utility>

namespace {

/// What a bundle may hold at most, to be hashed without anybody waiting for it.
constexpr qsizetype mostEntries = 10000;
constexpr qint64 largestBundle = qint64(256) * 1024 * 1024;

const QString folderTemplate = QStringLiteral("/quenby-script-XXXXXX");

QString tr(const char *text)
{
    return QCoreApplication::translate("Script", text);
}

/// In one line, from which the name can be told.
QByteArray lineOf(const QString &name)
{
    return QFile::encodeName(name).replace('%', "%25").replace('\n', "%0A");
}

/// Where the links at \a path lead in the end; empty if that is nowhere.
QString pathOfEnd(const QString &path)
{
    std::error_code error;
    return QFile::decodeName(
        std::filesystem::canonical(QFile::encodeName(path).toStdString(), error).c_str());
}

bool canRunPrograms(const QString &folder)
{
    struct statvfs system = {};
    return ::statvfs(QFile::encodeName(folder).constData(), &system) == 0 && !(system.f_flag & ST_NOEXEC);
}

Result<> writeNew(const QString &path, const QByteArray &bytes, bool isExecutable)
{
    QFile file(path);
    // Asked for as a whole: what is written must not be cut short on a full disk.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered) ||
        file.write(bytes) != bytes.size() ||
        ::fchmod(file.handle(), isExecutable ? S_IRUSR | S_IXUSR : S_IRUSR) == -1)
        return Result<>::failure(tr("it cannot be copied: %1").arg(file.errorString()));
    return {};
}

/// Walks through a bundle, describes it, and copies it on the way if it is to.
class BundleWalk
{
public:
    /// \a copy is an empty folder; without a name nothing is copied.
    BundleWalk(const QString &bundle, const QString &copy)
        : bundle_(bundle)
        , copy_(copy)
    {
    }

    Result<QByteArray> run()
    {
        QDirIterator walk(bundle_, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            walk.next();
            if (const Result<> visited = visit(walk.fileInfo()); !visited)
                return Result<QByteArray>::failure(visited.error);
            if (lines_.size() > mostEntries || size_ > largestBundle)
                return Result<QByteArray>::failure(tr("there is too much in the bundle"));
        }
        const QString &walked = copy_.isEmpty() ? bundle_ : copy_;
        for (const QString &link : std::as_const(links_)) {
            if (!pathOfEnd(walked + u'/' + link).startsWith(pathOfEnd(walked) + u'/'))
                return Result<QByteArray>::failure(
                    tr("a link in the bundle leads out of it, or nowhere: %1").arg(link));
        }
        std::sort(lines_.begin(), lines_.end());
        return lines_.join('\n') + '\n';
    }

private:
    Result<> visit(const QFileInfo &entry)
    {
        const QString path = QDir(bundle_).relativeFilePath(entry.filePath());
        if (entry.isSymLink())
            return visitLink(entry, path);
        if (entry.isDir()) {
            if (!copy_.isEmpty() && !QDir(copy_).mkpath(path))
                return Result<>::failure(tr("it cannot be copied: %1").arg(qt_error_string(errno)));
            return {};
        }
        const Result<ScriptFile> file = ScriptFile::read(entry.filePath());
        if (!file)
            return Result<>::failure(file.error);
        size_ += file->content.size();
        lines_.append(QCryptographicHash::hash(file->content, QCryptographicHash::Sha256).toHex() +
                      (file->isExecutable ? " x " : " - ") + lineOf(path));
        return copy_.isEmpty() ? Result<>()
                               : writeNew(copy_ + u'/' + path, file->content, file->isExecutable);
    }

    Result<> visitLink(const QFileInfo &entry, const QString &path)
    {
        std::error_code error;
        const std::filesystem::path target =
            std::filesystem::read_symlink(QFile::encodeName(entry.filePath()).toStdString(), error);
        if (!error && target.is_absolute())
            return Result<>::failure(tr("a link in the bundle leads out of it, or nowhere: %1").arg(path));
        if (!error && !copy_.isEmpty())
            std::filesystem::create_symlink(target, QFile::encodeName(copy_ + u'/' + path).toStdString(),
                                            error);
        if (error)
            return Result<>::failure(QString::fromStdString(error.message()));
        links_.append(path);
        lines_.append("-> " + lineOf(QFile::decodeName(target.c_str())) + ' ' + lineOf(path));
        return {};
    }

    const QString bundle_;
    const QString copy_;
    QByteArrayList lines_;
    QStringList links_;
    qint64 size_ = 0;
};

} // namespace

ScriptCopy::ScriptCopy(std::unique_ptr<QTemporaryDir> folder, const QString &name)
    : folder_(std::move(folder))
    , path_(QFileInfo(folder_->path()).canonicalFilePath() + u'/' + name)
{
}

Result<ScriptCopy> ScriptCopy::empty(const QString &name)
{
    QString error = tr("there is no folder from which programs can be run");
    for (const QString &place : {DesktopFolders::runtimeDirectory(), DesktopFolders::stateFolder()}) {
        if (place.isEmpty() || !QDir().mkpath(place) || !canRunPrograms(place))
            continue;
        // Made for this user alone.
        auto folder = std::make_unique<QTemporaryDir>(place + folderTemplate);
        if (folder->isValid())
            return ScriptCopy(std::move(folder), name);
        error = folder->errorString();
    }
    return Result<ScriptCopy>::failure(tr("it cannot be copied: %1").arg(error));
}

Result<ScriptCopy> ScriptCopy::ofFile(const QByteArray &content, const QString &name)
{
    Result<ScriptCopy> copy = empty(name);
    if (!copy)
        return copy;
    if (const Result<> written = writeNew(copy->path(), content, true); !written)
        return Result<ScriptCopy>::failure(written.error);
    return copy;
}

Result<ScriptCopy> ScriptCopy::ofBundle(const QString &bundle, const QByteArray &description)
{
    Result<ScriptCopy> copy = empty(QFileInfo(bundle).fileName());
    if (!copy)
        return copy;
    if (!QDir().mkdir(copy->path()))
        return Result<ScriptCopy>::failure(tr("it cannot be copied: %1").arg(qt_error_string(errno)));
    const Result<QByteArray> copied = BundleWalk(bundle, copy->path()).run();
    if (!copied)
        return Result<ScriptCopy>::failure(copied.error);
    if (*copied != description)
        return Result<ScriptCopy>::failure(tr("it was changed meanwhile"));
    return copy;
}

Result<QByteArray> ScriptCopy::descriptionOf(const QString &bundle)
{
    return BundleWalk(bundle, {}).run();
}
