// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileCatalog.h"

#include "Platform/Files/FileLayer.h"
#include "Platform/LineText.h"

#include <QFile>
#include <QList>
#include <QLoggingCategory>
#include <QMutex>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <linux/limits.h>
#include <sys/xattr.h>

namespace {

Q_LOGGING_CATEGORY(lcFileCatalog, "quenby.platform.filecatalog")

/// Once for each reason: whoever labels a thousand files on a disk that holds no attributes wants to know
/// why, but not a thousand times.
void report(const QString &doing, const QByteArray &path, int errorNumber)
{
    static QMutex mutex;
    static QSet<int> reported;
    const QMutexLocker locker(&mutex);
    if (reported.contains(errorNumber))
        return;
    reported.insert(errorNumber);
    qCWarning(lcFileCatalog).noquote()
        << lineText(systemError(doing.arg(QFile::decodeName(path)), errorNumber)) << "(not reported again)";
}

bool isDots(const QByteArray &component)
{
    return component == "." || component == "..";
}

QByteArray joined(const QList<QByteArray> &components)
{
    return '/' + components.join('/');
}

/// The path whose last component is the entry's own name. Dots are followed as the system does, which is not
/// the same as striking them out where links are on the way.
std::optional<QByteArray> ownPath(const QByteArray &path)
{
    if (!path.startsWith('/') || path.contains('\0'))
        return {};
    QList<QByteArray> components = path.split('/');
    components.removeAll(QByteArray());
    if (std::none_of(components.cbegin(), components.cend(), isDots))
        return joined(components);
    if (isDots(components.constLast()))
        return FileLayer::real().realpath(path);
    const QByteArray name = components.takeLast();
    const auto folder = FileLayer::real().realpath(joined(components));
    if (!folder)
        return {};
    return folder->endsWith('/') ? *folder + name : *folder + '/' + name;
}

std::optional<QByteArray> readAttribute(const QByteArray &path)
{
    QByteArray bytes(FinderInfo::attributeSize, Qt::Uninitialized);
    ssize_t size = ::lgetxattr(path.constData(), FileCatalog::finderInfoAttribute, bytes.data(),
                               static_cast<size_t>(bytes.size()));
    if (size == -1 && errno == ERANGE) {
        bytes.resize(XATTR_SIZE_MAX);
        size = ::lgetxattr(path.constData(), FileCatalog::finderInfoAttribute, bytes.data(),
                           static_cast<size_t>(bytes.size()));
    }
    if (size == -1 && errno == ENODATA)
        return QByteArray();
    if (size == -1)
        return {};
    bytes.truncate(size);
    return bytes;
}

} // namespace

QByteArray FSRef::folder() const
{
    return path.left(std::max<qsizetype>(path.lastIndexOf('/'), 1));
}

QByteArray FSRef::name() const
{
    return path.mid(path.lastIndexOf('/') + 1);
}

std::optional<FSRef> FileCatalog::reference(const QByteArray &path)
{
    const auto own = ownPath(path);
    struct stat information = {};
    if (!own || FileLayer::real().lstat(*own, &information) == -1)
        return {};
    return FSRef{information.st_dev, information.st_ino, information.st_mode & S_IFMT, *own};
}

bool FileCatalog::exists(const FSRef &reference)
{
    struct stat information = {};
    return FileLayer::real().lstat(reference.path, &information) != -1 &&
           information.st_dev == reference.device && information.st_ino == reference.number;
}

std::optional<FSSpec> FileCatalog::fileSpec(const FSRef &reference)
{
    struct stat folder = {};
    if (!exists(reference) || FileLayer::real().stat(reference.folder(), &folder) == -1)
        return {};
    const QByteArray name = reference.name();
    return FSSpec{folder.st_dev, folder.st_ino, name.isEmpty() ? rootVolumeName.toUtf8() : name};
}

std::optional<FSRef> FileCatalog::resolveAlias(const FSRef &reference)
{
    if (!exists(reference))
        return {};
    if (!reference.isLink())
        return reference;
    const auto target = FileLayer::real().realpath(reference.path);
    return target ? FileCatalog::reference(*target) : std::nullopt;
}

std::optional<FinderInfo> FileCatalog::finderInfo(const FSRef &reference)
{
    if (!exists(reference))
        return {};
    const auto attribute = readAttribute(reference.path);
    if (!attribute) {
        report(QStringLiteral("cannot read the file manager's information of %1"), reference.path, errno);
        return {};
    }
    return FinderInfo(*attribute);
}

bool FileCatalog::setFinderInfo(const FSRef &reference, const FinderInfo &information)
{
    if (!exists(reference))
        return false;
    const QByteArray attribute = information.attribute();
    if (::lsetxattr(reference.path.constData(), finderInfoAttribute, attribute.constData(),
                    static_cast<size_t>(attribute.size()), 0) == -1) {
        report(QStringLiteral("cannot write the file manager's information of %1"), reference.path, errno);
        return false;
    }
    return true;
}
