// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/Registration.h"

#include "ContextMenu/FileManager.h"
#include "ContextMenu/HelperFinder.h"
#include "ContextMenu/Outcome.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/FileLayer.h"
#include "Platform/Files/FileLock.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBSettingsStore.h"

#include <functional>

namespace {

const QString manifestFile = QStringLiteral("/ContextMenu.plist");
const QString lockFile = QStringLiteral("/org.quenby.Quenby.context-menu.lock");
/// Of one that writes a menu of thousands of presets.
constexpr int lockTimeout = 8000;

using Lines = Result<QStringList>;

Lines withManifest(const std::function<Lines(Manifest &)> &action)
{
    const QString stateFolder = DesktopFolders::stateFolder();
    const QString runtimeFolder = DesktopFolders::runtimeDirectory();
    if (stateFolder.isEmpty() || runtimeFolder.isEmpty())
        return Lines::failure(QStringLiteral("there is no home to write into"));
    const Result<FileLock> lock = FileLock::acquire(FileLayer::real(), runtimeFolder + lockFile, lockTimeout);
    if (!lock)
        return Lines::failure(lock.error);
    Manifest manifest(stateFolder + manifestFile);
    return action(manifest);
}

/// None if \a manifest was read, or is not there yet.
Lines noneIfRead(const Manifest &manifest)
{
    return manifest.readError().isEmpty() ? Lines(QStringList()) : Lines::failure(manifest.readError());
}

/// Writes every file manager that is there, and those that \a manifest names.
Lines writeAll(Manifest &manifest, const QByteArray &helper)
{
    for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
        if (manager->isPresent())
            manifest.setEntries(manager->program(), manifest.entries(manager->program()));
    }
    const QStringList registered = manifest.fileManagers();
    if (const Result<> saved = manifest.save(); !saved)
        return Lines::failure(saved.error);
    if (helper.isEmpty())
        return QStringList(QStringLiteral("the helper was not found, it writes the menu when it starts"));
    const Result<PresetMenu> menu = Registration::menuFor(helper);
    if (!menu)
        return Lines::failure(menu.error);
    Outcome outcome;
    for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
        if (registered.contains(manager->program()))
            outcome.add(manager->write(*menu, manifest));
    }
    return outcome.result();
}

} // namespace

Result<QStringList> Registration::registerWith(const QByteArray &helper)
{
    return withManifest([&helper](Manifest &manifest) { return writeAll(manifest, helper); });
}

Result<QStringList> Registration::refresh(const QByteArray &helper)
{
    return withManifest([&helper](Manifest &manifest) {
        return manifest.isRegistered() ? writeAll(manifest, helper) : Lines(QStringList());
    });
}

Result<QStringList> Registration::unregister()
{
    return withManifest([](Manifest &manifest) {
        if (!manifest.isRegistered())
            return noneIfRead(manifest);
        Outcome outcome;
        for (const std::unique_ptr<FileManager> &manager : FileManager::all())
            outcome.add(manager->remove(manifest));
        // What could not be removed stays known.
        outcome.add(manifest.fileManagers().isEmpty() ? manifest.remove() : manifest.save());
        return outcome.result();
    });
}

Result<QStringList> Registration::list()
{
    return withManifest([](Manifest &manifest) {
        Lines lines = noneIfRead(manifest);
        for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
            const bool hasEntries = manager->hasEntries(manifest);
            if (lines && (hasEntries || manager->isPresent()))
                lines->append(manager->name() + QLatin1StringView(hasEntries ? "\tyes" : "\tno"));
        }
        return lines;
    });
}

Result<PresetMenu> Registration::menuFor(const QByteArray &helper)
{
    const Result<QNBSettings> settings = QNBSettingsStore::stored(HelperFinder::paneOf(helper));
    if (!settings)
        return Result<PresetMenu>::failure(
            QStringLiteral("the presets cannot be read: %1").arg(settings.error));
    return PresetMenu::of(settings->presets, helper);
}
