// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileOperations.h"
#include "Source/Model/QNBSettingsStore.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"
#include "Tests/Source/System/InstallerWorld.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

/// The services of the user's own, where home is a temporary folder.
class CMMInstallerServicesTest : public ::testing::Test
{
protected:
    CMMInstallerServicesTest()
    {
        InstallerWorld::makeFolders(home);
        qputenv("HOME", home);
    }
    ~CMMInstallerServicesTest() override { qputenv("HOME", previousHome); }

    CMMInstaller::Services services()
    {
        CMMInstaller::Services result = CMMInstaller::Services::standard(
            preferences, Bundle::bundleWithPath(QFile::decodeName(world.pane())),
            [this](const AlertPanel &alert) {
                alerts.append(alert);
                return std::optional(answer);
            });
        machineLibraryFolder = result.machineLibraryFolder;
        result.machineLibraryFolder = world.machineLibrary();
        // The last system on which anything is offered.
        result.systemVersion = [] { return 0x105F; };
        return result;
    }

    InstallerWorld world;
    const QByteArray home = world.root + "/new home";
    const QByteArray plugins = home + "/Library/Contextual Menu Items";
    const QByteArray previousHome = qgetenv("HOME");
    Preferences preferences{
        QStringLiteral("org.quenby.Quenby"),
        {.folder = QFile::decodeName(world.root), .lockFolder = QFile::decodeName(world.root)}};
    QByteArray machineLibraryFolder;
    AlertPanel::Answer answer = AlertPanel::Answer::Default;
    QList<AlertPanel> alerts;
};

} // namespace

TEST_F(CMMInstallerServicesTest, TheFoldersAreWhereTheyBelong)
{
    const CMMInstaller installer(CMMInstaller::Services::standard(
        preferences, std::nullopt, [](const AlertPanel &) { return std::optional<AlertPanel::Answer>(); }));
    EXPECT_EQ(installer.userPluginFolder(), home + "/Library/Contextual Menu Items");
    EXPECT_EQ(installer.installedPlugin(), home + "/Library/Contextual Menu Items/QNBContextMenu.plugin");
    EXPECT_EQ(installer.machineWidePlugin(), "/Library/Contextual Menu Items/QNBContextMenu.plugin");
    EXPECT_EQ(CMMInstaller(services()).ownPlugin(), world.pane() + "/Contents/MacOS/QNBContextMenu.plugin");
    EXPECT_EQ(machineLibraryFolder, "/Library");
}

TEST_F(CMMInstallerServicesTest, NothingIsOfferedOnADesktopOfToday)
{
    CMMInstaller::Services today = services();
    today.systemVersion = CMMInstaller::Services::standard(preferences, std::nullopt, {}).systemVersion;
    CMMInstaller(today).offerToInstallCMM();
    EXPECT_TRUE(alerts.isEmpty());
    EXPECT_FALSE(FileOperations::exists(home + "/Library"));
}

TEST_F(CMMInstallerServicesTest, InstallsAndLetsThePluginRegister)
{
    StandInPrograms programs;
    const QByteArray code = world.ownPlugin() + "/Contents/MacOS";
    InstallerWorld::makeFolders(code);
    programs.addAt(QFile::decodeName(code + "/program"), QStringLiteral("plug-in"), "exit 0");
    // None that the developer has open is told to quit.
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", programs.folder().toUtf8());
    CMMInstaller(services()).offerToInstallCMM();
    EXPECT_TRUE(waitUntil(hasNoChild));
    qputenv("PATH", path);

    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.constFirst().title, QStringLiteral("Install Finder Contextual Menu?"));
    EXPECT_EQ(InstallerWorld::markOf(plugins + "/QNBContextMenu.plugin"), "own");
    EXPECT_EQ(programs.starts(QStringLiteral("plug-in")), (QList<QByteArrayList>{{"register"}}));
    struct stat information = {};
    ASSERT_EQ(::stat((home + "/Library").constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700u) << "the library is its owner's";
    EXPECT_FALSE(preferences.hasPendingValues());

    CMMInstaller(services()).offerToInstallCMM();
    EXPECT_EQ(alerts.size(), 1) << "it is there now";
}

TEST_F(CMMInstallerServicesTest, ALibraryThatCannotBeMadeIsAFolderThatCannotBeMade)
{
    ASSERT_TRUE(FileOperations::removeItem(home));
    CMMInstaller(services()).offerToInstallCMM();
    ASSERT_EQ(alerts.size(), 2);
    EXPECT_EQ(alerts.constLast().title, QStringLiteral("Failed to install contextual menu2"));
    EXPECT_EQ(alerts.constLast().message,
              QStringLiteral("Installing the contextual menu failed with error: cannot make the folder "
                             "%1/Library: No such file or directory")
                  .arg(QFile::decodeName(home)));
    EXPECT_EQ(alerts.constLast().defaultButton, QStringLiteral("OK"));
    EXPECT_FALSE(FileOperations::exists(home));
}

TEST_F(CMMInstallerServicesTest, DecliningWaitsInTheDomainForTheNextSave)
{
    answer = AlertPanel::Answer::Alternate;
    CMMInstaller(services()).offerToInstallCMM();
    EXPECT_EQ(preferences.copyAppValue(QNBPreferenceKey::alreadyAskedToInstallCMM), QVariant(true));
    EXPECT_TRUE(preferences.hasPendingValues());
    EXPECT_FALSE(QFile::exists(preferences.path()));
    EXPECT_FALSE(FileOperations::exists(home + "/Library"));
}

TEST_F(CMMInstallerServicesTest, WithoutAnAgentTheMachineWidePluginStays)
{
    InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/no/programs");
    CMMInstaller(services()).offerToInstallCMM();
    qputenv("PATH", path);
    EXPECT_EQ(alerts.size(), 2);
    EXPECT_EQ(InstallerWorld::markOf(world.machineWide()), "machine-wide");
    EXPECT_FALSE(FileOperations::exists(home + "/Library"));
}
