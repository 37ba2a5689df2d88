// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/HelperService.h"
#include "Platform/Bus/SessionBus.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/RunningFixture.h"
#include "Tests/Session/StandInPrograms.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString letters = QStringLiteral("Letters");
const QString scripted = QStringLiteral("Scripted");
const QString scriptName = QStringLiteral("work.sh");
const QString question = QStringLiteral("Run the Script\\?");
const QString menus = QStringLiteral("menus");
const QString oldConnection = QStringLiteral("old-command-line");
const QStringList withActions = {QStringLiteral("actions")};

class CreationProgramTest : public RunningFixture
{
protected:
    QNBSettings withScript(const QByteArray &text)
    {
        putScript(scriptName, text);
        QNBSettings result = settings();
        result.presets.append(record(preset(scripted, {folder(QStringLiteral("Made"), {})}, scriptName)));
        return result;
    }
    /// A preset that takes a while.
    QNBSettings withManyFiles(int count)
    {
        QVariantList files;
        for (int i = 0; i < count; ++i)
            files.append(file(QStringLiteral("file %1").arg(i)));
        QNBSettings result;
        result.presets = {record(preset(letters, {folder(QStringLiteral("Many"), files)}))};
        return result;
    }
    /// Has a helper begin to create a preset in the target, and kills it in the middle.
    void killACreation()
    {
        store(withManyFiles(100'000));
        const auto killed = start();
        ASSERT_TRUE(order(letters));
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(target() + QStringLiteral("/Many/file 0")); },
                              std::chrono::minutes(2)));
        killed->signal(SIGKILL);
        ASSERT_TRUE(killed->waitForEnd());
    }
    /// Waits for the window of that \a title, and presses \a key in it.
    void answer(const QString &title, const QString &key)
    {
        const QString window = screen_.windowNamed(title);
        ASSERT_FALSE(window.isEmpty());
        ASSERT_TRUE(screen_.activate(window));
        screen_.typeKey(key);
    }
    QString installedPlugin() const
    {
        return home_.filePath(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin"));
    }
    /// A plug-in for file managers, whose starts are asked for by \a name.
    static void makePlugin(StandInPrograms &programs, const QString &bundle, const QString &name)
    {
        const QString contents = bundle + QStringLiteral("/Contents");
        ASSERT_TRUE(QDir().mkpath(contents + QStringLiteral("/MacOS")));
        QFile information(contents + QStringLiteral("/Info.plist"));
        ASSERT_TRUE(information.open(QIODevice::WriteOnly));
        information.write("<plist version=\"1.0\"><dict><key>CFBundleExecutable</key>"
                          "<string>QNBContextMenu</string></dict></plist>");
        information.close();
        programs.addAt(contents + QStringLiteral("/MacOS/QNBContextMenu"), name);
    }
    QString marker(const QString &name) const { return home_.filePath(name); }
};

} // namespace

TEST_F(CreationProgramTest, AnOrderFromAnotherProgramIsCarriedOut)
{
    store(settings());
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    ASSERT_TRUE(order(letters));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
    desktop.choose(desktop.shown().constFirst().id, QStringLiteral("undo"));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_THAT(tree(), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, AnOrderForAPresetThatIsNotThereIsRefusedWithTheReason)
{
    store(settings());
    const auto helper = start();
    QString reason;
    EXPECT_FALSE(order(QStringLiteral("Nothing of that name"), &reason));
    EXPECT_TRUE(reason.contains(QStringLiteral("Nothing of that name"))) << qPrintable(reason);
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, ANumberInAnOrderNamesNoPreset)
{
    store(settings());
    const auto helper = start();
    EXPECT_FALSE(order(QStringLiteral("#1")));
    QDBusConnection bus = QDBusConnection::connectToBus(bus_.address(), oldConnection);
    QDBusMessage message = QDBusMessage::createMethodCall(
        HelperService::name, HelperService::path, HelperService::interfaceName, HelperService::createMethod);
    message << QStringLiteral("#1") << QStringList(target());
    EXPECT_EQ(QDBusError(bus.call(message)).type(), QDBusError::InvalidArgs) << "as command lines once asked";
    QDBusConnection::disconnectFromBus(oldConnection);
    EXPECT_THAT(tree(), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, ShowFolderOpensIt)
{
    store(settings());
    FakeDesktop desktop(bus_.address(), withActions);
    StandInPrograms programs;
    programs.add(QStringLiteral("xdg-open"));
    QProcessEnvironment withOpener = environment();
    withOpener.insert(QStringLiteral("PATH"),
                      programs.folder() + u':' + withOpener.value(QStringLiteral("PATH")));
    const auto helper = startIn(withOpener);
    ASSERT_TRUE(waitUntil([&] { return isOnBus(); }));
    ASSERT_TRUE(order(letters));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    const auto isOpened = [&] { return !programs.starts(QStringLiteral("xdg-open")).isEmpty(); };
    // No user chooses before the helper has heard which notification this is: then nothing happens.
    ASSERT_TRUE(waitUntil([&] {
        desktop.choose(desktop.shown().constFirst().id, QStringLiteral("show-folder"));
        return waitUntil(isOpened, std::chrono::seconds(3));
    }));
    EXPECT_TRUE(programs.starts(QStringLiteral("xdg-open")).constFirst().value(0).endsWith("/target"));
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, AFailureIsToldByANotification)
{
    store(settings());
    ASSERT_TRUE(QDir(target()).removeRecursively());
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    ASSERT_TRUE(order(letters));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(desktop.shown().constFirst().title, QStringLiteral("\"Letters\" was not created"));
    EXPECT_FALSE(desktop.shown().constFirst().text.isEmpty());
    EXPECT_THAT(desktop.shown().constFirst().actions, IsEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, AFailureIsToldInAWindowWhereThereAreNoNotifications)
{
    store(settings());
    ASSERT_TRUE(QDir(target()).removeRecursively());
    const auto helper = start();
    ASSERT_TRUE(order(letters));
    EXPECT_FALSE(screen_.windowNamed(QStringLiteral("Quenby")).isEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, AScriptThatWasNeverAllowedDoesNotRunByReturn)
{
    store(withScript("#!/bin/sh\ntouch \"$1/ran\"\n"));
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    ASSERT_TRUE(order(scripted));
    ASSERT_NO_FATAL_FAILURE(answer(question, QStringLiteral("Return")));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(desktop.shown().constFirst().title,
              QStringLiteral("\"Scripted\" was created, its script did not run"));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Made/")));
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, AScriptRunsOnceItWasAllowedAndIsNotAskedAboutAgain)
{
    store(withScript("#!/bin/sh\ntouch \"$1/ran for $2\"\n"));
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    ASSERT_TRUE(order(scripted));
    ASSERT_NO_FATAL_FAILURE(answer(question, QStringLiteral("alt+r")));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Made/"), QStringLiteral("ran for Scripted")));
    ASSERT_TRUE(order(scripted));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_EQ(desktop.shown().at(1).title, QStringLiteral("\"Scripted\" was created"));
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, WhatTakesLongIsShownAndCanBeCancelled)
{
    const QByteArray fifo = QFile::encodeName(marker(QStringLiteral("fifo")));
    ASSERT_EQ(::mkfifo(fifo.constData(), 0600), 0);
    store(withScript("#!/bin/sh\nwhile :; do read line < '" + fifo + "'; done\n"));
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    ASSERT_TRUE(order(scripted));
    ASSERT_NO_FATAL_FAILURE(answer(question, QStringLiteral("alt+r")));
    ASSERT_NO_FATAL_FAILURE(answer(QStringLiteral("Quenby"), QStringLiteral("Escape")));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(desktop.shown().constFirst().title,
              QStringLiteral("\"Scripted\" was created, its script failed"));
    ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(helper->pid()).isEmpty(); }));
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, ItEndsWhileItAsks)
{
    store(withScript("#!/bin/sh\ntouch \"$1/ran\"\n"));
    const auto helper = start();
    ASSERT_TRUE(order(scripted));
    ASSERT_FALSE(screen_.windowNamed(question).isEmpty());
    expectEndOf(*helper);
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Made/")));
}

TEST_F(CreationProgramTest, WhatIsBeingCreatedWhenItEndsIsUndone)
{
    store(withManyFiles(100'000));
    const auto helper = start();
    ASSERT_TRUE(order(letters));
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(target() + QStringLiteral("/Many/file 0")); },
                          std::chrono::minutes(2)));
    expectEndOf(*helper);
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(CreationProgramTest, AnOrderForTwoFoldersIsUndoneInBoth)
{
    store(settings());
    FakeDesktop desktop(bus_.address(), withActions);
    const auto helper = start();
    const QString second = home_.filePath(QStringLiteral("second"));
    ASSERT_TRUE(QDir().mkpath(second));
    QString error;
    SessionBus bus(bus_.address());
    ASSERT_EQ(HelperService::create(bus, {letters}, {target(), second}, &error), HelperService::Answer::Taken)
        << qPrintable(error);
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_EQ(tree(second).size(), 2);
    desktop.choose(desktop.shown().constFirst().id, QStringLiteral("undo"));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 3; }));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_THAT(tree(second), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, TheNextStartTellsOfACreationThatWasKilled)
{
    FakeDesktop desktop(bus_.address(), withActions);
    ASSERT_NO_FATAL_FAILURE(killACreation());
    const auto helper = start();
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(desktop.shown().constFirst().title, QStringLiteral("A creation was interrupted"));
    EXPECT_TRUE(desktop.shown().constFirst().text.contains(target()));
    EXPECT_EQ(run({QStringLiteral("--undo")}).code, 0);
    EXPECT_THAT(tree(), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, SoDoesALauncherOfItsOwn)
{
    FakeDesktop desktop(bus_.address(), withActions);
    ASSERT_NO_FATAL_FAILURE(killACreation());
    ChildProcess launcher(program(), {QStringLiteral("--launcher")}, environment());
    EXPECT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(desktop.shown().value(0).title, QStringLiteral("A creation was interrupted"));
    EXPECT_FALSE(screen_.windowOf(launcher.pid()).isEmpty());
    expectEndOf(launcher);
}

TEST_F(CreationProgramTest, WhatIsBeingCreatedWhenTheScreenDiesIsUndone)
{
    store(withManyFiles(100'000));
    const auto helper = start();
    ASSERT_TRUE(order(letters));
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(target() + QStringLiteral("/Many/file 0")); },
                          std::chrono::minutes(2)));
    screen_.kill();
    ASSERT_TRUE(helper->waitForEnd(std::chrono::minutes(2)));
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(CreationProgramTest, TheFileManagersMenusAreKeptUpToDate)
{
    store(settings());
    StandInPrograms programs;
    makePlugin(programs, installedPlugin(), menus);
    const auto helper = start();
    ASSERT_TRUE(waitUntil([&] { return programs.starts(menus).size() == 1; }));
    storeAndPost(settings());
    ASSERT_TRUE(waitUntil([&] { return programs.starts(menus).size() == 2; }));
    for (const QByteArrayList &arguments : programs.starts(menus))
        EXPECT_THAT(arguments, ElementsAre("refresh", QFile::encodeName(program())));
    expectEndOf(*helper);
}

TEST_F(CreationProgramTest, ThePluginOfItsOwnPaneWritesThemOnceOneIsInstalled)
{
    store(settings());
    StandInPrograms programs;
    const QString ownMenus = QStringLiteral("own");
    makePlugin(programs, QFileInfo(program()).path() + QStringLiteral("/../../../QNBContextMenu.plugin"),
               ownMenus);
    const auto helper = start();
    makePlugin(programs, installedPlugin(), menus);
    storeAndPost(settings());
    ASSERT_TRUE(waitUntil([&] { return !programs.starts(ownMenus).isEmpty(); }));
    EXPECT_EQ(programs.starts(ownMenus).size(), 1) << "none was installed at the start";
    EXPECT_THAT(programs.starts(menus), IsEmpty()) << "it may be older";
    expectEndOf(*helper);
}
