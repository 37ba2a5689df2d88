// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/SessionBus.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/RunningFixture.h"
#include "Tests/Helper/Running/ScreenTray.h"
#include "Tests/Session/FakeTray.h"
#include "Tests/Session/NotificationListener.h"
#include "Tests/Session/SilentSocket.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>
#include <optional>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString noPresets = QStringLiteral("No Presets");
const QString unreadable = QStringLiteral("The Presets Cannot Be Read");
const QString lettersEntry = QStringLiteral("Letters");
const QString photos = QStringLiteral("Photos");
const QString choose = QStringLiteral("Choose…");
const QString undoLast = QStringLiteral("Undo Last Creation");

class TrayProgramTest : public RunningFixture
{
protected:
    /// How the target is shown in a menu.
    static QString shownTarget() { return QStringLiteral("~/target"); }
    QStringList letterTree() const { return {QStringLiteral("In/"), QStringLiteral("In/a.txt")}; }
};

} // namespace

TEST_F(TrayProgramTest, TheMenuShowsThePresetsInTheirOrderAndWhatElseThereIs)
{
    store(settings());
    useTarget();
    FakeTray tray(bus_.address());
    const auto helper = start();
    const FakeTray::Entry menu = tray.menuWith(lettersEntry);
    EXPECT_THAT(menu.labels(), ElementsAre(lettersEntry, photos, QStringLiteral("-"), undoLast,
                                           QStringLiteral("Open Quenby…"), QStringLiteral("Quit")));
    EXPECT_THAT(menu.child(lettersEntry).labels(), ElementsAre(shownTarget(), QStringLiteral("-"), choose));
    EXPECT_FALSE(menu.child(undoLast).isEnabled);
    expectEndOf(*helper);
    EXPECT_FALSE(tray.hasItem());
}

TEST_F(TrayProgramTest, APresetIsCreatedInTheFolderThatWasUsedLastAndUndone)
{
    store(settings());
    useTarget();
    FakeTray tray(bus_.address());
    FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    const auto helper = start();
    tray.click(tray.menuWith(lettersEntry).child(lettersEntry).child(shownTarget()));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_EQ(tree(), letterTree());
    EXPECT_EQ(desktop.shown().constFirst().title, QStringLiteral("\"Letters\" was created"));
    EXPECT_THAT(desktop.shown().constFirst().actions,
                ElementsAre(QStringLiteral("show-folder"), QStringLiteral("Show folder"),
                            QStringLiteral("undo"), QStringLiteral("Undo")));

    ASSERT_TRUE(waitUntil([&] { return tray.menu().child(undoLast).isEnabled; }));
    tray.click(tray.menu().child(undoLast));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_FALSE(tray.menu().child(undoLast).isEnabled);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ATrayThatAppearsLaterIsUsed)
{
    store(settings());
    const auto helper = start();
    FakeTray tray(bus_.address(), false);
    EXPECT_FALSE(tray.hasItem());
    tray.addHost();
    EXPECT_EQ(tray.menuWith(lettersEntry).labels().constFirst(), lettersEntry);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ATrayThatStartsAgainIsGivenTheMenuAgain)
{
    store(settings());
    std::optional<FakeTray> tray(std::in_place, bus_.address());
    const auto helper = start();
    ASSERT_EQ(tray->menuWith(lettersEntry).labels().value(0), lettersEntry);
    tray.reset();
    tray.emplace(bus_.address());
    EXPECT_EQ(tray->menuWith(lettersEntry).labels().value(0), lettersEntry);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ATrayOnTheScreenIsUsedWhereThereIsNoneOnTheBus)
{
    store(settings());
    ScreenTray tray(screen_.display());
    const auto helper = start();
    EXPECT_TRUE(waitUntil([&] { return tray.hasIcon(); }));
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ATrayThatAppearsOnTheScreenLaterIsUsed)
{
    store(settings());
    const auto helper = start();
    ScreenTray tray(screen_.display());
    EXPECT_TRUE(waitUntil([&] { return tray.hasIcon(); }));
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ThePaneIsToldWhetherThereIsATrayAtPresent)
{
    store(settings());
    const auto waitForTray = [this](std::optional<bool> expected) {
        return waitUntil([&] { return state().hasTray == expected; });
    };
    std::optional<FakeTray> tray(std::in_place, bus_.address(), std::nullopt);
    NotificationListener listener(bus_.address());
    const auto helper = start();
    EXPECT_EQ(state().hasTray, std::nullopt) << "the desktop has not answered";
    const int before = listener.count("QNBHelperStateChangedNotification");
    tray->addHost();
    EXPECT_TRUE(waitForTray(true));
    EXPECT_TRUE(waitUntil([&] { return listener.count("QNBHelperStateChangedNotification") > before; }));
    tray.reset();
    EXPECT_TRUE(waitForTray(false));
    std::optional<ScreenTray> onScreen(std::in_place, screen_.display());
    EXPECT_TRUE(waitForTray(true));
    onScreen.reset();
    EXPECT_TRUE(waitForTray(false));
    tray.emplace(bus_.address());
    EXPECT_TRUE(waitForTray(true));
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ATrayThatAppearsBeforeTheSettingsAreReadWaitsForThem)
{
    QNBSettings options = settings();
    options.showMenubar = false;
    store(options);
    const QString folder = home_.configFolder();
    const SilentSocket silent;
    QProcessEnvironment withSilentBus = environment();
    withSilentBus.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), silent.busAddress());
    ScreenTray tray(screen_.display());
    const auto startAndWaitFor = [&](const QByteArray &line) {
        auto helper = startIn(withSilentBus);
        EXPECT_TRUE(waitUntil([&] {
            tray.announce();
            return helper->errors().contains(line);
        }));
        return helper;
    };

    const auto helper = startAndWaitFor("presets in the menu: 2");
    EXPECT_FALSE(tray.hasIcon());
    expectEndOf(*helper);

    // As a home that is not mounted yet: what the option says is not known.
    ASSERT_TRUE(QFile::rename(folder, home_.filePath(QStringLiteral("aside"))));
    ASSERT_TRUE(QFile::link(home_.filePath(QStringLiteral("unmounted")), folder));
    const auto later = startAndWaitFor("reading " + folder.toUtf8());
    EXPECT_TRUE(waitUntil([&] { return tray.hasIcon(); }));
    expectEndOf(*later);
}

TEST_F(TrayProgramTest, TheOptionPutsItIntoTheTrayAndTakesItOut)
{
    QNBSettings options = settings();
    options.showMenubar = false;
    store(options);
    FakeTray tray(bus_.address());
    const auto helper = start();
    EXPECT_FALSE(tray.hasItem());
    options.showMenubar = true;
    storeAndPost(options);
    ASSERT_TRUE(waitUntil([&] { return tray.hasItem(); }));
    EXPECT_EQ(tray.menuWith(lettersEntry).labels().value(0), lettersEntry);
    options.showMenubar = false;
    storeAndPost(options);
    ASSERT_TRUE(waitUntil([&] { return !tray.hasItem(); }));
    options.showMenubar = true;
    storeAndPost(options);
    ASSERT_TRUE(waitUntil([&] { return tray.hasItem(); }));
    EXPECT_EQ(tray.menuWith(lettersEntry).labels().value(0), lettersEntry);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, PresetsThatCannotBeReadLeaveTheMenuAsItIsAndAreToldOnce)
{
    store(settings());
    useTarget();
    FakeTray tray(bus_.address());
    FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    const auto helper = start();
    const QStringList before = tray.menuWith(lettersEntry).labels();

    const QString domain = home_.configFolder() + QStringLiteral("/" QUENBY_IDENTIFIER ".plist");
    const QString aside = home_.filePath(QStringLiteral("aside"));
    ASSERT_TRUE(QFile::rename(domain, aside));
    // What a folder in its place holds nobody can say.
    ASSERT_TRUE(QDir().mkdir(domain));
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus_.address()));
    const auto timesFailed = [&] { return helper->errors().count("reading " + domain.toUtf8()); };
    // More often than the helper tries by itself within the time of a test.
    for (const int times : {1, 2, 3, 4, 5, 6}) {
        centre.postNotificationName(QNBPresetConfigurationChangedNotification);
        ASSERT_TRUE(waitUntil([&] { return timesFailed() >= times; }));
    }
    EXPECT_EQ(tray.menu().labels(), before);
    ASSERT_TRUE(waitUntil([&] { return !desktop.shown().isEmpty(); }));
    const QString reason = QStringLiteral("The presets cannot be read: ");
    EXPECT_TRUE(desktop.shown().constFirst().text.startsWith(reason));

    // Orders are refused with the reason, and not for want of such a preset.
    QString error;
    EXPECT_FALSE(order(lettersEntry, &error));
    EXPECT_TRUE(error.startsWith(reason)) << qPrintable(error);
    tray.click(tray.menu().child(lettersEntry).child(shownTarget()));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_EQ(desktop.shown().at(1).title, QStringLiteral("\"Letters\" was not created"));
    EXPECT_TRUE(desktop.shown().at(1).text.startsWith(reason)) << qPrintable(desktop.shown().at(1).text);
    EXPECT_THAT(tree(), IsEmpty());

    ASSERT_TRUE(QDir().rmdir(domain));
    ASSERT_TRUE(QFile::rename(aside, domain));
    QNBSettings more = settings();
    more.presets.append(record(preset(QStringLiteral("More"), {})));
    storeAndPost(more);
    EXPECT_EQ(tray.menuWith(QStringLiteral("More")).labels().size(), before.size() + 1);
    EXPECT_EQ(desktop.shown().size(), 2);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, PresetsThatCannotBeReadAtTheStartAreShownOnceTheyCanWithoutASave)
{
    for (const bool isWanted : {true, false}) {
        QNBSettings options = settings();
        options.showMenubar = isWanted;
        store(options);
        const QString folder = home_.configFolder();
        const QString aside = home_.filePath(QStringLiteral("aside"));
        ASSERT_TRUE(QFile::rename(folder, aside));
        // As a home that is not mounted yet.
        ASSERT_TRUE(QFile::link(home_.filePath(QStringLiteral("unmounted")), folder));
        FakeTray tray(bus_.address());
        FakeDesktop desktop(bus_.address(), {});
        const auto helper = start();
        const FakeTray::Entry menu = tray.menuWith(unreadable);
        EXPECT_THAT(menu.labels(), ElementsAre(unreadable, QStringLiteral("-"), undoLast,
                                               QStringLiteral("Open Quenby…"), QStringLiteral("Quit")));
        EXPECT_FALSE(menu.children.value(0).isEnabled);
        // It is tried more than once.
        EXPECT_TRUE(waitUntil([&] { return helper->errors().count("reading " + folder.toUtf8()) >= 2; }));

        ASSERT_TRUE(QFile::remove(folder));
        ASSERT_TRUE(QFile::rename(aside, folder));
        if (isWanted) {
            EXPECT_EQ(tray.menuWith(lettersEntry).labels().value(0), lettersEntry);
        } else {
            EXPECT_TRUE(waitUntil([&] { return !tray.hasItem(); }));
        }
        EXPECT_EQ(desktop.shown().size(), 1) << "told once";
        expectEndOf(*helper);
    }
}

TEST_F(TrayProgramTest, ChangesOfThePresetsShowUp)
{
    QNBSettings options = settings();
    store(options);
    FakeTray tray(bus_.address());
    const auto helper = start();
    ASSERT_EQ(tray.menuWith(lettersEntry).labels().mid(0, 2), QStringList({lettersEntry, photos}));
    options.presets = {record(preset(QStringLiteral("Songs & Dances & more_of_it"), {}))};
    storeAndPost(options);
    // The first mark of an access key is before the first letter, every other is none.
    const QString shown = QStringLiteral("_Songs & Dances & more__of__it");
    EXPECT_EQ(tray.menuWith(shown).labels().value(0), shown);
    options.presets.clear();
    storeAndPost(options);
    const FakeTray::Entry empty = tray.menuWith(noPresets);
    EXPECT_EQ(empty.labels().value(0), noPresets);
    EXPECT_FALSE(empty.children.value(0).isEnabled);
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, ChooseAsksForTheFolder)
{
    store(settings());
    FakeTray tray(bus_.address());
    FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    const FakeTray::Entry menu = tray.menuWith(photos);
    EXPECT_THAT(menu.child(photos).labels(), ElementsAre(choose));
    tray.click(menu.child(photos).child(choose));
    const QString dialog = screen_.windowNamed(QStringLiteral("Create \"Photos\" In"));
    ASSERT_FALSE(dialog.isEmpty());
    ASSERT_TRUE(screen_.activate(dialog));
    screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("type"), target()});
    screen_.typeKey(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return !desktop.shown().isEmpty(); }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Raw/")));
    // It is the one used last now.
    ASSERT_TRUE(waitUntil([&] { return tray.menu().child(photos).labels().value(0) == shownTarget(); }));
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, AClickOnTheIconIsLeftToThePanel)
{
    store(settings());
    useTarget();
    FakeTray tray(bus_.address());
    FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    ASSERT_EQ(tray.menuWith(lettersEntry).labels().constFirst(), lettersEntry);
    tray.activate();
    // What was clicked before has been answered then.
    tray.click(tray.menu().child(lettersEntry).child(shownTarget()));
    ASSERT_TRUE(waitUntil([&] { return !desktop.shown().isEmpty(); }));
    EXPECT_THAT(screen_.windowsOf(helper->pid()), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(TrayProgramTest, QuitEndsIt)
{
    store(settings());
    FakeTray tray(bus_.address());
    const auto helper = start();
    tray.click(tray.menuWith(lettersEntry).child(QStringLiteral("Quit")));
    ASSERT_TRUE(helper->waitForEnd());
    EXPECT_TRUE(helper->hasReturned(0));
}
