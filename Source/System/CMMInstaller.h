// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/FileManagers.h"
#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Preferences/Preferences.h"
#include "Platform/Processes/Authorization.h"
#include "Toolkit/AlertPanel.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

/// Offers, each time the pane opens, to install or to upgrade the file managers' plug-in that the pane
/// carries, and does so: into the user's folder, after an older copy in the machine-wide folder has been
/// removed with an administrator's rights.
///
/// Whoever holds an installer keeps it until offerToInstallCMM() has returned: it runs event loops.
class CMMInstaller
{
    Q_DECLARE_TR_FUNCTIONS(CMMInstaller)

public:
    /// The world outside. Paths are the file system's own bytes.
    struct Services
    {
        /// None if the pane was left meanwhile: then nothing further is done or stored.
        std::function<std::optional<AlertPanel::Answer>(const AlertPanel &alert)> runAlertPanel;
        /// None if the system does not tell.
        std::function<std::optional<qint32>()> systemVersion;
        std::function<QVariant(const QString &key)> copyAppValue;
        std::function<void(const QString &key, const QVariant &value)> setAppValue;
        std::function<std::unique_ptr<Authorization>()> createAuthorization;
        /// Has the plug-in at \a path do as \a command says.
        std::function<void(const QByteArray &path, const QByteArray &command,
                           const FileManagers::Answered &answered)>
            askPlugin;
        /// Told what the plug-in that was installed said when it was made known.
        FileManagers::Answered registered = [](const Result<QString> &) {};

        std::function<bool(const QByteArray &path)> fileExists;
        /// Makes one folder. The folder of a user's library is always there for the installer: a desktop that
        /// knows no such folder has it made along with the first one in it, and if that fails this has
        /// failed.
        std::function<Result<>(const QByteArray &path)> createDirectory;
        std::function<Result<>(const QByteArray &path)> removeItem;
        std::function<Result<>(const QByteArray &from, const QByteArray &to)> copyItem;

        /// "~"; nothing is offered if empty.
        QByteArray homeFolder;
        QByteArray machineLibraryFolder = QByteArrayLiteral("/Library");
        /// The pane's bundle; nothing is offered if empty.
        QByteArray paneBundlePath;

        /// The user's own. \a preferences has to live as long as \a runAlertPanel gives answers.
        static Services
        standard(Preferences &preferences, const std::optional<Bundle> &paneBundle,
                 std::function<std::optional<AlertPanel::Answer>(const AlertPanel &alert)> runAlertPanel);
    };

    /// Whether to ask, and what.
    enum Offer { DoNotAsk = 0, AskToUpgrade = 1, AskToInstall = 2 };

    explicit CMMInstaller(Services services);

    /// The whole flow. Nothing is offered by a pane that carries no plug-in.
    void offerToInstallCMM();

    Offer shouldAskToInstallCMM() const;
    bool doTheyWantCMMInstalled();
    bool doTheyWantCMMUpgraded();
    /// Whether it is installed; then Services::registered will be told what the plug-in said. Reports
    /// failures itself.
    bool installCMM();
    /// The opposite: has the entries taken out of the file managers' menus, then removes the user's plug-in.
    /// \a done is told what the plug-in said, or what went wrong; the plug-in stays if its entries do.
    void removeCMM(const FileManagers::Answered &done);
    /// Has the pane's own plug-in list the file managers.
    void listFileManagers(const FileManagers::Answered &answered) const;

    /// Whether this pane carries a plug-in, and there is a home for it.
    bool canInstall() const;
    bool isInstalled() const;
    /// Whether what is installed is of the pane's version.
    bool isCurrent() const;
    /// Whether the user was told of the plug-in, in one way or another; remembered with the settings.
    bool wasOffered() const;
    void setOffered();
    /// Whether the user authenticated as an administrator, who may remove the machine-wide plug-in, and that
    /// alone.
    bool requestAuthorization();
    /// Removes the machine-wide plug-in, with the right that was requested; not waited for. Any other path is
    /// refused.
    void deleteFile(const QByteArray &path);

    /// "~/Library/Contextual Menu Items".
    QByteArray userPluginFolder() const;
    QByteArray installedPlugin() const;
    QByteArray machineWidePlugin() const;
    /// The one inside the pane.
    QByteArray ownPlugin() const;

private:
    void reportFailure(const QString &title, const QString &text);

    Services services_;
    std::unique_ptr<Authorization> _authorizationRef;
};
