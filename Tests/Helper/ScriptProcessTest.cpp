// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptProcess.h"

#include "Platform/Processes/ProcessTable.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Outcome = ScriptResult::Outcome;

namespace {

/// Longer than any of these scripts takes on a busy machine, unless it is to be ended.
constexpr auto scriptPatience = 60s;

class ScriptProcessTest : public ::testing::Test
{
protected:
    ScriptProcessTest() { limits_.duration = scriptPatience; }
    ~ScriptProcessTest() override { EXPECT_TRUE(hasNoChild()); }

    ScriptResult shell(const QByteArray &commands)
    {
        return ScriptProcess::run("/bin/sh", {"-c", commands, "sh", path("note")}, folder(), limits_);
    }
    /// Ended when these commands, and what they leave running, have made a note.
    ScriptResult interruptedShell(const QByteArray &commands)
    {
        QFile::remove(QFile::decodeName(path("pipe")));
        EXPECT_EQ(::mkfifo(path("pipe").constData(), 0600), 0);
        const int pipe = ::open(path("pipe").constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        limits_.interruption = pipe;
        ScriptResult result = shell(commands + "\nwhile [ ! -s \"$1\" ]; do sleep 0.01; done; echo >" +
                                    path("pipe") + "; sleep 600");
        ::close(pipe);
        return result;
    }
    QByteArray folder() const { return QFile::encodeName(folder_.path()); }
    QByteArray path(const QByteArray &name) const { return folder() + '/' + name; }
    QByteArray note() const
    {
        QFile file(QFile::decodeName(path("note")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    ScriptLimits limits_;

private:
    QTemporaryDir folder_;
};

/// Whether the process has ended, whoever's child it is.
bool hasEnded(const QByteArray &pid)
{
    // Or waits for the first process of the system, which need not be in a hurry.
    return !ProcessTable::getProcessForPID(pid_t(pid.trimmed().toLongLong()));
}

/// How many processes have \a folder as their working directory.
int processesIn(const QByteArray &folder)
{
    int count = 0;
    for (const QString &process : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        count += QFileInfo(QStringLiteral("/proc/%1/cwd").arg(process)).canonicalFilePath() ==
                         QFile::decodeName(folder)
                     ? 1
                     : 0;
    return count;
}

} // namespace

TEST_F(ScriptProcessTest, TellsTheExitStatus)
{
    EXPECT_TRUE(shell("exit 0").hasSucceeded());
    const ScriptResult result = shell("exit 3");
    EXPECT_EQ(result.outcome, Outcome::Exited);
    EXPECT_EQ(result.code, 3);
    EXPECT_FALSE(result.hasSucceeded());
    EXPECT_TRUE(result.failure().contains(u'3'));
}

TEST_F(ScriptProcessTest, TellsTheSignal)
{
    const ScriptResult result = shell("kill -USR1 $$");
    EXPECT_EQ(result.outcome, Outcome::Signalled);
    EXPECT_EQ(result.code, SIGUSR1);
    EXPECT_FALSE(result.failure().isEmpty());
}

TEST_F(ScriptProcessTest, KeepsBothOutputsInTheirOrder)
{
    EXPECT_EQ(shell("echo one; echo two >&2; echo three").output, "one\ntwo\nthree\n");
}

TEST_F(ScriptProcessTest, KeepsSoMuchOutputAndCountsTheRest)
{
    limits_.output = 1000;
    const ScriptResult result = shell("head -c 3000000 /dev/zero");
    EXPECT_TRUE(result.hasSucceeded());
    EXPECT_EQ(result.output, QByteArray(1000, '\0'));
    EXPECT_EQ(result.omittedOutput, 3000000 - 1000);
}

TEST_F(ScriptProcessTest, HasNothingToReadAndRunsInTheFolder)
{
    const ScriptResult result = shell("cat; pwd -P; echo \"$1\"");
    EXPECT_EQ(result.output, QFile::encodeName(QDir(QFile::decodeName(folder())).canonicalPath()) + '\n' +
                                 path("note") + '\n');
}

TEST_F(ScriptProcessTest, IsNotTheOneThatIgnoresASignalThisProgramIgnores)
{
    ASSERT_NE(std::signal(SIGPIPE, SIG_IGN), SIG_ERR);
    const ScriptResult result = shell("kill -PIPE $$");
    std::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(result.outcome, Outcome::Signalled);
    EXPECT_EQ(result.code, SIGPIPE);
}

TEST_F(ScriptProcessTest, InheritsTheEnvironment)
{
    ASSERT_TRUE(qputenv("QUENBY_TEST_OF_SCRIPTS", "a value"));
    const ScriptResult result = shell("echo $QUENBY_TEST_OF_SCRIPTS");
    qunsetenv("QUENBY_TEST_OF_SCRIPTS");
    EXPECT_EQ(result.output, "a value\n");
}

TEST_F(ScriptProcessTest, FindsNoProgramInTheFolderItRunsIn)
{
    for (const char *name : {"script", "quenby-test-tool"}) {
        QFile file(QFile::decodeName(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(name == QByteArray("script") ? "#!/usr/bin/env quenby-test-tool\n"
                                                : "#!/bin/sh\necho of a stranger\n");
        file.close();
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    }
    const QByteArray before = qgetenv("PATH");
    const auto printed = [this](const QByteArray &list) {
        EXPECT_TRUE(qputenv("PATH", list));
        EXPECT_TRUE(qputenv("LD_LIBRARY_PATH", list) && qputenv("PYTHONPATH", list));
        EXPECT_EQ(ScriptProcess::run(path("script"), {}, folder(), limits_).code, 127) << list.constData();
        return shell("echo $PATH,$LD_LIBRARY_PATH,$PYTHONPATH").output;
    };
    EXPECT_EQ(printed(":.:/usr/bin:in:/bin:"), "/usr/bin:/bin,/usr/bin:/bin,/usr/bin:/bin\n");
    EXPECT_EQ(printed("/usr/bin:/bin"), "/usr/bin:/bin,/usr/bin:/bin,/usr/bin:/bin\n");
    EXPECT_EQ(printed("."), "/bin:/usr/bin,,\n");
    EXPECT_EQ(printed(""), "/bin:/usr/bin,,\n");
    qunsetenv("PATH");
    EXPECT_EQ(shell("exec /usr/bin/env | grep ^PATH").output, "PATH=/bin:/usr/bin\n");
    qputenv("PATH", before);
    qunsetenv("LD_LIBRARY_PATH");
    qunsetenv("PYTHONPATH");
}

TEST_F(ScriptProcessTest, IsNotToldWhatABusSaidToThisProgram)
{
    qputenv("DBUS_STARTER_ADDRESS", "bus");
    qputenv("DBUS_STARTER_BUS_TYPE", "session");
    EXPECT_EQ(shell("echo $DBUS_STARTER_ADDRESS,$DBUS_STARTER_BUS_TYPE").output, ",\n");
    qunsetenv("DBUS_STARTER_ADDRESS");
    qunsetenv("DBUS_STARTER_BUS_TYPE");
}

TEST_F(ScriptProcessTest, IsEndedAtTheTimeLimitWithEverythingItStarted)
{
    limits_.duration = 500ms;
    const ScriptResult result =
        shell("echo before; trap '' TERM; sleep 600 & echo $! > \"$1\"; sh -c 'trap \"\" TERM; sleep 600'");
    EXPECT_EQ(result.outcome, Outcome::TimedOut);
    EXPECT_EQ(result.output, "before\n");
    EXPECT_FALSE(result.failure().isEmpty());
    ASSERT_FALSE(note().isEmpty());
    EXPECT_TRUE(waitUntil([this] { return hasEnded(note()); }));
}

TEST_F(ScriptProcessTest, NothingThatItStartedOutlivesItsEnd)
{
    for (const char *start : {
             // In a session of its own, and a child of that.
             "setsid sh -c 'sleep 600 & echo $! >\"$1\"; wait' sh \"$1\" &",
             // A daemon: its parents have ended, and it is nobody's group.
             "(setsid sh -c '(setsid sh -c \"trap \\\"\\\" TERM HUP; exec sleep 600\" & echo $! >\"$1\")' sh "
             "\"$1\" &)",
             // Stopped, so that it can do nothing itself.
             "setsid sh -c 'echo $$ >\"$1\"; kill -STOP $$' sh \"$1\" &",
         }) {
        QFile::remove(QFile::decodeName(path("note")));
        ChildProcess other(QStringLiteral("sleep"), {QStringLiteral("600")});
        const ScriptResult result = interruptedShell(start);
        EXPECT_EQ(result.outcome, Outcome::Interrupted) << start;
        ASSERT_FALSE(note().isEmpty()) << start;
        EXPECT_TRUE(hasEnded(note())) << start;
        EXPECT_TRUE(other.isRunning());
    }
}

TEST_F(ScriptProcessTest, OneThatStartsProcessesAllTheTimeIsEnded)
{
    const ScriptResult result = interruptedShell("spread() { while :; do setsid sh -c 'echo $$ >\"$1\"; exec "
                                                 "sleep 600' sh \"$1\" & sleep 0.01; done; }\n"
                                                 "spread \"$1\" & spread \"$1\" &");
    EXPECT_EQ(result.outcome, Outcome::Interrupted);
    EXPECT_TRUE(hasEnded(note()));
    // What was started last can have noted nothing: it would be in that folder.
    EXPECT_EQ(processesIn(folder()), 0);
}

TEST_F(ScriptProcessTest, OrphansOfOtherChildrenDoNotComeToThisProcess)
{
    EXPECT_TRUE(shell("exit 0").hasSucceeded());
    int isSubreaper = -1;
    ASSERT_EQ(::prctl(PR_GET_CHILD_SUBREAPER, &isSubreaper, 0, 0, 0), 0);
    EXPECT_EQ(isSubreaper, 0);
}

TEST_F(ScriptProcessTest, WhoWaitsForItHasNothingOpenOfThisProgramNorItsName)
{
    const int kept = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_NE(kept, -1);
    EXPECT_EQ(shell("n=0; while [ $n -lt 500 ] && [ \"$(ls /proc/$PPID/fd | wc -l)\" != 2 ]; do sleep 0.01; "
                    "n=$((n + 1)); done; ls /proc/$PPID/fd | wc -l; cat /proc/$PPID/comm")
                  .output,
              "2\nQNBScript\n");
    ::close(kept);
}

TEST_F(ScriptProcessTest, DoesNotWaitForWhatItLeftRunning)
{
    const ScriptResult result = shell("sleep 600 & echo $! > \"$1\"; echo done");
    EXPECT_TRUE(result.hasSucceeded());
    EXPECT_EQ(result.output, "done\n");
    EXPECT_FALSE(hasEnded(note()));
    ASSERT_EQ(::kill(pid_t(note().trimmed().toLongLong()), SIGKILL), 0);
    EXPECT_TRUE(waitUntil([this] { return hasEnded(note()); }));
}

TEST_F(ScriptProcessTest, IsNotMistakenForEndedWhenItClosesItsOutput)
{
    const ScriptResult result = shell("exec >&- 2>&-; sleep 0.2; exit 5");
    EXPECT_EQ(result.outcome, Outcome::Exited);
    EXPECT_EQ(result.code, 5);
}

TEST_F(ScriptProcessTest, IsEndedByAnInterruption)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "", 1), 1);
    limits_.interruption = ends[0];
    const ScriptResult result = shell("sleep 600");
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(result.outcome, Outcome::Interrupted);
    EXPECT_FALSE(result.failure().isEmpty());
}

TEST_F(ScriptProcessTest, IsNoShell)
{
    QFile file(QFile::decodeName(path("script")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("echo this would be a shell's to interpret\n");
    file.close();
    ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    const ScriptResult result = ScriptProcess::run(path("script"), {}, folder(), limits_);
    EXPECT_EQ(result.outcome, Outcome::CouldNotStart);
    EXPECT_EQ(result.output, "");
    EXPECT_FALSE(result.failure().isEmpty());
}

TEST_F(ScriptProcessTest, TellsThatItCannotBeStarted)
{
    EXPECT_EQ(ScriptProcess::run(path("absent"), {}, folder(), limits_).outcome, Outcome::CouldNotStart);
    EXPECT_EQ(ScriptProcess::run("/bin/true", {}, path("absent"), limits_).outcome, Outcome::CouldNotStart);
}

TEST_F(ScriptProcessTest, TellsThatNobodyKnowsOfIt)
{
    const ScriptResult result = shell("kill -KILL $PPID");
    EXPECT_EQ(result.outcome, Outcome::CouldNotStart);
    EXPECT_FALSE(result.failure().isEmpty());
}
