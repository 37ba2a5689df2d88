// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/NSURL+TQCarbonUtilities.h"

#include "Platform/Files/FileURL.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

constexpr QChar slash = u'/';
constexpr QChar colon = u':';

std::optional<FSRef> referenceOf(const QUrl &url)
{
    const auto path = pathOfFileURL(url);
    return path ? FileCatalog::reference(*path) : std::nullopt;
}

std::optional<FinderInfo> finderInfoOf(const QUrl &url)
{
    const auto reference = referenceOf(url);
    return reference ? FileCatalog::finderInfo(*reference) : std::nullopt;
}

/// Reads, lets \a change do its work and writes back.
template <typename Change>
bool changeFinderInfo(const QUrl &url, Change change)
{
    const auto reference = referenceOf(url);
    auto information = reference ? FileCatalog::finderInfo(*reference) : std::nullopt;
    if (!information)
        return false;
    change(*information);
    return FileCatalog::setFinderInfo(*reference, *information);
}

/// From one style to the other, both ways.
QString withSlashesAndColonsSwapped(QString path)
{
    for (QChar &character : path) {
        if (character == slash)
            character = colon;
        else if (character == colon)
            character = slash;
    }
    return path;
}

/// Whether each component of the absolute \a path names an entry of the folder before it; what follows a
/// slash at the end is no component.
bool consistsOfNames(const QString &path)
{
    QStringList components = path.sliced(1).split(slash);
    if (components.constLast().isEmpty())
        components.removeLast();
    return std::none_of(components.cbegin(), components.cend(),
                        [](const QString &name) { return name.isEmpty() || name == u"." || name == u".."; });
}

std::optional<qint16> wholeCoordinate(qreal coordinate)
{
    if (std::isnan(coordinate))
        return {};
    using Limits = std::numeric_limits<qint16>;
    return static_cast<qint16>(std::clamp<qreal>(std::trunc(coordinate), Limits::min(), Limits::max()));
}

} // namespace

bool getFSRef(const QUrl &url, FSRef &reference)
{
    const auto found = referenceOf(url);
    if (found)
        reference = *found;
    return found.has_value();
}

bool getFSSpec(const QUrl &url, FSSpec &fileSpec)
{
    const auto reference = referenceOf(url);
    const auto found = reference ? FileCatalog::fileSpec(*reference) : std::nullopt;
    if (found)
        fileSpec = *found;
    return found.has_value();
}

QUrl URLWithFSRef(const FSRef &reference)
{
    return FileCatalog::exists(reference) ? fileURLOfPath(reference.path) : QUrl();
}

QUrl URLByDeletingLastPathComponent(const QUrl &url)
{
    const auto reference = referenceOf(url);
    if (!reference || reference->name().isEmpty())
        return {};
    return fileURLOfPath(reference->folder());
}

QString fileSystemPathHFSStyle(const QUrl &url)
{
    const auto reference = referenceOf(url);
    if (!reference)
        return {};
    QString path = QString::fromUtf8(reference->path);
    if (path.toUtf8() != reference->path)
        return {};
    if (reference->isFolder() && !path.endsWith(slash))
        path += slash;
    return FileCatalog::rootVolumeName.toString() + withSlashesAndColonsSwapped(path);
}

QUrl URLWithFileSystemPathHFSStyle(const QString &path)
{
    if (!path.startsWith(FileCatalog::rootVolumeName.toString() + colon))
        return {};
    const QString slashed = withSlashesAndColonsSwapped(path.sliced(FileCatalog::rootVolumeName.size()));
    const QByteArray bytes = slashed.toUtf8();
    if (!consistsOfNames(slashed) || slashed.contains(QChar::Null) || QString::fromUtf8(bytes) != slashed)
        return {};
    return fileURLOfPath(bytes);
}

QUrl resolveAliasFile(const QUrl &url)
{
    const auto reference = referenceOf(url);
    const auto target = reference ? FileCatalog::resolveAlias(*reference) : std::nullopt;
    if (!target)
        return {};
    return reference->isLink() ? fileURLOfPath(target->path) : url;
}

bool finderInfoFlagsTypeCreator(const QUrl &url, quint16 *flags, quint32 *type, quint32 *creator)
{
    const auto information = finderInfoOf(url);
    if (!information)
        return false;
    if (flags)
        *flags = information->flags();
    if (type)
        *type = information->type();
    if (creator)
        *creator = information->creator();
    return true;
}

bool setFinderInfoFlagsMaskTypeCreator(const QUrl &url, quint16 flags, quint16 mask, quint32 type,
                                       quint32 creator)
{
    return changeFinderInfo(url, [=](FinderInfo &information) {
        const int merged = (information.flags() & ~mask) | (flags & mask);
        information.setFlags(static_cast<quint16>(merged & ~FinderInfo::hasBeenInited));
        information.setType(type);
        information.setCreator(creator);
    });
}

QPointF finderLocation(const QUrl &url)
{
    const auto information = finderInfoOf(url);
    return information ? QPointF(information->horizontal(), information->vertical()) : QPointF();
}

bool setFinderLocation(const QUrl &url, QPointF location)
{
    const auto horizontal = wholeCoordinate(location.x());
    const auto vertical = wholeCoordinate(location.y());
    if (!horizontal || !vertical)
        return false;
    return changeFinderInfo(url, [=](FinderInfo &information) {
        information.setHorizontal(*horizontal);
        information.setVertical(*vertical);
    });
}

bool hasCustomIcon(const QUrl &url)
{
    const auto information = finderInfoOf(url);
    return information && (information->flags() & FinderInfo::hasCustomIcon) != 0;
}
