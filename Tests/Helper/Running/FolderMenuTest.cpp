// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/FolderMenu.h"

#include "Helper/HelperService.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/Running/RunningFixture.h"

#include <QAction>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>

#include <csignal>
#include <gmock/gmock.h>
#include <optional>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const QString connectionName = QStringLiteral("folder-menu-test");

struct Chosen
{
    qsizetype place = -1;
    QString label;
    int panes = 0;
};

FolderMenu::Handlers noting(Chosen &chosen)
{
    return {.create =
                [&chosen](qsizetype place, const QString &label) {
                    chosen.place = place;
                    chosen.label = label;
                },
            .openPane = [&chosen] { ++chosen.panes; }};
}

QStringList textsOf(const QMenu &menu)
{
    QStringList texts;
    const QList<QAction *> actions = menu.actions();
    for (const QAction *action : actions)
        texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

class FolderMenuProgramTest : public RunningFixture
{
protected:
    /// Runs the command line, which has the bus and the screen, until it ends.
    int call(const QStringList &arguments) const
    {
        ChildProcess process(program(), arguments, environment());
        // A fake of the test may have to answer meanwhile.
        EXPECT_TRUE(waitUntil([&] { return !process.isRunning(); }, std::chrono::minutes(1)));
        EXPECT_TRUE(process.waitForEnd());
        for (int code = 0; code < 10; ++code) {
            if (process.hasReturned(code))
                return code;
        }
        return -1;
    }
    int callMenu(const QStringList &more = {}) const
    {
        return call(QStringList{QStringLiteral("--menu"), QStringLiteral("--in"), target()} + more);
    }
    /// Waits for the menu of the process \a pid, and chooses its \a position-th preset.
    void choose(qint64 pid, int position) const
    {
        ASSERT_TRUE(waitUntil([&] { return !screen_.windowsOf(pid).isEmpty(); }));
        for (int i = 0; i < position; ++i)
            screen_.typeKey(QStringLiteral("Down"));
        screen_.typeKey(QStringLiteral("Return"));
    }
    /// The process of the helper on the bus; 0 if there is none.
    qint64 helperOnBus() const
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(bus_.address(), connectionName);
        const QDBusReply<uint> pid = bus.interface()->servicePid(HelperService::name);
        QDBusConnection::disconnectFromBus(connectionName);
        return pid.isValid() ? pid.value() : 0;
    }
};

} // namespace

TEST(FolderMenuTest, ItShowsThePresetsAndWhereTheyAreCreated)
{
    Chosen chosen;
    FolderMenu menu({QStringLiteral("R&D"), QStringLiteral("a\u202Eb"), QStringLiteral("R&D")},
                    {QStringLiteral("/some/where")}, noting(chosen));
    EXPECT_THAT(textsOf(menu.menu()),
                ElementsAre(QStringLiteral("Create in /some/where:"), QStringLiteral("-"),
                            QStringLiteral("R&&D"), QStringLiteral("a<U+202E>b"), QStringLiteral("R&&D"),
                            QStringLiteral("-"), QStringLiteral("Open Quenby…")));
    EXPECT_FALSE(menu.menu().actions().constFirst()->isEnabled());
    menu.menu().actions().at(4)->trigger();
    EXPECT_EQ(chosen.place, 2);
    EXPECT_EQ(chosen.label, QStringLiteral("R&D"));
    menu.menu().actions().constLast()->trigger();
    EXPECT_EQ(chosen.panes, 1);
}

TEST(FolderMenuTest, SeveralFoldersAreCountedAndNoPresetsAreTold)
{
    Chosen chosen;
    FolderMenu menu({}, {QStringLiteral("/a"), QStringLiteral("/b")}, noting(chosen));
    EXPECT_THAT(textsOf(menu.menu()), ElementsAre(QStringLiteral("Create in 2 folders:"), QStringLiteral("-"),
                                                  QStringLiteral("No Presets"), QStringLiteral("-"),
                                                  QStringLiteral("Open Quenby…")));
    EXPECT_FALSE(menu.menu().actions().at(2)->isEnabled());
}

TEST_F(FolderMenuProgramTest, WhatIsChosenIsCreatedInTheFoldersAsOneStep)
{
    store(settings());
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    const QString other = home_.filePath(QStringLiteral("other"));
    ASSERT_TRUE(QDir().mkpath(other));
    // Nobody tells of this.
    QNBSettings changed = settings();
    changed.presets.removeFirst();
    store(changed);
    EXPECT_EQ(callMenu({QStringLiteral("--in"), other}), 0);
    ASSERT_NO_FATAL_FAILURE(choose(helper->pid(), 1));
    ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() == 2; }));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Raw/")));
    EXPECT_THAT(tree(other), ElementsAre(QStringLiteral("Raw/")));
    EXPECT_EQ(call({QStringLiteral("--undo")}), 0);
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_THAT(tree(other), IsEmpty());
    expectEndOf(*helper);
}

TEST_F(FolderMenuProgramTest, WithoutAHelperOneIsStartedForIt)
{
    store(settings());
    EXPECT_EQ(callMenu(), 0);
    const qint64 helper = helperOnBus();
    ASSERT_GT(helper, 0);
    ASSERT_NO_FATAL_FAILURE(choose(helper, 2));
    EXPECT_TRUE(waitUntil([&] { return tree() == QStringList(QStringLiteral("Raw/")); }));
    EXPECT_EQ(::kill(pid_t(helper), SIGTERM), 0);
    EXPECT_TRUE(waitUntil([&] { return helperOnBus() == 0; }));
}

TEST_F(FolderMenuProgramTest, WhatAnOldMenuShowsAndIsGoneIsNotCreatedAndTheOthersAreShown)
{
    store(settings());
    const FakeDesktop desktop(bus_.address(), {});
    const auto helper = start();
    for (const QStringList &entry :
         {QStringList{QStringLiteral("Gone"), QStringLiteral("--position"), QStringLiteral("1")},
          QStringList{QStringLiteral("Letters"), QStringLiteral("--position"), QStringLiteral("2")},
          // As entries were written once.
          QStringList{QStringLiteral("#2")}}) {
        const qsizetype told = desktop.shown().size();
        EXPECT_EQ(call(QStringList{QStringLiteral("--create")} + entry +
                       QStringList{QStringLiteral("--notify"), QStringLiteral("--in"), target()}),
                  2);
        ASSERT_TRUE(waitUntil([&] { return desktop.shown().size() > told; }));
        EXPECT_THAT(desktop.shown().constLast().title.toStdString(), HasSubstr("was not created"));
        EXPECT_THAT(desktop.shown().constLast().text.toStdString(),
                    HasSubstr(entry.constFirst().toStdString()));
        EXPECT_TRUE(waitUntil([&] { return !screen_.windowsOf(helper->pid()).isEmpty(); }));
        EXPECT_THAT(tree(), IsEmpty());
        screen_.typeKey(QStringLiteral("Escape"));
        EXPECT_TRUE(waitUntil([&] { return screen_.windowsOf(helper->pid()).isEmpty(); }));
    }
    expectEndOf(*helper);
}
