// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/ScriptProcess.h"

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Outcome = ScriptResult::Outcome;

namespace {

/// Longer than any of these scripts takes on a busy machine, unless it is to be ended.
constexpr auto longTime = 60s;

class ScriptProcessTest : public ::testing::Test
{
protected:
    ScriptProcessTest() { limits_.duration = longTime; }
    ~ScriptProcessTest() override { EXPECT_TRUE(hasNoChild()); }

    ScriptResult shell(const QByteArray &commands)
    {
        return ScriptProcess::run("/bin/sh", {"-c", commands, "sh", path("note")}, folder(), limits_);
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
    return ::kill(pid_t(pid.trimmed().toLongLong()), 0) == -1 && errno == ESRCH;
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
