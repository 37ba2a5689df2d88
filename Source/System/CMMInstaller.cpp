// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/CMMInstaller.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Desktop/Gestalt.h"
#include "Platform/Files/BoundedFile.h"
#include "Platform/Files/FileOperations.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Source/Model/QNBSettingsStore.h"

#include <QFile>
#include <QLoggingCategory>

#include <filesystem>
#include <sys/stat.h>

namespace {

Q_LOGGING_CATEGORY(lcInstaller, "quenby.pane.installer")

/// The last system that loads such plug-ins.
constexpr qint32 lastSystemVersion = 0x105F;

const QByteArray libraryFolder = QByteArrayLiteral("/Library");
const QByteArray pluginFolder = QByteArrayLiteral("/Contextual Menu Items");
const QByteArray pluginName = QByteArrayLiteral("/QNBContextMenu.plugin");
const QByteArray codeFolder = QByteArrayLiteral("/Contents/MacOS");
const QByteArray informationFile = QByteArrayLiteral("/Contents/Info.plist");
const QString versionKey = QStringLiteral("CFBundleShortVersionString");
const QByteArray registerCommand = QByteArrayLiteral("register");
const QByteArray listCommand = QByteArrayLiteral("list");
const QByteArray unregisterCommand = QByteArrayLiteral("unregister");
constexpr qint64 largestInformationFile = qint64(1) << 20;

const QByteArray removalTool = QByteArrayLiteral("/bin/rm");
/// It asks once, before it removes anything: the right is granted first and used later.
const QByteArrayList removalOptions = {QByteArrayLiteral("-rf"), QByteArrayLiteral("--interactive=once")};

/// The version of a bundle; none if there is no such text in its information file.
std::optional<QString> versionOf(const QByteArray &bundle)
{
    const QByteArray path = bundle + informationFile;
    const Result<QByteArray> bytes = BoundedFile::read(path, largestInformationFile);
    if (!bytes) {
        qCWarning(lcInstaller) << bytes.error;
        return std::nullopt;
    }
    const PropertyList::ReadResult information = PropertyList::read(*bytes);
    if (!information) {
        qCWarning(lcInstaller) << path << information.error;
        return std::nullopt;
    }
    const QVariant version = information.value->toMap().value(versionKey);
    return version.typeId() == QMetaType::QString ? std::optional(version.toString()) : std::nullopt;
}

/// Makes a folder in the user's library, and the library itself, for its owner only, if there is none.
Result<> createDirectoryInLibrary(const QByteArray &library, const QByteArray &path)
{
    if (!FileOperations::exists(library)) {
        if (Result<> created = FileOperations::createDirectory(library, S_IRWXU); !created)
            return created;
    }
    return FileOperations::createDirectory(path);
}

} // namespace

CMMInstaller::Services CMMInstaller::Services::standard(
    Preferences &preferences, const std::optional<Bundle> &paneBundle,
    std::function<std::optional<AlertPanel::Answer>(const AlertPanel &alert)> runAlertPanel)
{
    const QByteArray home = QFile::encodeName(DesktopFolders::home());
    return {
        .runAlertPanel = std::move(runAlertPanel),
        .systemVersion = [] { return Gestalt::systemVersion(); },
        .copyAppValue = [&preferences](const QString &key) { return preferences.copyAppValue(key); },
        .setAppValue = [&preferences](const QString &key,
                                      const QVariant &value) { preferences.setAppValue(key, value); },
        .createAuthorization = [] { return std::make_unique<Authorization>(); },
        .askPlugin =
            [](const QByteArray &path, const QByteArray &command, const FileManagers::Answered &answered) {
                FileManagers::ask(QFile::decodeName(path), command, answered);
            },
        .fileExists = FileOperations::exists,
        .createDirectory = [library = home + libraryFolder](
                               const QByteArray &path) { return createDirectoryInLibrary(library, path); },
        .removeItem = FileOperations::removeItem,
        .copyItem = FileOperations::copyItem,
        .homeFolder = home,
        .paneBundlePath = paneBundle ? QFile::encodeName(paneBundle->bundlePath()) : QByteArray(),
    };
}

CMMInstaller::CMMInstaller(Services services)
    : services_(std::move(services))
{
}

QByteArray CMMInstaller::userPluginFolder() const
{
    return services_.homeFolder + libraryFolder + pluginFolder;
}

QByteArray CMMInstaller::installedPlugin() const
{
    return userPluginFolder() + pluginName;
}

QByteArray CMMInstaller::machineWidePlugin() const
{
    return services_.machineLibraryFolder + pluginFolder + pluginName;
}

QByteArray CMMInstaller::ownPlugin() const
{
    const std::filesystem::path path = (services_.paneBundlePath + codeFolder + pluginName).toStdString();
    return QByteArray::fromStdString(path.lexically_normal().native());
}

void CMMInstaller::offerToInstallCMM()
{
    if (!canInstall()) {
        qCInfo(lcInstaller) << "there is no plug-in to be installed, or no home for it";
        return;
    }
    bool theyWantIt = false;
    switch (shouldAskToInstallCMM()) {
    case AskToUpgrade:
        theyWantIt = doTheyWantCMMUpgraded();
        break;
    case AskToInstall:
        theyWantIt = doTheyWantCMMInstalled();
        break;
    case DoNotAsk:
        break;
    }
    if (theyWantIt)
        installCMM();
}

CMMInstaller::Offer CMMInstaller::shouldAskToInstallCMM() const
{
    const std::optional<qint32> version = services_.systemVersion();
    if (!version || *version > lastSystemVersion)
        return DoNotAsk;

    // Having declined once does not keep the question from being asked again.
    services_.copyAppValue(QNBPreferenceKey::alreadyAskedToInstallCMM);

    if (!isInstalled())
        return AskToInstall;
    return isCurrent() ? DoNotAsk : AskToUpgrade;
}

bool CMMInstaller::doTheyWantCMMInstalled()
{
    const std::optional<AlertPanel::Answer> answer = services_.runAlertPanel(
        {.title = tr("Install Finder Contextual Menu?"),
         .message = tr("Quenby can install a Finder Contextual Menu so you can access presets from within "
                       "Finder. Installing this will require that Finder be restarted. Would you like to "
                       "install the contextual menu?"),
         .defaultButton = tr("Install and Restart Finder"),
         .alternateButton = tr("Don't Install")});
    if (answer == AlertPanel::Answer::Alternate)
        setOffered();
    return answer == AlertPanel::Answer::Default;
}

bool CMMInstaller::doTheyWantCMMUpgraded()
{
    return services_.runAlertPanel(
               {.title = tr("Upgrade Finder Contextual Menu?"),
                .message = tr("Quenby's Contextual Menu needs to be updated. Updating this will require that "
                              "Finder be restarted. Would you like to update the contextual menu?"),
                .defaultButton = tr("Upgrade and Restart Finder"),
                .alternateButton = tr("Don't Upgrade")}) == AlertPanel::Answer::Default;
}

bool CMMInstaller::installCMM()
{
    if (services_.fileExists(machineWidePlugin())) {
        const bool isThePaneThere =
            services_
                .runAlertPanel({.title = tr("Upgrade Finder Contextual Menu"),
                                .message = tr("You must authorize as an administrator to upgrade the Finder "
                                              "Contextual Menu. You will be asked to authenticate."),
                                .defaultButton = {}})
                .has_value();
        if (!isThePaneThere || !requestAuthorization())
            return false;
        deleteFile(machineWidePlugin());
    }

    if (!services_.fileExists(userPluginFolder())) {
        if (const Result<> created = services_.createDirectory(userPluginFolder()); !created) {
            // The number stands there on purpose: it tells this failure from the other one.
            reportFailure(tr("Failed to install contextual menu2"),
                          tr("Installing the contextual menu failed with error: %1").arg(created.error));
            return false;
        }
    }

    Result<> removed;
    if (services_.fileExists(installedPlugin()))
        removed = services_.removeItem(installedPlugin());
    const Result<> copied = services_.copyItem(ownPlugin(), installedPlugin());
    if (removed && copied) {
        services_.askPlugin(installedPlugin(), registerCommand, services_.registered);
        return true;
    }
    // What could not be removed is also in the way of the copy: the first error is the cause.
    reportFailure(tr("Failed to install contextual menu"),
                  tr("Installing the contextual menu failed with error: %1 and %2")
                      .arg(removed ? copied.error : removed.error, QFile::decodeName(ownPlugin())));
    return false;
}

void CMMInstaller::removeCMM(const FileManagers::Answered &done)
{
    // What was written is known to every plug-in of this user.
    services_.askPlugin(
        ownPlugin(), unregisterCommand,
        [services = services_, installed = installedPlugin(), done](const Result<QString> &answer) {
            const Result<> removed =
                answer && services.fileExists(installed) ? services.removeItem(installed) : Result<>();
            done(removed ? answer : Result<QString>::failure(removed.error));
        });
}

void CMMInstaller::listFileManagers(const FileManagers::Answered &answered) const
{
    services_.askPlugin(ownPlugin(), listCommand, answered);
}

bool CMMInstaller::canInstall() const
{
    return !services_.homeFolder.isEmpty() && !services_.paneBundlePath.isEmpty() &&
           services_.fileExists(ownPlugin());
}

bool CMMInstaller::isInstalled() const
{
    return services_.fileExists(installedPlugin() + informationFile);
}

bool CMMInstaller::isCurrent() const
{
    const std::optional<QString> installed = versionOf(installedPlugin());
    return installed && installed == versionOf(services_.paneBundlePath);
}

bool CMMInstaller::wasOffered() const
{
    return services_.copyAppValue(QNBPreferenceKey::alreadyAskedToInstallCMM).toBool();
}

void CMMInstaller::setOffered()
{
    services_.setAppValue(QNBPreferenceKey::alreadyAskedToInstallCMM, true);
}

bool CMMInstaller::requestAuthorization()
{
    _authorizationRef = services_.createAuthorization();
    return _authorizationRef->copyRights(removalTool, removalOptions + QByteArrayList{machineWidePlugin()});
}

void CMMInstaller::deleteFile(const QByteArray &path)
{
    if (path != machineWidePlugin())
        qCCritical(lcInstaller) << "refused to remove with administrator's rights:" << path;
    else if (!_authorizationRef || !_authorizationRef->executeWithPrivileges())
        qCWarning(lcInstaller) << "not removed:" << path;
}

void CMMInstaller::reportFailure(const QString &title, const QString &text)
{
    services_.runAlertPanel({.title = title, .message = text, .defaultButton = tr("OK")});
}
