// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The launcher as the command line opens it: in the running helper, or in a process of its own.

#include "Helper/HelperService.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/RunningFixture.h"
#include "Tests/Session/SilentSocket.h"
#include "Tests/Session/StandInPrograms.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const QString launcherOption = QStringLiteral("--launcher");
const QString inOption = QStringLiteral("--in");
const QString launcherConnection = QStringLiteral("launcher-test");
const QString lettersLabel = QStringLiteral("Letters");

class LauncherProgramTest : public RunningFixture
{
protected:
    LauncherProgramTest() { store(settings()); }

    std::unique_ptr<ChildProcess> begin(const QStringList &arguments) const
    {
        return begin(arguments, environment());
    }
    std::unique_ptr<ChildProcess> begin(const QStringList &arguments,
                                        const QProcessEnvironment &environment) const
    {
        return std::make_unique<ChildProcess>(program(), arguments, environment);
    }
    static void expectReturn(ChildProcess &process, int code)
    {
        // A fake of the test may have to answer meanwhile.
        EXPECT_TRUE(waitUntil([&] { return !process.isRunning(); }, std::chrono::minutes(1)));
        EXPECT_TRUE(process.waitForEnd());
        EXPECT_TRUE(process.hasReturned(code)) << process.errors().constData();
    }
    void call(const QStringList &arguments, int code = 0) const { expectReturn(*begin(arguments), code); }

    bool hasLauncher(const ChildProcess &process) const
    {
        return !screen_.windowsOf(process.pid()).isEmpty();
    }
    /// Waits for the launcher of \a process to have the keyboard, and types there.
    void type(const ChildProcess &process, const QString &text, const QString &key) const
    {
        const QString window = screen_.windowOf(process.pid());
        ASSERT_FALSE(window.isEmpty());
        ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(window); }));
        screen_.ask(QStringLiteral("xdotool"), {QStringLiteral("type"), text});
        screen_.typeKey(key);
    }
    void typeReturn(const ChildProcess &process, const QString &text) const
    {
        type(process, text, QStringLiteral("Return"));
    }
    bool isNamedOnBus(const QString &name) const
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(bus_.address(), launcherConnection);
        const bool isNamed = bus.interface()->isServiceRegistered(name);
        QDBusConnection::disconnectFromBus(launcherConnection);
        return isNamed;
    }
    QString domain() const { return home_.configFolder() + QStringLiteral("/" QUENBY_IDENTIFIER ".plist"); }
    QString other() const
    {
        const QString folder = home_.filePath(QStringLiteral("other"));
        EXPECT_TRUE(QDir().mkpath(folder));
        return folder;
    }
};

} // namespace

TEST_F(LauncherProgramTest, TheRunningHelperOpensItAndCreatesInTheFoldersAsOneStep)
{
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    // Nobody tells of this.
    QNBSettings changed = settings();
    changed.presets.removeFirst();
    store(changed);
    call({launcherOption, inOption, target(), inOption, other()});
    EXPECT_TRUE(waitUntil([&] { return helper->errors().contains("presets in the menu: 1"); }))
        << "the tray and the hot key go by what was found";
    ASSERT_NO_FATAL_FAILURE(typeReturn(*helper, QStringLiteral("photo")));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Raw/")));
    EXPECT_THAT(tree(other()), ElementsAre(QStringLiteral("Raw/")));
    call({QStringLiteral("--undo")});
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_THAT(tree(other()), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(LauncherProgramTest, APresetThatIsAddedWhileItIsOpenIsShown)
{
    useTarget();
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    call({launcherOption});
    ASSERT_NO_FATAL_FAILURE(type(*helper, QStringLiteral("mor"), QStringLiteral("Right")));
    QNBSettings more = settings();
    more.presets.append(record(preset(QStringLiteral("More"), {folder(QStringLiteral("Made"), {})})));
    storeAndPost(more);
    ASSERT_TRUE(waitUntil([&] { return helper->errors().contains("presets in the menu: 3"); }));
    screen_.typeKey(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Made/")));
    expectEndOf(*helper);
}

TEST_F(LauncherProgramTest, ItsWindowHasTheIconOfTheProgram)
{
    const auto launcher = begin({launcherOption});
    const QString window = screen_.windowOf(launcher->pid());
    ASSERT_FALSE(window.isEmpty());
    const QByteArray icon =
        screen_.ask(QStringLiteral("xprop"), {QStringLiteral("-id"), window, QStringLiteral("_NET_WM_ICON")});
    EXPECT_TRUE(icon.contains("Icon (32 x 32)")) << icon.left(200).constData();
    ASSERT_NO_FATAL_FAILURE(type(*launcher, {}, QStringLiteral("Escape")));
    expectReturn(*launcher, 0);
}

TEST_F(LauncherProgramTest, ItOpensThePaneByTheProgramBesideItAndLeavesOutWhatTheBusSaid)
{
    // There is nothing to find in the search path, nor in the working folder.
    QProcessEnvironment started = environment();
    started.insert(QStringLiteral("PATH"), QString());
    started.insert(QStringLiteral("DBUS_STARTER_ADDRESS"), bus_.address());
    started.insert(QStringLiteral("DBUS_STARTER_BUS_TYPE"), QStringLiteral("session"));
    const QString name = QStringLiteral("quenby-preferences");
    StandInPrograms programs;
    programs.addAt(home_.filePath(name), name,
                   "/usr/bin/env > '" + programs.filePath(text("new")).toUtf8() + "'; /bin/mv '" +
                       programs.filePath(text("new")).toUtf8() + "' '" +
                       programs.filePath(text("env")).toUtf8() + "'");
    const auto launcher = begin({launcherOption}, started);
    ASSERT_NO_FATAL_FAILURE(type(*launcher, {}, QStringLiteral("alt+o")));
    expectReturn(*launcher, 0);
    QFile record(programs.filePath(text("env")));
    ASSERT_TRUE(waitUntil([&] { return record.exists(); }));
    EXPECT_EQ(programs.starts(name),
              QList<QByteArrayList>{{QFile::encodeName(home_.filePath(QStringLiteral("Quenby.prefPane")))}});
    ASSERT_TRUE(record.open(QIODevice::ReadOnly));
    const QByteArray variables = record.readAll();
    EXPECT_TRUE(variables.contains("DBUS_SESSION_BUS_ADDRESS="));
    EXPECT_FALSE(variables.contains("DBUS_STARTER_"));
}

TEST_F(LauncherProgramTest, WithoutAHelperItIsAProcessOfItsOwnThatEndsWhenAllIsDone)
{
    const FakeDesktop desktop(bus_.address(), {QStringLiteral("actions")});
    const auto launcher = begin({launcherOption, inOption, target()});
    ASSERT_NO_FATAL_FAILURE(typeReturn(*launcher, QStringLiteral("let")));
    expectReturn(*launcher, 0);
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_EQ(desktop.shown().constFirst().title, QStringLiteral("\"Letters\" was created"));
    EXPECT_THAT(desktop.shown().constFirst().actions, IsEmpty()) << "nobody is there to hear of them";
    // The folder is remembered, for this process and for a helper.
    const auto again = begin({launcherOption});
    ASSERT_FALSE(screen_.windowOf(again->pid()).isEmpty());
    EXPECT_FALSE(isNamedOnBus(HelperService::name)) << "whether the helper runs is the user's choice";
    ASSERT_NO_FATAL_FAILURE(typeReturn(*again, QStringLiteral("photo")));
    expectReturn(*again, 0);
    EXPECT_THAT(tree(),
                ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt"), QStringLiteral("Raw/")));
}

TEST_F(LauncherProgramTest, TheLastCreationIsUndoneFromThereAlsoWithoutAHelper)
{
    const FakeDesktop desktop(bus_.address(), {});
    call({QStringLiteral("--create"), lettersLabel, inOption, target()});
    ASSERT_FALSE(tree().isEmpty());
    const auto launcher = begin({launcherOption});
    ASSERT_NO_FATAL_FAILURE(type(*launcher, {}, QStringLiteral("alt+u")));
    expectReturn(*launcher, 0);
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(LauncherProgramTest, ABusThatIsSilentOnlyHoldsItUp)
{
    const SilentSocket silent;
    QProcessEnvironment withSilentBus = environment();
    withSilentBus.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), silent.busAddress());
    const auto launcher = begin({launcherOption, inOption, target()}, withSilentBus);
    ASSERT_NO_FATAL_FAILURE(typeReturn(*launcher, QStringLiteral("let")));
    EXPECT_TRUE(waitUntil([&] { return tree().size() == 2; }));
    // That it was created is told in a window.
    expectEndOf(*launcher);
}

TEST_F(LauncherProgramTest, WithoutABusItCreatesAllTheSameAndTellsAFailureInAWindow)
{
    const QProcessEnvironment withoutBus = screen_.environmentFrom(home_.environment());
    const auto launcher = begin({launcherOption, inOption, target()}, withoutBus);
    ASSERT_NO_FATAL_FAILURE(typeReturn(*launcher, QStringLiteral("let")));
    expectReturn(*launcher, 0);
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));

    const auto failing =
        begin({launcherOption, inOption, home_.filePath(QStringLiteral("gone"))}, withoutBus);
    ASSERT_NO_FATAL_FAILURE(typeReturn(*failing, QStringLiteral("let")));
    const QString told = screen_.windowNamed(QStringLiteral("Quenby"));
    ASSERT_FALSE(told.isEmpty());
    ASSERT_TRUE(screen_.activate(told));
    screen_.typeKey(QStringLiteral("Return"));
    expectReturn(*failing, 0);
}

TEST_F(LauncherProgramTest, ASecondCallComesToTheWindowThatIsOpenAlsoWithoutAHelper)
{
    const FakeDesktop desktop(bus_.address(), {});
    const auto launcher = begin({launcherOption, inOption, other()});
    ASSERT_TRUE(waitUntil([&] { return isNamedOnBus(HelperService::launcherName); }));
    ASSERT_NO_FATAL_FAILURE(type(*launcher, QStringLiteral("pho"), QStringLiteral("Right")));
    // It comes to the pointer once it has the new folder.
    const QPoint pointer(100, 100);
    screen_.moveMouse(pointer);
    call({launcherOption, inOption, target()});
    const QString window = screen_.windowOf(launcher->pid());
    constexpr int frame = 40;
    ASSERT_TRUE(waitUntil(
        [&] { return QRect(pointer, QSize(frame, frame)).contains(screen_.placeOf(window).topLeft()); }));
    EXPECT_EQ(screen_.windowsOf(launcher->pid()).size(), 1);
    QString error;
    EXPECT_FALSE(order(lettersLabel, &error)) << "it is no helper";
    // What was typed is typed over, and the folder is the new one.
    ASSERT_NO_FATAL_FAILURE(typeReturn(*launcher, QStringLiteral("let")));
    expectReturn(*launcher, 0);
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
    EXPECT_THAT(tree(other()), IsEmpty());
}

TEST_F(LauncherProgramTest, EscapeEndsAProcessOfItsOwnAndASignalDoesToo)
{
    const auto launcher = begin({launcherOption});
    ASSERT_NO_FATAL_FAILURE(type(*launcher, QStringLiteral("let"), QStringLiteral("Escape")));
    expectReturn(*launcher, 0);
    const auto ended = begin({launcherOption});
    ASSERT_FALSE(screen_.windowOf(ended->pid()).isEmpty());
    expectEndOf(*ended);
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(LauncherProgramTest, TheEntryThatAnEarlierVersionGaveFileManagersOpensIt)
{
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    call({QStringLiteral("--menu"), QStringLiteral("--notify"), inOption, target()});
    ASSERT_NO_FATAL_FAILURE(typeReturn(*helper, QStringLiteral("raw")));
    // Nothing matches: a part of the label counts, not of what is in the preset.
    EXPECT_TRUE(hasLauncher(*helper));
    for (int i = 0; i < 3; ++i)
        screen_.typeKey(QStringLiteral("BackSpace"));
    screen_.typeKey(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 1; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
    expectEndOf(*helper);
}

TEST_F(LauncherProgramTest, WhatAnOldMenuShowsAndIsGoneIsNotCreatedAndTheOthersAreShown)
{
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    for (const QStringList &entry :
         {QStringList{QStringLiteral("Gone"), QStringLiteral("--position"), QStringLiteral("1")},
          QStringList{lettersLabel, QStringLiteral("--position"), QStringLiteral("2")},
          // As entries were written once.
          QStringList{QStringLiteral("#2")}}) {
        const qsizetype told = desktop.shown().size();
        call(QStringList{QStringLiteral("--create")} + entry +
                 QStringList{QStringLiteral("--notify"), inOption, target()},
             2);
        ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() > told; }));
        EXPECT_THAT(desktop.shown().constLast().title.toStdString(), HasSubstr("was not created"));
        EXPECT_THAT(desktop.shown().constLast().text.toStdString(),
                    HasSubstr(entry.constFirst().toStdString()));
        ASSERT_NO_FATAL_FAILURE(type(*helper, QStringLiteral("let"), QStringLiteral("Escape")));
        EXPECT_TRUE(waitUntil([&] { return !hasLauncher(*helper); }));
        EXPECT_THAT(tree(), IsEmpty());
    }
    expectEndOf(*helper);
}

TEST_F(LauncherProgramTest, TheRunningHelperOpensItWithThePresetsItKnewLastIfTheyCannotBeRead)
{
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    ASSERT_TRUE(QFile::rename(domain(), home_.filePath(QStringLiteral("aside"))));
    // What a folder in its place holds nobody can say.
    ASSERT_TRUE(QDir().mkdir(domain()));
    call({launcherOption, inOption, target()});
    ASSERT_NO_FATAL_FAILURE(typeReturn(*helper, QStringLiteral("let")));
    EXPECT_TRUE(waitUntil([&] {
        const auto &shown = desktop.shown();
        return std::any_of(shown.begin(), shown.end(), [](const auto &notice) {
            return notice.title == QStringLiteral("\"Letters\" was not created");
        });
    }));
    expectEndOf(*helper);
}

TEST_F(LauncherProgramTest, PresetsThatCannotBeReadAreTriedAgainInAProcessOfItsOwn)
{
    const QString aside = home_.filePath(QStringLiteral("aside"));
    ASSERT_TRUE(QFile::rename(domain(), aside));
    // What a folder in its place holds nobody can say.
    ASSERT_TRUE(QDir().mkdir(domain()));
    const FakeDesktop desktop(bus_.address(), {});
    const auto launcher = begin({launcherOption, inOption, target()});
    ASSERT_NO_FATAL_FAILURE(typeReturn(*launcher, QStringLiteral("let")));
    EXPECT_TRUE(hasLauncher(*launcher));
    // It is tried again, and what was typed stays.
    ASSERT_TRUE(QDir().rmdir(domain()));
    ASSERT_TRUE(QFile::rename(aside, domain()));
    ASSERT_TRUE(waitUntil([&] {
        screen_.typeKey(QStringLiteral("Return"));
        return !launcher->isRunning();
    }));
    expectReturn(*launcher, 0);
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("In/"), QStringLiteral("In/a.txt")));
}
