// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBUniqueName.h"

#include "Platform/Files/PathExtension.h"
#include "Source/Model/QNBChildNames.h"
#include "Source/Model/QNBLowerCase.h"

#include <algorithm>
#include <optional>

namespace {

constexpr QChar separator = u'-';
constexpr qsizetype mostDigits = 9;

/// Of names of this length it is worth knowing that they are the same text in memory.
constexpr qsizetype longName = 1000;

QString suffixOf(const QString &extension)
{
    return extension.isEmpty() ? QString() : u'.' + extension;
}

/// A number as the counter is written: no sign, no leading zero, above zero. There are never as many names
/// as it takes to make one of more than nine digits count.
std::optional<std::uint32_t> counterIn(QStringView text)
{
    if (text.isEmpty() || text.size() > mostDigits || text.front() == u'0')
        return std::nullopt;
    std::uint32_t number = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        number = number * 10 + (c.unicode() - u'0');
    }
    return number;
}

/// The unique name, if it has no high number: then one look at each name is faster.
std::optional<QString> uniqueNameAmong(const QNBChildNames &names, const QString &base,
                                       const QString &extension, const QNBHierarchyItem *forItem)
{
    constexpr int mostNumbers = 50;
    QString candidate = base + suffixOf(extension);
    for (int number = 1; number <= mostNumbers; ++number) {
        if (!names.isTaken(candidate, forItem))
            return candidate;
        candidate = QNBNumberedName(base, extension, number);
    }
    return std::nullopt;
}

} // namespace

QNBUniqueNameSearch::QNBUniqueNameSearch(const QString &base, const QString &extension)
    : base_(base)
    , suffix_(suffixOf(extension))
    , plain_(QNBLowerCase(base_ + suffix_).view().toString())
    , prefix_(QNBLowerCase(base_ + separator).view().toString())
    , tail_(QNBLowerCase(suffix_).view().toString())
    , longest_(std::max(plain_.size(), prefix_.size() + mostDigits + tail_.size()))
{
}

void QNBUniqueNameSearch::addTaken(const QString &name)
{
    // In lower case no name is shorter than before.
    if (name.size() > longest_)
        return;
    if (name.size() > longName) {
        if (name.constData() == lastLongName_.constData())
            return;
        lastLongName_ = name;
    }
    const QNBLowerCase lowerCase(name);
    const QStringView lower = lowerCase.view();
    if (lower.startsWith(prefix_) && lower.endsWith(tail_)) {
        const qsizetype digits = lower.size() - prefix_.size() - tail_.size();
        if (const auto number = digits > 0 ? counterIn(lower.sliced(prefix_.size(), digits)) : std::nullopt)
            takenNumbers_.push_back(*number);
    }
    isPlainTaken_ = isPlainTaken_ || (!lower.isEmpty() && lower == plain_);
}

QString QNBUniqueNameSearch::uniqueName() const
{
    if (!isPlainTaken_)
        return base_ + suffix_;
    // So many numbers leave one free that is at most one above how many they are.
    std::vector<bool> isTaken(takenNumbers_.size() + 2);
    for (const std::uint32_t number : takenNumbers_) {
        if (number < isTaken.size())
            isTaken[number] = true;
    }
    const auto firstFree = std::find(isTaken.begin() + 1, isTaken.end(), false);
    return base_ + separator + QString::number(firstFree - isTaken.begin()) + suffix_;
}

QString QNBNumberedName(const QString &base, const QString &extension, qsizetype number)
{
    return base + separator + QString::number(number) + suffixOf(extension);
}

QString uniqueNameForLevel(const QNBHierarchyItem &level, const QString &baseName,
                           const QNBHierarchyItem *forItem, const QString &extension)
{
    if (const QNBChildNames *names = level.childNames()) {
        if (const auto name = uniqueNameAmong(*names, baseName, extension, forItem))
            return *name;
    }
    QNBUniqueNameSearch search(baseName, extension);
    for (const QNBHierarchyItemPtr &child : level.children()) {
        if (!forItem || !child->isEqualTo(*forItem))
            search.addTaken(child->filename());
    }
    return search.uniqueName();
}

QString uniqueNameForFilename(const QString &filename, const QNBHierarchyItem &level,
                              const QNBHierarchyItem *forItem)
{
    return uniqueNameForLevel(level, stringByDeletingPathExtension(filename), forItem,
                              pathExtension(filename));
}
