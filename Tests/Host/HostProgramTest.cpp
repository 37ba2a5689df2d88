// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Host/HostProgramFixture.h"
#include "Tests/Hosting/TestBundle.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QDir>
#include <QFile>

#include <chrono>
#include <csignal>
#include <gmock/gmock.h>

using namespace std::chrono_literals;
using ::testing::HasSubstr;

namespace {

const QByteArray wholeLife = "created\nloadMainView\nmainViewDidLoad\ndidSelect\n"
                             "didUnselect\ndestroyed\nview destroyed\n";

class HostProgramTest : public HostProgramFixture
{
protected:
    /// The program paints, and ends, long before the 25 seconds for which the bus library waits for an
    /// answer.
    void expectNoLongDelay()
    {
        QProcessEnvironment environment = environment_;
        environment.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
        ChildProcess host(program(), {}, environment);
        EXPECT_TRUE(host.waitForEnd(10s));
        EXPECT_TRUE(host.hasReturned(0));
        EXPECT_TRUE(host.errors().contains("first-paint-ns: ")) << host.errors().constData();
        EXPECT_EQ(record(), wholeLife);
        QFile::remove(recordPath());
    }
    void expectWholeLifeAfter(int signal)
    {
        ChildProcess host(program(), {}, environment_);
        ASSERT_TRUE(waitForRecord("didSelect"));
        host.signal(signal);
        ASSERT_TRUE(host.waitForEnd());
        EXPECT_TRUE(host.hasReturned(0));
        EXPECT_EQ(record(), wholeLife);
    }
};

} // namespace

TEST_F(HostProgramTest, TellsItsVersionWithoutAScreen)
{
    environment_.remove(QStringLiteral("QT_QPA_PLATFORM"));
    for (const QString &option : {QStringLiteral("--version"), QStringLiteral("-v")}) {
        ChildProcess host(program(), {option}, environment_);
        ASSERT_TRUE(host.waitForEnd());
        EXPECT_TRUE(host.hasReturned(0));
        EXPECT_EQ(host.output(), "quenby-preferences " QUENBY_VERSION "\n");
    }
}

TEST_F(HostProgramTest, TellsItsUseWithoutAScreen)
{
    environment_.remove(QStringLiteral("QT_QPA_PLATFORM"));
    ChildProcess host(program(), {QStringLiteral("--help")}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    const QByteArray output = host.output();
    EXPECT_TRUE(output.contains("[options] [pane]")) << output.constData();
    EXPECT_TRUE(output.contains("--version")) << output.constData();
}

TEST_F(HostProgramTest, SaysThatThereIsNoDisplayAndEnds)
{
    for (const QString &variable : {QStringLiteral("DISPLAY"), QStringLiteral("WAYLAND_DISPLAY")})
        environment_.remove(variable);
    for (const char *platform : {"", "xcb", "wayland", "no-such-plug-in"}) {
        environment_.insert(QStringLiteral("QT_QPA_PLATFORM"), QString::fromLatin1(platform));
        ChildProcess host(program(), {}, environment_);
        ASSERT_TRUE(host.waitForEnd()) << platform;
        EXPECT_TRUE(host.hasReturned(1)) << platform;
        EXPECT_THAT(host.errors().toStdString(),
                    HasSubstr("\nquenby-preferences: No window can be shown: no display answers"))
            << platform;
    }
}

TEST_F(HostProgramTest, RefusesWhatItDoesNotKnow)
{
    for (const QStringList &arguments : {QStringList(QStringLiteral("--nonsense")),
                                         QStringList({QStringLiteral("a"), QStringLiteral("b")})}) {
        ChildProcess host(program(), arguments, environment_);
        ASSERT_TRUE(host.waitForEnd());
        EXPECT_TRUE(host.hasReturned(1));
        EXPECT_FALSE(host.errors().isEmpty());
    }
    EXPECT_EQ(record(), "");
}

TEST_F(HostProgramTest, TheHomeOfAnotherUserIsRefused)
{
    environment_.insert(QStringLiteral("HOME"), home_.homeOfAnother());
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(1));
    const QByteArray errors = host.errors();
    EXPECT_TRUE(errors.contains("belongs to another user")) << errors.constData();
    EXPECT_EQ(errors.count('\n'), 1) << errors.constData();
    EXPECT_EQ(record(), "");
}

TEST_F(HostProgramTest, LeavesThePaneOnSIGTERM)
{
    expectWholeLifeAfter(SIGTERM);
}

TEST_F(HostProgramTest, LeavesThePaneOnSIGINT)
{
    expectWholeLifeAfter(SIGINT);
}

TEST_F(HostProgramTest, LeavesThePaneOnSIGHUP)
{
    expectWholeLifeAfter(SIGHUP);
}

TEST_F(HostProgramTest, SeveralSignalsAtOnceLeaveThePaneOnce)
{
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    for (int count = 0; count < 20; ++count) {
        host.signal(SIGTERM);
        host.signal(SIGHUP);
    }
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_EQ(record(), wholeLife);
}

TEST_F(HostProgramTest, ASignalBeforeTheWindowIsNotLost)
{
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(waitUntil([&] { return catches(host.pid(), SIGHUP); }));
    host.signal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_EQ(record(), wholeLife);
}

TEST_F(HostProgramTest, ASignalWhileThePaneLoadsIsNotLost)
{
    setBehaviour(QStringLiteral("start slowly"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("loadMainView"));
    host.signal(SIGTERM);
    QFile goOn(goOnPath());
    ASSERT_TRUE(goOn.open(QIODevice::WriteOnly));
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_EQ(record(), wholeLife);
}

TEST_F(HostProgramTest, ASignalEndsAPanelsLoopBeforeThePaneIsLeft)
{
    setBehaviour(QStringLiteral("ask a question"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("asking"));
    host.signal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_TRUE(record().endsWith("didSelect\nasking\nasked\ndidUnselect\ndestroyed\nview destroyed\n"))
        << record().constData();
}

TEST_F(HostProgramTest, AnExitFromWithinTheEventLoopLeavesThePane)
{
    setBehaviour(QStringLiteral("exit"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(1));
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\ndidSelect\ndidUnselect\ndestroyed\n");
}

TEST_F(HostProgramTest, AnExitFromWithinAPanelsLoopLeavesThePane)
{
    setBehaviour(QStringLiteral("exit from a question"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(1));
    EXPECT_TRUE(record().endsWith("didSelect\nasking\ndidUnselect\ndestroyed\n")) << record().constData();
}

TEST_F(HostProgramTest, EndedByASignalItSaysThatItCouldNotSave)
{
    setBehaviour(QStringLiteral("fail to save"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    host.signal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd()) << "nobody is asked";
    EXPECT_TRUE(host.hasReturned(1));
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\ndidSelect\n"
                        "didUnselect\nsave\ndestroyed\nview destroyed\n");
}

TEST_F(HostProgramTest, UnderNohupTheEndOfTheTerminalIsIgnored)
{
    ChildProcess host(QStringLiteral("nohup"), {program()}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    host.signal(SIGHUP);
    EXPECT_FALSE(catches(host.pid(), SIGHUP));
    EXPECT_TRUE(catches(host.pid(), SIGTERM));
    host.signal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(record(), wholeLife);
}

TEST_F(HostProgramTest, TheWindowOpensWithoutDelayWithABus)
{
    const PrivateBus bus;
    environment_ = home_.environment(bus.address());
    environment_.insert(QStringLiteral("QUENBY_TEST_RECORD"), recordPath());
    expectNoLongDelay();
}

TEST_F(HostProgramTest, TheWindowOpensWithoutDelayWithoutABus)
{
    expectNoLongDelay();
    environment_.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    expectNoLongDelay();
}

TEST_F(HostProgramTest, TheWindowOpensWithoutDelayWithAStaleBus)
{
    PrivateBus bus;
    bus.kill();
    environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus.address());
    expectNoLongDelay();
}

TEST_F(HostProgramTest, TheWindowOpensWithoutDelayWithASilentBus)
{
    const SilentSocket silent;
    environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), silent.busAddress());
    expectNoLongDelay();
}

TEST_F(HostProgramTest, AfterAKilledOneANewStartWorks)
{
    {
        ChildProcess killed(program(), {}, environment_);
        ASSERT_TRUE(waitForRecord("didSelect"));
        killed.signal(SIGKILL);
        ASSERT_TRUE(killed.waitForEnd());
    }
    QFile::remove(recordPath());
    expectWholeLifeAfter(SIGTERM);
}

TEST_F(HostProgramTest, APaneBesideTheProgramGoesBeforeTheUsersOfThatName)
{
    const QString beside = home_.filePath(QStringLiteral("bin/Recording.prefPane"));
    TestBundle::make(beside, {});
    environment_.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    const QByteArray errors = host.errors();
    EXPECT_TRUE(errors.contains("The executable of " + beside.toUtf8() + " is missing"))
        << errors.constData();
    EXPECT_EQ(record(), "");
}

TEST_F(HostProgramTest, WithSeveralPanesNoneIsOpenedUnasked)
{
    TestBundle::make(home_.systemDataFolder() + QStringLiteral("/PreferencePanes/Other.prefPane"),
                     TestBundle::recordingPane());
    environment_.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_EQ(record(), "");
    ChildProcess named(program(), {QStringLiteral("Other")}, environment_);
    ASSERT_TRUE(named.waitForEnd());
    EXPECT_EQ(record(), wholeLife);
}

TEST_F(HostProgramTest, ANameIsNoPaneOfTheWorkingFolder)
{
    TestBundle::make(home_.filePath(QStringLiteral("work/Evil.prefPane")), TestBundle::recordingPane());
    environment_.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    ChildProcess host(QStringLiteral("/bin/sh"),
                      {QStringLiteral("-c"), QStringLiteral("cd \"$1\" && exec \"$2\" Evil.prefPane"),
                       QStringLiteral("sh"), home_.filePath(QStringLiteral("work")), program()},
                      environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.errors().contains("There is no settings pane called \"Evil.prefPane\""))
        << host.errors().constData();
    EXPECT_EQ(record(), "");
}

TEST_F(HostProgramTest, WithoutAnyPaneThereIsAPageThatSaysSo)
{
    ASSERT_TRUE(QDir(panePath()).removeRecursively());
    environment_.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    ChildProcess host(program(), {}, environment_);
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_TRUE(host.hasReturned(0));
    EXPECT_TRUE(host.errors().contains("first-paint-ns: "));
}
