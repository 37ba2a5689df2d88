// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/Registration.h"

#include "ContextMenu/FileManager.h"
#include "ContextMenu/HelperFinder.h"
#include "Platform/DesktopFolders.h"
#include "Platform/FileLayer.h"
#include "Platform/FileLock.h"
#include "Platform/LineText.h"
#include "Shared/Source/QNBShared.h"
#include "Source/QNBSettingsStore.h"

#include <QLoggingCategory>

#include <functional>

namespace {

Q_LOGGING_CATEGORY(lcRegistration, "quenby.contextmenu")

const QString manifestFile = QStringLiteral("/ContextMenu.plist");
const QString lockFile = QStringLiteral("/org.quenby.Quenby.context-menu.lock");
/// Of one that writes a menu of thousands of presets.
constexpr int lockTimeout = 8000;

/// Keeps the first of several failures.
void keep(Result<> &kept, Result<> result)
{
    if (result)
        return;
    qCWarning(lcRegistration).noquote() << lineText(result.error);
    if (kept)
        kept = std::move(result);
}

Result<> withManifest(const std::function<Result<>(Manifest &)> &action)
{
    const QString stateFolder = DesktopFolders::stateFolder();
    const QString runtimeFolder = DesktopFolders::runtimeDirectory();
    if (stateFolder.isEmpty() || runtimeFolder.isEmpty())
        return Result<>::failure(QStringLiteral("there is no home to write into"));
    const Result<FileLock> lock = FileLock::acquire(FileLayer::real(), runtimeFolder + lockFile, lockTimeout);
    if (!lock)
        return Result<>::failure(lock.error);
    Manifest manifest(stateFolder + manifestFile);
    return action(manifest);
}

/// Writes every file manager that is there, and those that \a manifest names.
Result<> writeAll(Manifest &manifest, const QByteArray &helper)
{
    for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
        if (manager->isPresent())
            manifest.setEntries(manager->program(), manifest.entries(manager->program()));
    }
    if (helper.isEmpty()) {
        qCWarning(lcRegistration) << "the helper was not found; the menu is written when it starts";
        return manifest.save();
    }
    const QStringList registered = manifest.fileManagers();
    Result<> result = manifest.save();
    if (!result)
        return result;
    const Result<PresetMenu> menu = Registration::menuFor(helper);
    if (!menu)
        return Result<>::failure(menu.error);
    for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
        if (registered.contains(manager->program()))
            keep(result, manager->write(*menu, manifest));
    }
    return result;
}

} // namespace

Result<> Registration::registerWith(const QByteArray &helper)
{
    return withManifest([&helper](Manifest &manifest) { return writeAll(manifest, helper); });
}

Result<> Registration::refresh(const QByteArray &helper)
{
    return withManifest([&helper](Manifest &manifest) {
        return manifest.isRegistered() ? writeAll(manifest, helper) : Result<>();
    });
}

Result<> Registration::unregister()
{
    return withManifest([](Manifest &manifest) {
        if (!manifest.isRegistered())
            return manifest.readError().isEmpty() ? Result<>() : Result<>::failure(manifest.readError());
        Result<> result;
        for (const std::unique_ptr<FileManager> &manager : FileManager::all())
            keep(result, manager->remove(manifest));
        // What could not be removed stays known.
        keep(result, manifest.fileManagers().isEmpty() ? manifest.remove() : manifest.save());
        return result;
    });
}

Result<QString> Registration::list()
{
    QString lines;
    const Result<> read = withManifest([&lines](Manifest &manifest) {
        for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
            const bool hasEntries = manager->hasEntries(manifest);
            if (hasEntries || manager->isPresent())
                lines += manager->name() + QLatin1StringView(hasEntries ? "\tyes\n" : "\tno\n");
        }
        return manifest.readError().isEmpty() ? Result<>() : Result<>::failure(manifest.readError());
    });
    return read ? Result<QString>(lines) : Result<QString>::failure(read.error);
}

Result<PresetMenu> Registration::menuFor(const QByteArray &helper)
{
    const Result<QNBSettings> settings = QNBSettingsStore::stored(HelperFinder::paneOf(helper));
    if (!settings)
        return Result<PresetMenu>::failure(
            QStringLiteral("the presets cannot be read: %1").arg(settings.error));
    return PresetMenu::of(settings->presets, helper);
}
