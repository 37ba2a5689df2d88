// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// All that an installer can meet, against what is to happen then, told here once more in other words.

#include "Platform/Files/FileOperations.h"
#include "Tests/Source/System/InstallerWorld.h"

#include <gtest/gtest.h>
#include <tuple>

namespace {

using Failure = InstallerWorld::Failure;
using Answer = AlertPanel::Answer;

enum class Installed { Absent, Equal, Older, Newer, Unreadable };

struct Situation
{
    std::optional<qint32> systemVersion;
    Installed installed;
    bool machineWide;
    Answer answer;
    bool authorized;
    Failure failure;
};

/// What is left of it all.
struct Outcome
{
    QList<AlertPanel> alerts;
    QStringList events;
    QVariantMap stored;
    QList<QByteArrayList> requests;
    QByteArrayList asked;
    bool userFolderExists = false;
    /// Which plug-in is there; empty if none.
    QByteArray installed;
    QByteArray machineWide;
    QByteArrayList names;
};

const AlertPanel installQuestion{
    .title = QStringLiteral("Install Finder Contextual Menu?"),
    .message = QStringLiteral(
        "Quenby can install a Finder Contextual Menu so you can access presets from within Finder. "
        "Installing this will require that Finder be restarted. Would you like to install the contextual "
        "menu?"),
    .defaultButton = QStringLiteral("Install and Restart Finder"),
    .alternateButton = QStringLiteral("Don't Install")};
const AlertPanel upgradeQuestion{
    .title = QStringLiteral("Upgrade Finder Contextual Menu?"),
    .message = QStringLiteral("Quenby's Contextual Menu needs to be updated. Updating this will require that "
                              "Finder be restarted. Would you like to update the contextual menu?"),
    .defaultButton = QStringLiteral("Upgrade and Restart Finder"),
    .alternateButton = QStringLiteral("Don't Upgrade")};
const AlertPanel authorizationMessage{
    .title = QStringLiteral("Upgrade Finder Contextual Menu"),
    .message = QStringLiteral("You must authorize as an administrator to upgrade the Finder Contextual Menu. "
                              "You will be asked to authenticate."),
    .defaultButton = QString()};

void prepare(InstallerWorld &world, const Situation &situation)
{
    world.systemVersion = situation.systemVersion;
    world.answer = situation.answer;
    world.isAuthorized = situation.authorized;
    world.failure = situation.failure;
    if (situation.machineWide)
        InstallerWorld::makePlugin(world.machineWide(), "0.9", "machine-wide");
    if (situation.installed == Installed::Absent)
        return;
    // The pane's version is 1.1.
    InstallerWorld::makePlugin(world.installed(),
                               situation.installed == Installed::Older   ? "1.0"
                               : situation.installed == Installed::Newer ? "1.1.1"
                                                                         : "1.1",
                               "before");
    if (situation.installed == Installed::Unreadable)
        InstallerWorld::makeInformation(world.installed(), "<plist><dict>");
}

Outcome observe(const InstallerWorld &world)
{
    return {.alerts = world.alerts,
            .events = world.events,
            .stored = world.stored,
            .requests = world.requests,
            .asked = world.asked,
            .userFolderExists = FileOperations::exists(world.userFolder()),
            .installed = InstallerWorld::markOf(world.installed()),
            .machineWide = InstallerWorld::markOf(world.machineWide()),
            .names = InstallerWorld::namesIn(world.userFolder())};
}

/// Steps of an installation that was agreed to.
void expectInstallation(Outcome &outcome, const InstallerWorld &world, const Situation &situation)
{
    if (situation.machineWide) {
        outcome.alerts << authorizationMessage;
        outcome.events << QStringLiteral("alert") << QStringLiteral("rights");
        outcome.requests << QByteArrayList{"/bin/rm", "-rf", "--interactive=once", world.machineWide()};
        if (!situation.authorized)
            return;
        outcome.events << QStringLiteral("remove as administrator");
        outcome.machineWide.clear();
    }
    if (!outcome.userFolderExists) {
        outcome.events << QStringLiteral("create");
        if (situation.failure == Failure::Create) {
            outcome.events << QStringLiteral("alert");
            outcome.alerts << AlertPanel{.title = QStringLiteral("Failed to install contextual menu2"),
                                         .message =
                                             QStringLiteral("Installing the contextual menu failed with "
                                                            "error: no reason at all"),
                                         .defaultButton = QStringLiteral("OK")};
            return;
        }
        outcome.userFolderExists = true;
    }
    bool failed = false;
    if (!outcome.installed.isEmpty()) {
        outcome.events << QStringLiteral("remove");
        failed = situation.failure == Failure::Remove;
        if (!failed)
            outcome.installed.clear();
    }
    outcome.events << QStringLiteral("copy");
    failed = failed || situation.failure == Failure::Copy;
    if (failed) {
        outcome.events << QStringLiteral("alert");
        outcome.alerts << AlertPanel{
            .title = QStringLiteral("Failed to install contextual menu"),
            .message = QStringLiteral("Installing the contextual menu failed with error: no reason at all "
                                      "and ") +
                       QString::fromUtf8(world.ownPlugin()),
            .defaultButton = QStringLiteral("OK")};
        return;
    }
    outcome.events << QStringLiteral("register");
    outcome.asked << world.installed();
    outcome.installed = "own";
}

Outcome expected(const InstallerWorld &world, const Situation &situation)
{
    const bool isThere = situation.installed != Installed::Absent;
    Outcome outcome;
    outcome.userFolderExists = isThere;
    outcome.installed = isThere ? "before" : "";
    outcome.machineWide = situation.machineWide ? "machine-wide" : "";

    const bool isOffered = situation.systemVersion.has_value() && *situation.systemVersion < 0x1060 &&
                           situation.installed != Installed::Equal;
    if (isOffered) {
        outcome.alerts << (isThere ? upgradeQuestion : installQuestion);
        outcome.events << QStringLiteral("alert");
        if (situation.answer == Answer::Default)
            expectInstallation(outcome, world, situation);
        else if (situation.answer == Answer::Alternate && !isThere)
            outcome.stored.insert(QStringLiteral("QNBAlreadyAskedToInstallCMM"), true);
    }
    if (!outcome.installed.isEmpty())
        outcome.names << QByteArrayLiteral("QNBContextMenu.plugin");
    return outcome;
}

class CMMInstallerDecisionsTest
    : public ::testing::TestWithParam<std::tuple<std::optional<qint32>, Installed>>
{
};

} // namespace

TEST_P(CMMInstallerDecisionsTest, WhateverElseIsTheCase)
{
    int situations = 0;
    for (const bool machineWide : {false, true})
        for (const Answer answer : {Answer::Default, Answer::Alternate, Answer::Other})
            for (const bool authorized : {false, true})
                for (const Failure failure :
                     {Failure::None, Failure::Create, Failure::Remove, Failure::Copy}) {
                    SCOPED_TRACE(::testing::Message()
                                 << "machine-wide " << machineWide << ", answer " << int(answer)
                                 << ", authorized " << authorized << ", failure " << int(failure));
                    const Situation situation{std::get<0>(GetParam()),
                                              std::get<1>(GetParam()),
                                              machineWide,
                                              answer,
                                              authorized,
                                              failure};
                    InstallerWorld world;
                    prepare(world, situation);
                    const Outcome wanted = expected(world, situation);
                    world.offer();
                    const Outcome seen = observe(world);

                    EXPECT_EQ(seen.alerts, wanted.alerts);
                    EXPECT_EQ(seen.events, wanted.events);
                    EXPECT_EQ(seen.stored, wanted.stored);
                    EXPECT_EQ(seen.requests, wanted.requests);
                    EXPECT_EQ(seen.asked, wanted.asked);
                    EXPECT_EQ(seen.userFolderExists, wanted.userFolderExists);
                    EXPECT_EQ(seen.installed, wanted.installed);
                    EXPECT_EQ(seen.machineWide, wanted.machineWide);
                    EXPECT_EQ(seen.names, wanted.names);
                    ++situations;
                }
    EXPECT_EQ(situations, 48);
}

INSTANTIATE_TEST_SUITE_P(
    EveryCase, CMMInstallerDecisionsTest,
    ::testing::Combine(::testing::Values(std::optional<qint32>(), 0x1058, 0x105F, 0x1060),
                       ::testing::Values(Installed::Absent, Installed::Equal, Installed::Older,
                                         Installed::Newer, Installed::Unreadable)));
