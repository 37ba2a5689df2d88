// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBRecoveryFile.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/DurableFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutexLocker>
#include <QRandomGenerator>

#include <algorithm>
#include <iterator>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcRecovery, "quenby.recovery")

const QString contentSuffix = QStringLiteral(".plist");
const QString lockSuffix = QStringLiteral(".lock");

QString lockPathOf(const QString &path)
{
    return path.chopped(contentSuffix.size()) + lockSuffix;
}

/// By who holds the lock.
Result<> removeWithLock(FileLayer &layer, const QString &path)
{
    Result<> removed = DurableFileWriter(&layer).remove(path);
    // Nobody uses this name again.
    if (removed)
        layer.unlink(QFile::encodeName(lockPathOf(path)));
    return removed;
}

} // namespace

QNBRecoveryFile::QNBRecoveryFile(const QString &folder, FileLayer *layer)
    : folder_(folder)
    , layer_(layer ? *layer : FileLayer::real())
{
    thread_.setMaxThreadCount(1);
}

QNBRecoveryFile::~QNBRecoveryFile()
{
    finish();
}

void QNBRecoveryFile::write(QNBSettingsSnapshot settings, std::vector<QNBLeftRecovery> superseded)
{
    if (folder_.isEmpty())
        return;
    isUsed_ = true;
    give(std::make_shared<const QNBSettingsSnapshot>(std::move(settings)), std::move(superseded));
}

void QNBRecoveryFile::remove(std::vector<QNBLeftRecovery> superseded)
{
    if (std::exchange(isUsed_, false) || !superseded.empty())
        give(Removal(), std::move(superseded));
}

void QNBRecoveryFile::give(Order order, std::vector<QNBLeftRecovery> superseded)
{
    const QMutexLocker locker(&mutex_);
    const bool isAwaited = !std::holds_alternative<std::monostate>(order_);
    order_ = std::move(order);
    std::move(superseded.begin(), superseded.end(), std::back_inserter(supersededByOrder_));
    if (!isAwaited)
        thread_.start([this] { obey(); });
}

void QNBRecoveryFile::obey()
{
    Order order;
    {
        const QMutexLocker locker(&mutex_);
        std::swap(order, order_);
        std::move(supersededByOrder_.begin(), supersededByOrder_.end(), std::back_inserter(superseded_));
        supersededByOrder_.clear();
    }
    const auto *settings = std::get_if<std::shared_ptr<const QNBSettingsSnapshot>>(&order);
    if (const Result<> result = settings ? writeNow(**settings) : removeNow(); !result) {
        qCWarning(lcRecovery) << "unsaved changes:" << result.error;
        Q_EMIT failed(result.error);
        return;
    }
    for (QNBLeftRecovery &left : superseded_) {
        if (const Result<> removed = left.discard(); !removed)
            qCWarning(lcRecovery) << "restored changes:" << removed.error;
    }
    superseded_.clear();
}

Result<> QNBRecoveryFile::writeNow(const QNBSettingsSnapshot &settings)
{
    const EncodedPreference encoded = QNBSettingsStore::encode(settings);
    const PropertyList::WriteResult content = encoded.writer.finish(encoded.top);
    if (!content)
        return Result<>::failure(content.error);
    if (Result<> prepared = prepare(); !prepared)
        return prepared;
    return DurableFileWriter(&layer_).write(path_, *content.bytes);
}

Result<> QNBRecoveryFile::removeNow()
{
    if (!lock_)
        return {};
    Result<> removed = removeWithLock(layer_, path_);
    if (removed)
        lock_.reset();
    return removed;
}

Result<> QNBRecoveryFile::prepare()
{
    if (lock_)
        return {};
    if (DesktopFolders::isOthers(folder_))
        return Result<>::failure(QStringLiteral("%1 is in the home of another user").arg(folder_));
    if (Result<> made = DurableFileWriter(&layer_).makeFolder(folder_); !made)
        return made;
    const QString name = QString::number(QRandomGenerator::system()->generate64(), 16) + contentSuffix;
    const QString path = QDir(folder_).filePath(name);
    // Whoever looks for what was left may have it for a moment.
    constexpr int patience = 1000;
    Result<FileLock> lock = FileLock::acquire(layer_, lockPathOf(path), patience);
    if (!lock)
        return Result<>::failure(lock.error);
    lock_.emplace(std::move(*lock));
    path_ = path;
    return {};
}

QNBLeftRecovery::QNBLeftRecovery(FileLayer &layer, QString path, const struct stat &information,
                                 FileLock lock)
    : layer_(&layer)
    , path_(std::move(path))
    , settings_(Result<QNBSettings>::failure(QStringLiteral("%1 is no file of yours").arg(path_)))
    , lock_(std::make_unique<FileLock>(std::move(lock)))
{
    if (S_ISREG(information.st_mode) && information.st_uid == ::geteuid()) {
        const Result<QByteArray> bytes = BoundedFile::read(path_, PropertyList::Limits::inputSize);
        QString error = bytes.error;
        const PropertyListDocument::Ptr document =
            bytes ? PropertyListDocument::parse(*bytes, &error) : nullptr;
        settings_ = document ? QNBSettingsStore::decode(document) : Result<QNBSettings>::failure(error);
        if (document)
            taken_ = QNBSettingsStore::takenAt(document);
    }
    if (!taken_.isValid())
        taken_ = QDateTime::fromMSecsSinceEpoch(qint64(information.st_mtim.tv_sec) * 1000 +
                                                information.st_mtim.tv_nsec / 1'000'000);
}

std::vector<QNBLeftRecovery> QNBLeftRecovery::allIn(const QString &folder, FileLayer *given)
{
    FileLayer &layer = given ? *given : FileLayer::real();
    std::vector<QNBLeftRecovery> found;
    if (folder.isEmpty() || DesktopFolders::isOthers(folder))
        return found;
    std::set<QString> paths;
    for (const QByteArray &entry : layer.entries(QFile::encodeName(folder)).value_or(QList<QByteArray>())) {
        const QString path = QDir(folder).filePath(QFile::decodeName(entry));
        for (const QString &suffix : {contentSuffix, lockSuffix}) {
            if (path.endsWith(suffix))
                paths.insert(path.chopped(suffix.size()) + contentSuffix);
        }
    }
    for (const QString &path : paths) {
        Result<FileLock> lock = FileLock::acquire(layer, lockPathOf(path), 0);
        if (!lock)
            continue;
        DurableFileWriter(&layer).removeStrayTemporaries(path);
        struct stat information = {};
        if (layer.lstat(QFile::encodeName(path), &information) == 0)
            found.push_back({layer, path, information, std::move(*lock)});
        else
            layer.unlink(QFile::encodeName(lockPathOf(path)));
    }
    std::stable_sort(
        found.begin(), found.end(),
        [](const QNBLeftRecovery &one, const QNBLeftRecovery &other) { return one.taken_ > other.taken_; });
    return found;
}

Result<> QNBLeftRecovery::discard()
{
    return removeWithLock(*layer_, path_);
}
