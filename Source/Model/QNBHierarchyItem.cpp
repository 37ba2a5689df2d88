// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBHierarchyItem.h"

#include "Shared/Source/CocoaCryptoHashing.h"
#include "Source/Model/QNBChildNames.h"

#include <QStringEncoder>
#include <QVarLengthArray>
#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <sys/time.h>

namespace {

constexpr std::array<std::uint32_t, 3> defaultPermissions{7, 6, 4};

/// Room for the parts of a seed that are not the name: four numbers and their separators.
constexpr qsizetype seedNumbersSize = 96;
/// Names from here on are digested once for all items that share one. No file system has such names.
constexpr qsizetype longNameSize = 1024;
/// The most that one UTF-16 unit can take.
constexpr qsizetype utf8BytesPerUnit = 3;

char *writeUtf8(char *to, const QString &text)
{
    char16_t all = 0;
    for (const QChar c : text)
        all |= c.unicode();
    if (all < 0x80)
        return std::transform(text.begin(), text.end(), to,
                              [](QChar c) { return static_cast<char>(c.unicode()); });
    return QStringEncoder(QStringEncoder::Utf8).appendToBuffer(to, text);
}

template <class Number>
char *writeNumber(char *to, Number number)
{
    constexpr int longest = std::numeric_limits<Number>::digits10 + 2;
    return std::to_chars(to, to + longest, number).ptr;
}

} // namespace

QNBHierarchyItem::QNBHierarchyItem(Private)
    : permissions_(defaultPermissions)
{
}

/// The children of items that die with this one are taken out of them first, so that destroying a deep tree
/// takes no stack in proportion to its depth.
QNBHierarchyItem::~QNBHierarchyItem()
{
    Children dying = std::move(children_);
    while (!dying.empty()) {
        const QNBHierarchyItemPtr item = std::move(dying.back());
        dying.pop_back();
        if (item && item.use_count() == 1) {
            std::move(item->children_.begin(), item->children_.end(), std::back_inserter(dying));
            item->children_.clear();
        }
    }
}

/// An item with every default but the uid, which depends on what the item is given.
QNBHierarchyItemPtr QNBHierarchyItem::newItem()
{
    static const bool seeded = [] {
        srandom(static_cast<unsigned>(time(nullptr)));
        return true;
    }();
    Q_UNUSED(seeded)
    return std::make_shared<QNBHierarchyItem>(Private());
}

QNBHierarchyItemPtr QNBHierarchyItem::init()
{
    return initWithParentAndChildren({}, {});
}

QNBHierarchyItemPtr QNBHierarchyItem::initWithParent(const QNBHierarchyItemPtr &parent)
{
    return initWithParentAndChildren(parent, {});
}

QNBHierarchyItemPtr QNBHierarchyItem::initWithParentAndChildren(const QNBHierarchyItemPtr &parent,
                                                                const Children &children)
{
    QNBHierarchyItemPtr item = newItem();
    item->parent_ = parent;
    item->children_ = children;
    item->isFolder_ = static_cast<std::uint8_t>(children.size()) != 0;
    item->generateUID();
    return item;
}

/// The SHA-1 of the name, the kind, the time, a random number and the number of children.
void QNBHierarchyItem::generateUID(LongNames *longNames)
{
    timeval now{};
    gettimeofday(&now, nullptr);
    const auto seconds = static_cast<std::uint64_t>(now.tv_sec);
    const Seed seed{.secondsHigh = static_cast<std::uint32_t>(seconds >> 32),
                    .secondsLow = static_cast<std::uint32_t>(seconds),
                    .microseconds = static_cast<std::uint32_t>(now.tv_usec),
                    .random = static_cast<std::uint32_t>(random()),
                    .children = static_cast<std::uint32_t>(children_.size())};
    givenUid_.reset();
    digest_ = std::bit_cast<CocoaCryptoHashing::SHA1Digest>(seed);
    hasSeed_ = true;
    if (!longNames) {
        digest();
    } else if (filename_.size() >= longNameSize) {
        auto known = longNames->constFind(filename_.constData());
        if (known == longNames->constEnd()) {
            const QByteArray name = filename_.toUtf8();
            known = longNames->insert(filename_.constData(),
                                      {filename_, CocoaCryptoHashing::SHA1Beginning(name)});
        }
        std::array<char, seedNumbersSize> rest;
        const char *const end = writeNumbers(rest.data(), seed);
        digest_ = known->digest.digestWith({rest.data(), end - rest.data()});
        hasSeed_ = false;
    }
}

/// What follows the name in the text that is digested.
char *QNBHierarchyItem::writeNumbers(char *to, const Seed &seed) const
{
    *to++ = isFolder_ ? '1' : '0';
    *to++ = '_';
    to = writeNumber(to, std::uint64_t(seed.secondsHigh) << 32 | seed.secondsLow);
    to = writeNumber(to, seed.microseconds);
    *to++ = '_';
    to = writeNumber(to, seed.random);
    *to++ = '+';
    return writeNumber(to, seed.children);
}

const CocoaCryptoHashing::SHA1Digest &QNBHierarchyItem::digest() const
{
    if (hasSeed_) {
        QVarLengthArray<char, 256> text(filename_.size() * utf8BytesPerUnit + seedNumbersSize);
        const char *const end = writeNumbers(writeUtf8(text.data(), filename_), std::bit_cast<Seed>(digest_));
        digest_ = CocoaCryptoHashing::sha1Digest({text.constData(), end - text.constData()});
        hasSeed_ = false;
    }
    return digest_;
}

QNBHierarchyItemPtr QNBHierarchyItem::childAtIndex(std::int32_t index) const
{
    const auto position = static_cast<std::size_t>(static_cast<std::int64_t>(index));
    return position < children_.size() ? children_[position] : nullptr;
}

std::size_t QNBHierarchyItem::indexOfChild(const QNBHierarchyItem *item) const
{
    const auto found = std::find_if(children_.begin(), children_.end(),
                                    [item](const QNBHierarchyItemPtr &child) { return child.get() == item; });
    return found == children_.end() ? notFound : static_cast<std::size_t>(found - children_.begin());
}

void QNBHierarchyItem::addChild(const QNBHierarchyItemPtr &item)
{
    item->setParent(shared_from_this());
    children_.push_back(item);
    if (childNames_)
        childNames_->add(*item);
}

void QNBHierarchyItem::addChildAfterExistingChild(const QNBHierarchyItemPtr &newItem,
                                                  const QNBHierarchyItemPtr &existingItem)
{
    const std::size_t existing = indexOfChild(existingItem.get());
    const std::size_t position = existing == notFound ? 0 : existing + 1;
    newItem->setParent(shared_from_this());
    children_.insert(children_.begin() + static_cast<std::ptrdiff_t>(position), newItem);
    if (childNames_)
        childNames_->add(*newItem);
}

void QNBHierarchyItem::removeChild(const QNBHierarchyItemPtr &item)
{
    // The item given may be the one in the list, which goes before std::erase() has compared all.
    const QNBHierarchyItemPtr removed = item; // NOLINT(performance-unnecessary-copy-initialization)
    removed->setParent(shared_from_this());
    if (childNames_)
        childNames_->remove(*removed);
    std::erase(children_, removed);
}

bool QNBHierarchyItem::hasChild(const QNBHierarchyItem &item) const
{
    std::vector<const QNBHierarchyItem *> toSearch{this};
    while (!toSearch.empty()) {
        const QNBHierarchyItem *folder = toSearch.back();
        toSearch.pop_back();
        for (const QNBHierarchyItemPtr &child : folder->children_) {
            if (child->isEqualTo(item))
                return true;
            if (child->isFolder_)
                toSearch.push_back(child.get());
        }
    }
    return false;
}

void QNBHierarchyItem::setChild(const QNBHierarchyItemPtr &item)
{
    setChildren({item});
}

void QNBHierarchyItem::setChildren(const Children &children)
{
    dropChildNames();
    children_ = children;
}

void QNBHierarchyItem::indexChildNames()
{
    const auto canBeIndexed = [this](const QNBHierarchyItemPtr &child) {
        return child->parent().get() == this && child->filename().size() <= QNBChildNames::longest;
    };
    if (!childNames_ && children_.size() >= fewestIndexedNames &&
        std::all_of(children_.begin(), children_.end(), canBeIndexed))
        childNames_ = std::make_unique<QNBChildNames>(children_);
}

void QNBHierarchyItem::dropChildNames()
{
    childNames_.reset();
}

void QNBHierarchyItem::setFilename(const QString &name)
{
    // That of the first name.
    digest();
    const QNBHierarchyItemPtr folder = parent();
    QNBChildNames *names = folder ? folder->childNames_.get() : nullptr;
    // It is not there if this item was removed, which leaves the link to its parent.
    const bool isChild = names && names->remove(*this);
    filename_ = name;
    if (isChild)
        names->add(*this);
}

void QNBHierarchyItem::setParent(const QNBHierarchyItemPtr &parent)
{
    // That may still have it as a child, but would not hear of its names.
    if (const QNBHierarchyItemPtr former = this->parent(); former && former != parent)
        former->dropChildNames();
    parent_ = parent;
}

QVariantMap QNBHierarchyItem::customPermissions() const
{
    QVariantMap permissions;
    for (std::size_t i = 0; i < permissionKeys.size(); ++i) {
        if (hasPermission_[i])
            permissions.insert(permissionKeys[i], static_cast<qlonglong>(permissions_[i]));
    }
    return permissions;
}

void QNBHierarchyItem::setCustomPermissions(const QVariantMap &permissions)
{
    for (std::size_t i = 0; i < permissionKeys.size(); ++i) {
        const auto found = permissions.constFind(permissionKeys[i]);
        hasPermission_[i] = found != permissions.cend();
        permissions_[i] = hasPermission_[i] ? found->toUInt() : 0;
    }
}

QString QNBHierarchyItem::uid() const
{
    if (givenUid_)
        return *givenUid_;
    const QByteArrayView bytes(reinterpret_cast<const char *>(digest().data()), qsizetype(digest().size()));
    return QString::fromLatin1(bytes.toByteArray().toHex());
}

void QNBHierarchyItem::setUid(const QString &uid)
{
    // The size first: a text of any length may stand there, shared by many items.
    const bool mayBeDigest = uid.size() == 2 * qsizetype(digest_.size());
    const QByteArray digest = mayBeDigest ? QByteArray::fromHex(uid.toLatin1()) : QByteArray();
    if (digest.size() == qsizetype(digest_.size()) && QString::fromLatin1(digest.toHex()) == uid) {
        std::copy(digest.begin(), digest.end(), digest_.begin());
        hasSeed_ = false;
        givenUid_.reset();
    } else {
        givenUid_ = std::make_unique<const QString>(uid);
    }
}

bool QNBHierarchyItem::isEqualTo(const QNBHierarchyItem &item) const
{
    if (givenUid_ || item.givenUid_)
        return givenUid_ && item.givenUid_ && *givenUid_ == *item.givenUid_;
    return digest() == item.digest();
}

QNBHierarchyItemPtr QNBHierarchyItem::copyWithZone() const
{
    QNBHierarchyItemPtr copy = initWithParentAndChildren(parent(), children_);
    copy->filename_ = filename_;
    copy->isFolder_ = isFolder_;
    return copy;
}

QString QNBHierarchyItem::description() const
{
    const QString kind = isFolder_ ? QStringLiteral("directory with %1 children").arg(children_.size())
                                   : QStringLiteral("file");
    return QStringLiteral("<QNBHierarchyItem: '%1' (a %2; uid: %3)>").arg(filename_, kind, uid().right(6));
}
