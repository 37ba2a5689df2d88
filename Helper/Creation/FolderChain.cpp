// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/FolderChain.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace Creation {

namespace {

constexpr int closed = -1;

} // namespace

FolderChain::FolderChain(FolderLayer &layer, int folder)
    : layer_(layer)
    , links_{{folder, O_PATH, {}}}
{
}

FolderChain::~FolderChain()
{
    for (std::size_t i = firstOpen_; i < links_.size(); ++i)
        layer_.close(links_[i].descriptor);
}

bool FolderChain::enter(const char *name, int access)
{
    Link link{layer_.openat(descriptor(), name, access | O_DIRECTORY | O_NOFOLLOW), access, {}};
    if (link.descriptor == closed)
        return false;
    if (layer_.fstat(link.descriptor, &link.information) == -1) {
        const int error = errno;
        layer_.close(link.descriptor);
        errno = error;
        return false;
    }
    links_.push_back(link);
    if (links_.size() - firstOpen_ > mostOpen) {
        Link &oldest = links_[firstOpen_++];
        layer_.close(oldest.descriptor);
        oldest.descriptor = closed;
    }
    return true;
}

bool FolderChain::leave()
{
    const bool isOpen = openParent();
    const int error = errno;
    layer_.close(descriptor());
    links_.pop_back();
    firstOpen_ = std::max<std::size_t>(std::min(firstOpen_, links_.size()), 1);
    errno = error;
    return isOpen;
}

bool FolderChain::openParent()
{
    Link &parent = links_[links_.size() - 2];
    if (parent.descriptor != closed)
        return true;
    const int descriptor = layer_.openat(links_.back().descriptor, "..", parent.access | O_DIRECTORY);
    if (descriptor == closed)
        return false;
    struct stat information = {};
    int error = layer_.fstat(descriptor, &information) == -1 ? errno : 0;
    if (error == 0 && FileIdentity(information) != FileIdentity(parent.information))
        error = ESTALE;
    if (error != 0) {
        layer_.close(descriptor);
        errno = error;
        return false;
    }
    parent.descriptor = descriptor;
    firstOpen_ = links_.size() - 2;
    return true;
}

} // namespace Creation
