// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileOperations.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"
#include "Tests/Source/System/InstallerWorld.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Answer = AlertPanel::Answer;
using Failure = InstallerWorld::Failure;

class CMMInstallerTest : public ::testing::Test
{
protected:
    QStringList titles() const
    {
        QStringList result;
        for (const AlertPanel &alert : world.alerts)
            result.append(alert.title);
        return result;
    }
    CMMInstaller::Offer offer() { return CMMInstaller(world.services()).shouldAskToInstallCMM(); }
    void makeInstalled(const QByteArray &version) const
    {
        InstallerWorld::makePlugin(world.installed(), version, "before");
    }
    static void link(const QByteArray &text, const QByteArray &path)
    {
        ASSERT_EQ(::symlink(text.constData(), path.constData()), 0);
    }

    InstallerWorld world;
    const QString installQuestion = QStringLiteral("Install Finder Contextual Menu?");
    const QString upgradeQuestion = QStringLiteral("Upgrade Finder Contextual Menu?");
};

} // namespace

TEST_F(CMMInstallerTest, OnTenSixOrLaterNothingIsEverOffered)
{
    for (const std::optional<qint32> version :
         {std::optional<qint32>(0x1060), std::optional<qint32>(0x1100), std::optional<qint32>()}) {
        world.systemVersion = version;
        EXPECT_EQ(offer(), 0);
        world.offer();
    }
    EXPECT_EQ(world.events, QStringList());
    world.systemVersion = 0x105F;
    EXPECT_EQ(offer(), 2);
}

TEST_F(CMMInstallerTest, OnlyInTheMachineWideFolderItIsRemovedThereAndInstalledForTheUser)
{
    InstallerWorld::makePlugin(world.machineWide(), "1.1", "machine-wide");
    EXPECT_EQ(offer(), 2);
    world.offer();
    EXPECT_EQ(titles(), (QStringList{installQuestion, QStringLiteral("Upgrade Finder Contextual Menu")}));
    EXPECT_EQ(world.events.join(u' '),
              QStringLiteral("alert alert rights remove as administrator create copy register"));
    EXPECT_FALSE(FileOperations::exists(world.machineWide()));
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "own");
}

TEST_F(CMMInstallerTest, AnyOtherVersionAsksToUpgrade)
{
    for (const auto &[installed, pane] :
         {std::pair{"1.0", "1.0.1"}, std::pair{"1.1", "1.0"}, std::pair{"1.0", "1.00"}}) {
        makeInstalled(installed);
        InstallerWorld::makeInformation(world.pane(), InstallerWorld::versionEntry(pane));
        EXPECT_EQ(offer(), 1) << installed << " in " << pane;
        world.answer = Answer::Alternate;
        world.offer();
        EXPECT_EQ(world.alerts.takeLast().title, upgradeQuestion);
    }
    makeInstalled("1.00");
    EXPECT_EQ(offer(), 0);
    EXPECT_TRUE(world.stored.isEmpty());
}

TEST_F(CMMInstallerTest, DecliningIsStoredYetTheQuestionComesBack)
{
    const QString key = QStringLiteral("QNBAlreadyAskedToInstallCMM");
    world.answer = Answer::Alternate;
    world.offer();
    EXPECT_EQ(world.stored, (QVariantMap{{key, true}}));
    EXPECT_EQ(world.stored.value(key).typeId(), QMetaType::Bool);
    world.offer();
    EXPECT_EQ(titles(), (QStringList{installQuestion, installQuestion}));
    EXPECT_EQ(world.keysRead, (QStringList{key, key}));
    EXPECT_FALSE(FileOperations::exists(world.userFolder()));
}

TEST_F(CMMInstallerTest, AVersionThatIsNoTextIsAnother)
{
    const QByteArray withoutVersion = "<plist><dict><key>Other</key><true/></dict></plist>";
    const QByteArray number =
        "<plist><dict><key>CFBundleShortVersionString</key><real>1.1</real></dict></plist>";
    for (const QByteArray &content : {withoutVersion, number, QByteArray("no property list"), QByteArray()}) {
        InstallerWorld::makeInformation(world.installed(), content);
        EXPECT_EQ(offer(), 1) << content.constData();
        // Two that tell none are not equal either.
        InstallerWorld::makeInformation(world.pane(), content);
        EXPECT_EQ(offer(), 1) << content.constData();
        InstallerWorld::makeInformation(world.pane(), InstallerWorld::versionEntry("1.1"));
    }
}

TEST_F(CMMInstallerTest, AFifoForAnInformationFileHoldsNobodyUp)
{
    InstallerWorld::makeFolders(world.installed() + "/Contents");
    ASSERT_EQ(::mkfifo((world.installed() + "/Contents/Info.plist").constData(), 0600), 0);
    EXPECT_EQ(offer(), 1);
    world.offer();
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "own");
}

TEST_F(CMMInstallerTest, APaneWithoutAPluginOffersNothing)
{
    ASSERT_TRUE(FileOperations::removeItem(world.ownPlugin()));
    EXPECT_EQ(offer(), 2);
    world.offer();
    CMMInstaller::Services services = world.services();
    services.paneBundlePath.clear();
    CMMInstaller(services).offerToInstallCMM();
    EXPECT_EQ(world.events, QStringList());
}

TEST_F(CMMInstallerTest, WithoutAHomeNothingIsOffered)
{
    CMMInstaller::Services services = world.services();
    services.homeFolder.clear();
    CMMInstaller(services).offerToInstallCMM();
    EXPECT_EQ(world.events, QStringList());
}

TEST_F(CMMInstallerTest, APaneThatIsLeftMeanwhileDoesNothingFurther)
{
    InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    world.answer = std::nullopt;
    world.offer();
    makeInstalled("1.0");
    world.offer();
    world.answer = Answer::Default;
    world.answerToMessage = std::nullopt;
    world.offer();
    EXPECT_EQ(world.events.join(u' '), QStringLiteral("alert alert alert alert"));
    EXPECT_TRUE(world.stored.isEmpty());
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "before");
    EXPECT_EQ(InstallerWorld::markOf(world.machineWide()), "machine-wide");
}

TEST_F(CMMInstallerTest, RefusedRightsEndItSilently)
{
    InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    world.isAuthorized = false;
    world.offer();
    EXPECT_EQ(world.events.join(u' '), QStringLiteral("alert alert rights"));
    EXPECT_EQ(InstallerWorld::markOf(world.machineWide()), "machine-wide");
    EXPECT_FALSE(FileOperations::exists(world.userFolder()));
}

TEST_F(CMMInstallerTest, ARemovalThatFailsWithTheRightIsNotNoticed)
{
    InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    world.canAdministratorRemove = false;
    world.offer();
    EXPECT_EQ(world.events.join(u' '),
              QStringLiteral("alert alert rights remove as administrator create copy register"));
    EXPECT_EQ(InstallerWorld::markOf(world.machineWide()), "machine-wide");
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "own");
}

TEST_F(CMMInstallerTest, ThePathOfThePluginInThePaneIsStandardised)
{
    CMMInstaller::Services services = world.services();
    services.paneBundlePath = world.root + "/./no/../Some.prefPane/";
    EXPECT_EQ(CMMInstaller(services).ownPlugin(), world.ownPlugin());
}

TEST_F(CMMInstallerTest, PercentSignsInAnErrorAreShownAsTheyAre)
{
    world.reason = QStringLiteral("100%@ %1 %2 %n %% of <b>it</b>");
    for (const Failure failure : {Failure::Create, Failure::Copy}) {
        world.failure = failure;
        world.offer();
        EXPECT_TRUE(world.alerts.constLast().message.startsWith(
            QStringLiteral("Installing the contextual menu failed with error: 100%@ %1 %2 %n %% of "
                           "<b>it</b>")))
            << qPrintable(world.alerts.constLast().message);
    }
    EXPECT_TRUE(world.asked.isEmpty());
}

TEST_F(CMMInstallerTest, TheErrorToldIsTheCause)
{
    makeInstalled("1.0");
    CMMInstaller::Services services = world.services();
    services.removeItem = [](const QByteArray &) { return Result<>::failure(QStringLiteral("first")); };
    services.copyItem = [](const QByteArray &, const QByteArray &) {
        return Result<>::failure(QStringLiteral("second"));
    };
    CMMInstaller(services).installCMM();
    // A removal that failed counts even if the copy did not.
    services.copyItem = [](const QByteArray &, const QByteArray &) { return Result<>(); };
    CMMInstaller(services).installCMM();
    ASSERT_EQ(world.alerts.size(), 2);
    for (const AlertPanel &alert : world.alerts)
        EXPECT_EQ(alert.message, QStringLiteral("Installing the contextual menu failed with error: first "
                                                "and %1")
                                     .arg(QFile::decodeName(world.ownPlugin())));
    EXPECT_TRUE(world.asked.isEmpty());
}

TEST_F(CMMInstallerTest, ALinkPlantedAtTheDestinationIsRemovedAndNotFollowed)
{
    InstallerWorld::makePlugin(world.root + "/elsewhere", "1.0", "elsewhere");
    InstallerWorld::makeFolders(world.userFolder());
    for (const QByteArray &text : {world.root + "/elsewhere", world.root + "/nowhere"}) {
        link(text, world.installed());
        world.offer();
        EXPECT_EQ(world.events.join(u' '), QStringLiteral("alert remove copy register"));
        EXPECT_EQ(InstallerWorld::markOf(world.installed()), "own");
        EXPECT_EQ(InstallerWorld::markOf(world.root + "/elsewhere"), "elsewhere");
        EXPECT_FALSE(FileOperations::exists(world.root + "/nowhere"));
        struct stat information = {};
        EXPECT_EQ(::lstat(world.installed().constData(), &information), 0);
        EXPECT_TRUE(S_ISDIR(information.st_mode));
        ASSERT_TRUE(FileOperations::removeItem(world.installed()));
        world.events.clear();
    }
}

TEST_F(CMMInstallerTest, ALinkInsideTheOldPluginLeadsToNoRemovalElsewhere)
{
    InstallerWorld::makePlugin(world.root + "/elsewhere", "1.0", "elsewhere");
    makeInstalled("1.0");
    link(world.root + "/elsewhere", world.installed() + "/Contents/elsewhere");
    world.offer();
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "own");
    EXPECT_EQ(InstallerWorld::namesIn(world.installed() + "/Contents"),
              (QByteArrayList{"Info.plist", "mark"}));
    EXPECT_EQ(InstallerWorld::markOf(world.root + "/elsewhere"), "elsewhere");
}

TEST_F(CMMInstallerTest, AFolderOfTheUsersThatIsALinkServesAsWell)
{
    InstallerWorld::makeFolders(world.root + "/elsewhere");
    link(world.root + "/elsewhere", world.userFolder());
    world.offer();
    EXPECT_EQ(world.events.join(u' '), QStringLiteral("alert copy register"));
    EXPECT_EQ(InstallerWorld::markOf(world.root + "/elsewhere/QNBContextMenu.plugin"), "own");
}

TEST_F(CMMInstallerTest, ACopyThatFailsHalfwayLeavesNothingHalf)
{
    makeInstalled("1.0");
    ASSERT_EQ(::mkfifo((world.ownPlugin() + "/Contents/fifo").constData(), 0600), 0);
    world.offer();
    EXPECT_EQ(world.events.join(u' '), QStringLiteral("alert remove copy alert"));
    EXPECT_EQ(
        world.alerts.constLast().message,
        QStringLiteral("Installing the contextual menu failed with error: cannot copy %1/Contents/fifo: "
                       "Operation not supported and %1")
            .arg(QFile::decodeName(world.ownPlugin())));
    EXPECT_EQ(InstallerWorld::namesIn(world.userFolder()), QByteArrayList());
}

TEST_F(CMMInstallerTest, RemovesNoPathButTheMachineWidePlugin)
{
    InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    makeInstalled("1.0");
    CMMInstaller installer(world.services());
    installer.deleteFile(world.machineWide());
    EXPECT_EQ(world.events, QStringList()) << "without the right";

    ASSERT_TRUE(installer.requestAuthorization());
    for (const QByteArray &path :
         {world.installed(), world.machineLibrary(), world.machineWide() + "/", world.machineWide() + "/..",
          QByteArray(), QByteArrayLiteral("/"), QByteArrayLiteral("-rf")})
        installer.deleteFile(path);
    EXPECT_EQ(world.events, QStringList{QStringLiteral("rights")});
    EXPECT_EQ(InstallerWorld::markOf(world.machineWide()), "machine-wide");
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "before");

    installer.deleteFile(world.machineWide());
    EXPECT_FALSE(FileOperations::exists(world.machineWide()));
}

TEST_F(CMMInstallerTest, AnyFolderNameGoesUnharmed)
{
    for (const QByteArray &name :
         {QByteArrayLiteral("with blanks "), QByteArrayLiteral("'single' and \"double\""),
          QByteArrayLiteral("two\nlines"), QByteArrayLiteral("100% %s %1 %@"), QByteArrayLiteral("-rf"),
          QByteArrayLiteral("$(id); `id` & *"), QByteArrayLiteral("not \xff\xfe UTF-8 \xe9")}) {
        StandInPrograms programs;
        programs.grant();
        InstallerWorld strange(name);
        InstallerWorld::makePlugin(strange.machineWide(), "0.9", "machine-wide");
        InstallerWorld::makePlugin(strange.installed(), "1.0", "before");
        InstallerWorld::makePlugin(strange.machineLibrary() + "/neighbour", "1.0", "neighbour");
        CMMInstaller::Services services = strange.services();
        services.createAuthorization = [&programs] {
            Authorization::Options options;
            options.agent = programs.add(QStringLiteral("pkexec"), programs.becomeToolOnceGranted());
            return std::make_unique<Authorization>(options);
        };
        CMMInstaller(services).offerToInstallCMM();
        EXPECT_TRUE(waitUntil(hasNoChild));
        EXPECT_FALSE(FileOperations::exists(strange.machineWide())) << name.constData();
        EXPECT_EQ(InstallerWorld::markOf(strange.machineLibrary() + "/neighbour"), "neighbour");
        EXPECT_EQ(InstallerWorld::markOf(strange.installed()), "own") << name.constData();
        EXPECT_EQ(strange.asked, QByteArrayList{strange.installed()});
        EXPECT_EQ(InstallerWorld::namesIn(strange.root).size(), 3) << name.constData();
    }
}

TEST_F(CMMInstallerTest, WhatThePluginSaysWhenItRegistersIsPassedOn)
{
    world.answerOfPlugin = Result<QString>::failure(world.reason);
    EXPECT_TRUE(CMMInstaller(world.services()).installCMM());
    EXPECT_EQ(world.answers, QStringList(world.reason));
    EXPECT_TRUE(world.alerts.isEmpty());
    world.failure = InstallerWorld::Failure::Copy;
    EXPECT_FALSE(CMMInstaller(world.services()).installCMM());
    EXPECT_EQ(world.answers.size(), 1) << "there is nothing to register";
}

TEST_F(CMMInstallerTest, RemovingTakesTheEntriesOutFirstAndKeepsThePluginIfThatFails)
{
    InstallerWorld::makePlugin(world.installed(), "1.0", "installed");
    QStringList problems;
    const auto remove = [&] {
        CMMInstaller(world.services()).removeCMM([&](const Result<QString> &removed) {
            problems << removed.error;
        });
    };
    world.answerOfPlugin = Result<QString>::failure(world.reason);
    remove();
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "installed");
    world.answerOfPlugin = QString();
    remove();
    EXPECT_EQ(InstallerWorld::markOf(world.installed()), "");
    remove();
    EXPECT_EQ(problems, QStringList({world.reason, QString(), QString()}));
    EXPECT_EQ(world.asked, QByteArrayList(3, world.ownPlugin()));
    EXPECT_EQ(world.events.join(u' '), QStringLiteral("unregister unregister remove unregister"));
}
