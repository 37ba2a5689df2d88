// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Tables that a healthy kernel does not show, or not when a test wants it.

#include "Platform/Processes/ProcessTable.h"

#include "ReusedPid.h"
#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/IdleProgram.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Above all that the kernel gives out.
constexpr pid_t noPid = 4'200'000;
const QString helperName = QStringLiteral("QNBHelper");

class ProcessTableRootTest : public FileFixture
{
protected:
    QString of(pid_t pid, const QString &file = {}) const
    {
        return in(QString::number(pid)) + (file.isEmpty() ? QString() : u'/' + file);
    }

    static QByteArray stat(pid_t pid, quint64 startTime, pid_t parent = 1)
    {
        return QByteArray::number(pid) + " (QNBHelper) S " + QByteArray::number(parent) +
               " 1 1 0 -1 4194304 95 0 0 0 0 0 0 0 20 0 1 0 " + QByteArray::number(startTime) +
               " 2539520 139\n";
    }

    ProcessSerialNumber add(pid_t pid, quint64 startTime = 1000, const QByteArray &command = "QNBHelper")
    {
        EXPECT_TRUE(QDir().mkpath(of(pid)));
        put(of(pid, QStringLiteral("stat")), stat(pid, startTime));
        put(of(pid, QStringLiteral("comm")), command + '\n');
        setUser(pid, ::getuid());
        return {quint32(startTime), quint32(pid)};
    }

    void setUser(pid_t pid, uid_t user)
    {
        const QByteArray others = '\t' + QByteArray::number(::getuid());
        put(of(pid, QStringLiteral("status")), "Name:\tQNBHelper\nUmask:\t0022\nUid:\t" +
                                                   QByteArray::number(user) + others + others + others +
                                                   "\nGid:\t0\t0\t0\t0\n");
    }

    void setExecutable(pid_t pid, const QString &path)
    {
        QFile::remove(of(pid, QStringLiteral("exe")));
        ASSERT_TRUE(QFile::link(path, of(pid, QStringLiteral("exe"))));
    }

    QList<ProcessSerialNumber> helpers() const { return ProcessTable::processesNamed(helperName, root()); }
    QList<ProcessSerialNumber> all() const { return ProcessTable::processesAfter(kNoProcess, root()); }
    std::optional<ProcessInformation> informationOf(const ProcessSerialNumber &process) const
    {
        return ProcessTable::getProcessInformation(process, root());
    }

    const ProcessSerialNumber first_ = add(noPid);
};

/// Whether who is given the id of a listed process is told apart from it, and can be meant as well.
bool isSuccessorUnharmed(const ReusedPid::Waiting &process)
{
    const auto listed = ProcessTable::getProcessForPID(process.pid, process.table);
    if (!listed || !process.replace())
        return false;
    const auto successor = ProcessTable::getProcessForPID(process.pid, process.table);
    const bool isLeftAlone = !ProcessTable::sendSignal(*listed, SIGTERM, process.table) &&
                             !ProcessTable::getProcessPID(*listed, process.table) &&
                             !ProcessTable::getProcessInformation(*listed, process.table);
    const bool isSignalled = successor && ProcessTable::sendSignal(*successor, SIGKILL, process.table);
    int status = -1;
    return isSignalled && ::waitpid(process.pid, &status, 0) == process.pid && isLeftAlone &&
           WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

} // namespace

TEST_F(ProcessTableRootTest, TheTableIsInTheOrderOfIdsHoweverItIsStored)
{
    const auto third = add(noPid + 100, 7);
    const auto second = add(noPid + 20, 9);
    EXPECT_THAT(all(), ElementsAre(first_, second, third));
    EXPECT_THAT(helpers(), ElementsAre(first_, second, third));
    EXPECT_EQ(ProcessTable::getNextProcess(first_, root()), second);
    EXPECT_EQ(ProcessTable::getNextProcess(third, root()), std::nullopt);
    EXPECT_EQ(ProcessTable::getNextProcess({1, quint32(noPid + 50)}, root()), third);
}

TEST_F(ProcessTableRootTest, AProcessWhoseIdGoesToAnotherAfterItWasListedIsNotSignalled)
{
    const IdleProgram program(helperName);
    const auto child = program.start();
    const auto listed = add(pid_t(child->pid()), 1000);
    EXPECT_THAT(helpers(), testing::Contains(listed));
    add(pid_t(child->pid()), 1001);
    EXPECT_FALSE(ProcessTable::sendSignal(listed, SIGTERM, root()));
    add(pid_t(child->pid()), 1000);
    EXPECT_TRUE(ProcessTable::sendSignal(listed, SIGKILL, root()));
    ASSERT_TRUE(child->waitForEnd());
}

TEST_F(ProcessTableRootTest, AProcessThatReallyGetsTheIdOfAnotherIsUnharmed)
{
    EXPECT_TRUE(ReusedPid::run(isSuccessorUnharmed));
}

TEST_F(ProcessTableRootTest, AProcessThatIsShownUnderTheIdOfAnotherIsUnharmed)
{
    EXPECT_TRUE(ReusedPid::runWithLinks(isSuccessorUnharmed));
}

TEST_F(ProcessTableRootTest, AStatusThatIsCutShortIsNoProcess)
{
    const QByteArray whole = stat(noPid, 1000);
    for (qsizetype length = 0; length < whole.indexOf("1000") + 4; ++length) {
        put(of(noPid, QStringLiteral("stat")), whole.first(length));
        EXPECT_THAT(all(), IsEmpty()) << length;
        EXPECT_THAT(helpers(), IsEmpty()) << length;
        EXPECT_FALSE(informationOf(first_)) << length;
    }
    put(of(noPid, QStringLiteral("stat")), whole);
    EXPECT_THAT(helpers(), ElementsAre(first_));
}

TEST_F(ProcessTableRootTest, AProcessMayVanishFileByFile)
{
    ASSERT_TRUE(QFile::remove(of(noPid, QStringLiteral("comm"))));
    EXPECT_THAT(helpers(), IsEmpty());
    EXPECT_THAT(ProcessTable::processesNamed(QString(), root()), IsEmpty());
    EXPECT_THAT(all(), ElementsAre(first_));
    ASSERT_TRUE(informationOf(first_));
    EXPECT_TRUE(informationOf(first_)->name.isNull());
    EXPECT_TRUE(informationOf(first_)->path.isEmpty());
    ASSERT_TRUE(QFile::remove(of(noPid, QStringLiteral("stat"))));
    EXPECT_THAT(all(), IsEmpty());
    EXPECT_FALSE(informationOf(first_));
    EXPECT_FALSE(ProcessTable::getProcessForPID(noPid, root()));
}

TEST_F(ProcessTableRootTest, AProcessThatAnotherUserStartedIsKnownButNotListed)
{
    setUser(noPid, ::getuid() + 1);
    EXPECT_THAT(all(), IsEmpty());
    EXPECT_THAT(helpers(), IsEmpty());
    EXPECT_FALSE(ProcessTable::getNextProcess(kNoProcess, root()));
    EXPECT_TRUE(informationOf(first_));
    const auto second = add(noPid + 1);
    EXPECT_THAT(all(), ElementsAre(second));
    EXPECT_THAT(helpers(), ElementsAre(second));
    EXPECT_EQ(ProcessTable::getNextProcess(kNoProcess, root()), second);
}

TEST_F(ProcessTableRootTest, AProcessOfWhichNoUserIsToldIsNotListed)
{
    const QByteArray user = QByteArray::number(::getuid());
    for (const QByteArray &status :
         {QByteArray(), QByteArray("Name:\tQNBHelper\n"), "Uid:\t" + user + "\t",
          "Name:\tUid:\t" + user + "\t\nGid:\t" + user + "\t", QByteArray("\nUid:\t"),
          QByteArray("\nUid:\t\t\n"), "\nUid:\t" + user, "\nUid:\t" + user + "x\t",
          "\nUid:\t-" + user + "1\t", QByteArray("\nUid:\t99999999999999999999\t")}) {
        put(of(noPid, QStringLiteral("status")), status);
        EXPECT_THAT(all(), IsEmpty()) << status.constData();
        EXPECT_THAT(helpers(), IsEmpty()) << status.constData();
    }
    ASSERT_TRUE(QFile::remove(of(noPid, QStringLiteral("status"))));
    EXPECT_THAT(helpers(), IsEmpty());
    setUser(noPid, ::getuid());
    EXPECT_THAT(helpers(), ElementsAre(first_));
}

TEST_F(ProcessTableRootTest, WhatIsNoIdIsNoProcess)
{
    for (const QString &name : {QStringLiteral("self"), QStringLiteral("0"), QStringLiteral("-7"),
                                QStringLiteral("+7"), QStringLiteral("4200001x"), QStringLiteral("x4200001"),
                                QStringLiteral("99999999999"), QStringLiteral("sys")}) {
        ASSERT_TRUE(QDir().mkpath(in(name)));
        put(in(name) + QStringLiteral("/comm"), "QNBHelper\n");
        put(in(name) + QStringLiteral("/stat"), stat(7, 7));
        ASSERT_TRUE(QFile::copy(of(noPid, QStringLiteral("status")), in(name) + QStringLiteral("/status")));
    }
    put(of(noPid + 1), "a file");
    EXPECT_THAT(all(), ElementsAre(first_));
    EXPECT_THAT(helpers(), ElementsAre(first_));
}

TEST_F(ProcessTableRootTest, FilesOfAnotherKindAreNotWaitedFor)
{
    for (const QString &name : {QStringLiteral("stat"), QStringLiteral("comm"), QStringLiteral("status")}) {
        add(noPid);
        ASSERT_TRUE(QFile::remove(of(noPid, name)));
        ASSERT_EQ(::mkfifo(QFile::encodeName(of(noPid, name)).constData(), 0600), 0);
        EXPECT_THAT(helpers(), IsEmpty());
        ASSERT_TRUE(QFile::remove(of(noPid, name)));
        ASSERT_TRUE(QDir().mkpath(of(noPid, name)));
        EXPECT_THAT(helpers(), IsEmpty());
        ASSERT_TRUE(QDir().rmdir(of(noPid, name)));
    }
    add(noPid);
    put(of(noPid, QStringLiteral("exe")), "no link");
    EXPECT_TRUE(informationOf(first_)->path.isEmpty());
}

TEST_F(ProcessTableRootTest, WithoutATableThereIsNoProcess)
{
    const QString nowhere = in(QStringLiteral("nowhere"));
    EXPECT_THAT(ProcessTable::processesNamed(helperName, nowhere), IsEmpty());
    EXPECT_THAT(ProcessTable::processesAfter(kNoProcess, nowhere), IsEmpty());
    EXPECT_FALSE(ProcessTable::getNextProcess(kNoProcess, nowhere));
    EXPECT_FALSE(ProcessTable::getProcessInformation(first_, nowhere));
    EXPECT_FALSE(ProcessTable::getProcessForPID(noPid, nowhere));
    EXPECT_FALSE(ProcessTable::sendSignal(*ProcessTable::getCurrentProcess(), 0, nowhere));
}

TEST_F(ProcessTableRootTest, AnExecutableOutOfReachHasNoPath)
{
    setExecutable(noPid, QStringLiteral("(unreachable)/usr/bin/QNBHelper"));
    EXPECT_TRUE(informationOf(first_)->path.isEmpty());
}

TEST_F(ProcessTableRootTest, ThreadsOfTheKernelHaveLongNames)
{
    const auto worker = add(noPid + 1, 3, "kworker/0:1H-kblockd");
    EXPECT_THAT(ProcessTable::processesNamed(QStringLiteral("kworker/0:1H-kblockd"), root()),
                ElementsAre(worker));
    EXPECT_THAT(ProcessTable::processesNamed(QStringLiteral("kworker/0:1H-kb"), root()), IsEmpty());
}

TEST_F(ProcessTableRootTest, SerialNumberAndLaunchDateTakeTheLowBitsOfALongTime)
{
    const quint64 ticks = (quint64(1) << 32) + 500;
    add(noPid, ticks);
    EXPECT_THAT(helpers(), ElementsAre(ProcessSerialNumber{500, quint32(noPid)}));
    const quint64 perSecond = quint64(::sysconf(_SC_CLK_TCK));
    EXPECT_EQ(informationOf({500, quint32(noPid)})->launchDate, quint32(ticks * 60 / perSecond));
}

TEST_F(ProcessTableRootTest, TheLauncherIsNoneWhenItIsNotThere)
{
    put(of(noPid, QStringLiteral("stat")), stat(noPid, 1000, noPid + 1));
    EXPECT_EQ(informationOf(first_)->launcher, kNoProcess);
    const auto parent = add(noPid + 1, 30);
    EXPECT_EQ(informationOf(first_)->launcher, parent);
    put(of(noPid, QStringLiteral("stat")), stat(noPid, 1000, 1));
    add(1, 77);
    EXPECT_EQ(informationOf(first_)->launcher, kSystemProcess);
}
