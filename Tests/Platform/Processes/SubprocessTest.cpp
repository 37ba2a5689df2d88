// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/Subprocess.h"

#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class SubprocessTest : public FileFixture
{
protected:
    ~SubprocessTest() override { EXPECT_TRUE(waitUntil(hasNoChild)); }

    Result<> startShell(Subprocess &process, const QByteArray &commands,
                        const QByteArrayList &environment = {})
    {
        return process.start("/bin/sh", {"-c", commands, "sh", in(QStringLiteral("result")).toUtf8()},
                             environment);
    }
    /// A line of the kernel's account of a process, which is the result.
    quint64 signalsIn(const QByteArray &name) const
    {
        const QByteArray status = result();
        const qsizetype begin = status.indexOf(name + ":\t");
        EXPECT_NE(begin, -1) << status.constData();
        return status.mid(begin + name.size() + 2, 16).toULongLong(nullptr, 16);
    }
    QByteArray result() const { return contentOf(in(QStringLiteral("result"))); }
};

} // namespace

TEST_F(SubprocessTest, TellsItsEnd)
{
    Subprocess process;
    ASSERT_TRUE(startShell(process, "exit 3"));
    std::optional<int> status;
    process.setEndHandler([&status](int ended) { status = ended; });
    EXPECT_TRUE(waitUntil([&status] { return status.has_value(); }));
    EXPECT_TRUE(WIFEXITED(*status));
    EXPECT_EQ(WEXITSTATUS(*status), 3);
    EXPECT_FALSE(process.isRunning());
    EXPECT_FALSE(process.signal(SIGTERM));
}

TEST_F(SubprocessTest, ItsOutputIsKeptForWhoWantsIt)
{
    Subprocess process;
    process.keepOutput();
    ASSERT_TRUE(startShell(process, "echo said; echo complained >&2"));
    EXPECT_TRUE(waitUntil([&process] { return !process.isRunning(); }));
    EXPECT_EQ(process.output(100), "said\n");
    EXPECT_EQ(process.errors(100), "complained\n");
    EXPECT_EQ(process.output(2), "sa");
}

TEST_F(SubprocessTest, ReadsWhatIsWrittenUntilItsInputIsClosed)
{
    Subprocess process;
    ASSERT_TRUE(startShell(process, "cat > \"$1\""));
    EXPECT_TRUE(process.write("one "));
    EXPECT_TRUE(process.write("two"));
    EXPECT_TRUE(process.isRunning());
    process.closeInput();
    EXPECT_FALSE(process.write("three"));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(result(), "one two");
}

TEST_F(SubprocessTest, WritingToOneThatEndedFails)
{
    Subprocess process;
    ASSERT_TRUE(startShell(process, "exit 0"));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_FALSE(process.write("anything"));
}

TEST_F(SubprocessTest, OutlivesItsOwnerWhoIsNotToldOfItsEnd)
{
    bool told = false;
    {
        Subprocess process;
        ASSERT_TRUE(startShell(process, "cat; echo done > \"$1\""));
        process.setEndHandler([&told](int) { told = true; });
    }
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(result(), "done\n");
    EXPECT_FALSE(told);
}

TEST_F(SubprocessTest, MayBeHeldByItsOwnHandler)
{
    const auto process = std::make_shared<Subprocess>();
    ASSERT_TRUE(startShell(*process, "exit 0"));
    const std::weak_ptr<Subprocess> seen = process;
    bool told = false;
    process->setEndHandler([process, &told](int) { told = true; });
    EXPECT_TRUE(waitUntil([&told] { return told; }));
    EXPECT_EQ(seen.use_count(), 1) << "only this test holds it still";
}

TEST_F(SubprocessTest, SaysWhyItCouldNotBeStarted)
{
    Subprocess process;
    const Result<> started = process.start("/no/such program", {});
    EXPECT_FALSE(started);
    EXPECT_EQ(started.error, QStringLiteral("cannot start /no/such program: No such file or directory"));
    EXPECT_FALSE(process.isRunning());
    EXPECT_FALSE(process.write("anything"));
}

TEST_F(SubprocessTest, ItsEnvironmentIsOursWithWhatIsGiven)
{
    qputenv("QUENBY_TEST_KEPT", "kept");
    qputenv("QUENBY_TEST_REPLACED", "old");
    // Said by a bus, to this process alone.
    qputenv("DBUS_STARTER_ADDRESS", "bus");
    qputenv("DBUS_STARTER_BUS_TYPE", "session");
    Subprocess process;
    ASSERT_TRUE(startShell(process,
                           "echo $QUENBY_TEST_KEPT $QUENBY_TEST_REPLACED $QUENBY_TEST_NEW "
                           "$DBUS_STARTER_ADDRESS $DBUS_STARTER_BUS_TYPE > \"$1\"",
                           {"QUENBY_TEST_REPLACED=new", "QUENBY_TEST_NEW=there"}));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(result(), "kept new there\n");
    qunsetenv("DBUS_STARTER_ADDRESS");
    qunsetenv("DBUS_STARTER_BUS_TYPE");
}

TEST_F(SubprocessTest, BeginsWithPlainSignalsInAGroupOfItsOwn)
{
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigset_t before;
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, &before), 0);
    const auto handled = ::signal(SIGPIPE, SIG_IGN);
    Subprocess process;
    const Result<> started = startShell(process, "cat /proc/self/status > \"$1\"; cat");
    ::signal(SIGPIPE, handled);
    ASSERT_EQ(::pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
    ASSERT_TRUE(started);
    EXPECT_EQ(::getpgid(process.pid()), process.pid());
    process.closeInput();
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(signalsIn("SigBlk"), 0u);
    // The C library keeps two for itself.
    EXPECT_EQ(signalsIn("SigIgn") & (quint64(1) << (SIGPIPE - 1)), 0u);
}

TEST_F(SubprocessTest, IsSignalled)
{
    Subprocess process;
    ASSERT_TRUE(startShell(process, "cat"));
    std::optional<int> status;
    process.setEndHandler([&status](int ended) { status = ended; });
    EXPECT_TRUE(process.signal(SIGTERM));
    EXPECT_TRUE(waitUntil([&status] { return status.has_value(); }));
    EXPECT_TRUE(WIFSIGNALED(*status));
}
