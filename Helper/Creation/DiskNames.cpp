// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/DiskNames.h"

#include "Platform/Files/FolderLayer.h"

#include <QString>
#include <algorithm>
#include <array>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace Creation {

namespace {

/// Those of these that are not in the system's list have been the same for as long.
constexpr std::uint32_t hfs = 0x4244;
constexpr std::uint32_t hfsPlus = 0x482B;
constexpr std::uint32_t exFat = 0x2011BAB0;
constexpr std::uint32_t cifs = 0xFF534D42;
constexpr std::uint32_t smb2 = 0xFE534D42;

/// The types of file systems that are blind as a rule; others have a flag for each folder.
constexpr std::array<std::uint32_t, 6> blindTypes = {MSDOS_SUPER_MAGIC, exFat, hfs, hfsPlus, cifs, smb2};

} // namespace

bool DiskNames::areCaseBlind(FolderLayer &layer, int folder)
{
    struct statfs disk = {};
    if (layer.fstatfs(folder, &disk) == 0 &&
        std::find(blindTypes.begin(), blindTypes.end(), static_cast<std::uint32_t>(disk.f_type)) !=
            blindTypes.end())
        return true;
    const std::optional<int> flags = layer.flagsOf(folder);
    return flags && (*flags & FS_CASEFOLD_FL) != 0;
}

QByteArray DiskNames::key(const QByteArray &name)
{
    const QString decomposed = QString::fromUtf8(name).normalized(QString::NormalizationForm_D);
    // Folding alone leaves letters as they are of which there are several in capitals.
    return decomposed.toUpper().toCaseFolded().normalized(QString::NormalizationForm_D).toUtf8();
}

} // namespace Creation
