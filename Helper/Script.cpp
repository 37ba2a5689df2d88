// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Script.h"

#include "Platform/BoundedFile.h"
#include "Platform/Bundle.h"
#include "Platform/FileDescriptor.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// What a bundle may hold at most, to be hashed without anybody waiting for it.
constexpr qsizetype mostBundleEntries = 10000;
constexpr qint64 largestBundle = qint64(256) * 1024 * 1024;

QString tr(const char *text)
{
    return QCoreApplication::translate("Script", text);
}

bool isBelow(const QString &path, const QString &folder)
{
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    const auto isSameTime = [](const timespec &left, const timespec &right) {
        return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
    };
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
           one.st_mode == other.st_mode && isSameTime(one.st_mtim, other.st_mtim) &&
           isSameTime(one.st_ctim, other.st_ctim);
}

/// The bytes of the file at \a path, and what it was both before and after they were read.
std::optional<QByteArray> readUnchanged(const QString &path, struct stat *status, QString *error)
{
    FileLayer &layer = FileLayer::real();
    const FileDescriptor file(layer, layer.open(QFile::encodeName(path), O_RDONLY | O_NONBLOCK | O_NOFOLLOW));
    if (!file.isOpen() || layer.fstat(file.get(), status) == -1) {
        *error = qt_error_string(errno);
        return std::nullopt;
    }
    // That very file, whatever the path has come to mean by now.
    std::optional<QByteArray> bytes = BoundedFile::read(
        QByteArray("/proc/self/fd/") + QByteArray::number(file.get()), Script::largestContent, error);
    struct stat after = {};
    if (bytes && (layer.fstat(file.get(), &after) == -1 || !isSameFile(*status, after))) {
        *error = tr("it is being written to");
        return std::nullopt;
    }
    return bytes;
}

/// In one line, from which the name can be told.
QByteArray lineOf(const QString &name)
{
    return QFile::encodeName(name).replace('%', "%25").replace('\n', "%0A");
}

/// One line for each entry of the bundle, sorted: digest, whether it can be executed, path.
std::optional<QByteArray> bundleContents(const QString &bundle, QString *error)
{
    QByteArrayList lines;
    qint64 size = 0;
    QDirIterator walk(bundle, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        const QFileInfo entry = walk.fileInfo();
        QByteArray description;
        if (entry.isSymLink()) {
            description = "-> " + lineOf(entry.symLinkTarget());
        } else if (entry.isDir()) {
            continue;
        } else {
            struct stat status = {};
            const std::optional<QByteArray> bytes = readUnchanged(entry.filePath(), &status, error);
            if (!bytes)
                return std::nullopt;
            size += bytes->size();
            description = QCryptographicHash::hash(*bytes, QCryptographicHash::Sha256).toHex() +
                          ((status.st_mode & S_IXUSR) ? " x" : " -");
        }
        lines.append(description + ' ' + lineOf(QDir(bundle).relativeFilePath(entry.filePath())));
        if (lines.size() > mostBundleEntries || size > largestBundle) {
            *error = tr("there is too much in the bundle");
            return std::nullopt;
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines.join('\n') + '\n';
}

} // namespace

std::optional<Script> Script::find(const QString &name, const QString &scriptsFolder, QString *error)
{
    const auto fail = [&name, error](const QString &reason) {
        *error = tr("The script \"%1\" cannot be used: %2").arg(name, reason);
        return std::nullopt;
    };
    const QString folder = QFileInfo(scriptsFolder).canonicalFilePath();
    const bool isName = !folder.isEmpty() && !name.contains(QChar::Null);
    const QFileInfo file(isName ? QFileInfo(folder + u'/' + name).canonicalFilePath() : QString());
    if (!file.exists())
        return fail(tr("it does not exist"));
    if (!isBelow(file.filePath(), folder))
        return fail(tr("it is outside the folder %1").arg(folder));

    Script script;
    script.path_ = file.filePath();
    if (file.isDir()) {
        const std::optional<Bundle> bundle = Bundle::bundleWithPath(file.filePath());
        script.path_ = bundle ? QFileInfo(bundle->executablePath()).canonicalFilePath() : QString();
        if (script.path_.isEmpty())
            return fail(tr("it is a folder without a program"));
        if (!isBelow(script.path_, file.filePath()))
            return fail(tr("its program is outside the folder %1").arg(file.filePath()));
        script.bundlePath_ = file.filePath();
    }
    if (!QFileInfo(script.path_).isFile() ||
        ::eaccess(QFile::encodeName(script.path_).constData(), X_OK) == -1)
        return fail(tr("it is not executable"));

    QString reason;
    std::optional<QByteArray> content = readUnchanged(script.path_, &script.status_, &reason);
    if (content && !script.bundlePath_.isEmpty())
        content = bundleContents(script.bundlePath_, &reason);
    if (!content)
        return fail(reason);
    script.content_ = *content;
    return script;
}

bool Script::isText() const
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(content_);
    return !decoder.hasError() && !text.contains(QChar::Null);
}

QString Script::shownContent() const
{
    QString shown;
    const auto characters = QString::fromUtf8(content_).toUcs4();
    for (const char32_t character : characters) {
        const bool isSeparator = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (character == U'\n' || character == U'\t' || (QChar::isPrint(character) && !isSeparator))
            shown += QStringView(QChar::fromUcs4(character));
        else
            shown += QStringLiteral("<U+%1>").arg(uint(character), 4, 16, QLatin1Char('0')).toUpper();
    }
    return shown;
}

bool Script::isUnchanged() const
{
    struct stat now = {};
    if (FileLayer::real().lstat(QFile::encodeName(path_), &now) == -1 || !isSameFile(status_, now))
        return false;
    QString error;
    return bundlePath_.isEmpty() || bundleContents(bundlePath_, &error) == content_;
}

ScriptResult Script::run(const QString &target, const QString &label, const ScriptLimits &limits) const
{
    if (!isUnchanged()) {
        ScriptResult result;
        result.outcome = ScriptResult::Outcome::CouldNotStart;
        result.error = tr("it was changed meanwhile");
        return result;
    }
    const QByteArray folder = QFile::encodeName(target);
    return ScriptProcess::run(QFile::encodeName(path_), {folder, label.toUtf8()}, folder, limits);
}
