// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptApprovals.h"

#include "Helper/Presets.h"
#include "Helper/ScriptFile.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/FileLock.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Source/Model/QNBFolderMenu.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>
#include <QLoggingCategory>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcApprovals, "quenby.helper.approvals")

const QString approvalsFile = QStringLiteral("AllowedScripts.plist");
const QString lockSuffix = QStringLiteral(".lock");
/// In the pane's resources.
const QString shippedScripts = QStringLiteral("QNB Default AppSupport/Scripts");

/// A line each; nobody allows as many.
constexpr qint64 largestFile = qint64(4) * 1024 * 1024;
/// In milliseconds.
constexpr int lockTimeout = 2000;

QString digestOf(const QByteArray &content)
{
    return QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
}

/// By digest, the time at which it was allowed. Empty if there is no such file yet; none if it cannot be
/// read.
std::optional<QVariantMap> readApprovals(const QString &path)
{
    if (!QFileInfo::exists(path))
        return QVariantMap();
    const Result<QByteArray> bytes = BoundedFile::read(path, largestFile);
    const PropertyList::ReadResult result = bytes ? PropertyList::read(*bytes) : PropertyList::ReadResult();
    if (result && result.value->typeId() == QMetaType::QVariantMap)
        return result.value->toMap();
    qCWarning(lcApprovals) << "no script counts as allowed:" << path << bytes.error << result.error;
    return std::nullopt;
}

} // namespace

ScriptApprovals::ScriptApprovals()
    : ScriptApprovals(DesktopFolders::stateFolder(), paneBundle())
{
}

ScriptApprovals::ScriptApprovals(QString folder, std::optional<Bundle> pane)
    : folder_(std::move(folder))
    , pane_(std::move(pane))
{
}

QString ScriptApprovals::path() const
{
    return folder_ + u'/' + approvalsFile;
}

bool ScriptApprovals::isShipped(const QByteArray &content) const
{
    if (!pane_)
        return false;
    QDirIterator walk(pane_->resourcePath() + u'/' + shippedScripts, QDir::Files,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString script = walk.next();
        if (QFileInfo(script).size() == content.size() &&
            BoundedFile::read(script, ScriptFile::largest).value == content)
            return true;
    }
    return false;
}

bool ScriptApprovals::isAllowed(const QByteArray &content) const
{
    return isShipped(content) || readApprovals(path()).value_or(QVariantMap()).contains(digestOf(content));
}

Result<> ScriptApprovals::allow(const QByteArray &content) const
{
    const DurableFileWriter writer;
    if (folder_.isEmpty())
        return Result<>::failure(QStringLiteral("there is no folder for the program's state"));
    if (Result<> made = writer.makeFolder(folder_); !made)
        return made;
    const Result<FileLock> lock = FileLock::acquire(FileLayer::real(), path() + lockSuffix, lockTimeout);
    if (!lock)
        return Result<>::failure(lock.error);
    writer.removeStrayTemporaries(path());
    QVariantMap approvals = readApprovals(path()).value_or(QVariantMap());
    approvals.insert(digestOf(content), QDateTime::currentDateTimeUtc());
    const PropertyList::WriteResult bytes = PropertyList::write(approvals, PropertyList::Form::XML);
    return bytes ? writer.write(path(), *bytes.bytes) : Result<>::failure(bytes.error);
}
