// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// With real processes; what only a hostile or broken system shows is in ProcessTableRootTest.

#include "Platform/Processes/ProcessTable.h"

#include "Tests/Session/IdleProgram.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace {

const QString helper = QStringLiteral("QNBHelper");
/// Any user but the administrator.
constexpr uid_t nobody = 65534;

ProcessSerialNumber serialNumberOf(const ChildProcess &process)
{
    return ProcessTable::getProcessForPID(pid_t(process.pid())).value_or(kNoProcess);
}

/// The letter for it in the kernel's table.
char stateOf(const ChildProcess &process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process.pid()));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray stat = file.readAll();
    return stat.at(stat.lastIndexOf(')') + 2);
}

double secondsSinceStart()
{
    timespec time = {};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// Those of that name that this test started. Others on this machine may run, of other tests, too.
QList<ProcessSerialNumber> childrenNamed(const QString &name)
{
    QList<ProcessSerialNumber> processes = ProcessTable::processesNamed(name);
    processes.removeIf([](const ProcessSerialNumber &process) {
        const auto information = ProcessTable::getProcessInformation(process);
        return !information || information->launcher != ProcessTable::getCurrentProcess();
    });
    return processes;
}

bool holdsPid(const QList<ProcessSerialNumber> &processes, pid_t pid)
{
    return std::any_of(processes.begin(), processes.end(),
                       [pid](const ProcessSerialNumber &process) { return process.low == quint32(pid); });
}

bool isInOrder(const QList<ProcessSerialNumber> &processes)
{
    return std::is_sorted(processes.begin(), processes.end(),
                          [](const auto &one, const auto &other) { return one.low < other.low; });
}

class ProcessTableTest : public ::testing::Test
{
protected:
    const IdleProgram program{helper};
};

} // namespace

TEST_F(ProcessTableTest, TwoOfANameAreListedInOrderAndBothAreEnded)
{
    const auto one = program.start();
    const auto two = program.start();
    const QList<ProcessSerialNumber> listed = childrenNamed(helper);
    EXPECT_THAT(listed, UnorderedElementsAre(serialNumberOf(*one), serialNumberOf(*two)));
    EXPECT_TRUE(isInOrder(listed));
    for (const ProcessSerialNumber &process : listed)
        EXPECT_TRUE(ProcessTable::sendSignal(process, SIGTERM));
    EXPECT_TRUE(one->waitForEnd());
    EXPECT_TRUE(two->waitForEnd());
    EXPECT_THAT(childrenNamed(helper), IsEmpty());
}

TEST_F(ProcessTableTest, ANameIsComparedWholeAndWithCase)
{
    const IdleProgram longer(QStringLiteral("QNBHelper2"));
    const IdleProgram lower(QStringLiteral("qnbhelper"));
    const auto one = longer.start();
    const auto two = lower.start();
    EXPECT_THAT(childrenNamed(helper), IsEmpty());
    EXPECT_THAT(childrenNamed(QStringLiteral("QNBHelpe")), IsEmpty());
    EXPECT_THAT(childrenNamed(longer.name()), ElementsAre(serialNumberOf(*one)));
    EXPECT_THAT(childrenNamed(lower.name()), ElementsAre(serialNumberOf(*two)));
}

TEST_F(ProcessTableTest, OneThatIgnoresTheSignalStaysListed)
{
    const auto deaf = program.start({QStringLiteral("deaf")});
    const ProcessSerialNumber process = serialNumberOf(*deaf);
    EXPECT_TRUE(ProcessTable::sendSignal(process, SIGTERM));
    EXPECT_THAT(childrenNamed(helper), ElementsAre(process));
    EXPECT_TRUE(ProcessTable::sendSignal(process, SIGKILL));
    EXPECT_TRUE(deaf->waitForEnd());
}

TEST_F(ProcessTableTest, OneThatEndsAfterItWasListedIsNotSignalled)
{
    const auto child = program.start();
    const QList<ProcessSerialNumber> listed = childrenNamed(helper);
    ASSERT_EQ(listed.size(), 1);
    child->signal(SIGKILL);
    ASSERT_TRUE(child->waitForEnd());
    EXPECT_FALSE(ProcessTable::sendSignal(listed.constFirst(), SIGTERM));
    EXPECT_FALSE(ProcessTable::getProcessInformation(listed.constFirst()));
    EXPECT_FALSE(ProcessTable::getProcessPID(listed.constFirst()));
}

TEST_F(ProcessTableTest, AZombieDoesNotRun)
{
    const pid_t zombie = program.startZombie();
    EXPECT_FALSE(holdsPid(ProcessTable::processesNamed(helper), zombie));
    EXPECT_FALSE(ProcessTable::getProcessForPID(zombie));
    EXPECT_FALSE(holdsPid(ProcessTable::processesAfter(), zombie));
    ASSERT_EQ(::waitpid(zombie, nullptr, 0), zombie);
}

TEST_F(ProcessTableTest, OneThatBecomesAZombieAfterItWasListedIsNotSignalled)
{
    const pid_t child = ::fork();
    if (child == 0) {
        while (true)
            ::pause();
    }
    const auto listed = ProcessTable::getProcessForPID(child);
    ASSERT_TRUE(listed);
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    siginfo_t how = {};
    ASSERT_EQ(::waitid(P_PID, id_t(child), &how, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(ProcessTable::sendSignal(*listed, SIGTERM));
    EXPECT_FALSE(ProcessTable::getProcessInformation(*listed));
    EXPECT_FALSE(ProcessTable::getProcessPID(*listed));
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(ProcessTableTest, AProcessWhoseFirstThreadHasEndedRuns)
{
    const auto child = program.start({QStringLiteral("headless")});
    ASSERT_TRUE(waitUntil([&] { return stateOf(*child) == 'Z'; }));
    const QList<ProcessSerialNumber> listed = childrenNamed(helper);
    ASSERT_THAT(listed, ElementsAre(serialNumberOf(*child)));
    EXPECT_TRUE(ProcessTable::sendSignal(listed.constFirst(), SIGTERM));
    EXPECT_TRUE(child->waitForEnd());
}

TEST_F(ProcessTableTest, AnotherStartTimeIsAnotherProcess)
{
    const auto child = program.start();
    ProcessSerialNumber other = serialNumberOf(*child);
    for (const quint32 high : {other.high - 1, other.high + 1, 0U}) {
        other.high = high;
        EXPECT_FALSE(ProcessTable::sendSignal(other, SIGKILL));
        EXPECT_FALSE(ProcessTable::getProcessInformation(other));
        EXPECT_FALSE(ProcessTable::getProcessPID(other));
    }
    EXPECT_TRUE(ProcessTable::sendSignal(serialNumberOf(*child), SIGTERM));
    EXPECT_TRUE(child->waitForEnd());
    EXPECT_FALSE(child->hasReturned(0));
}

TEST_F(ProcessTableTest, NoSignalToNothingAGroupOrTheSystem)
{
    const quint32 ownGroup = quint32(-::getpgrp());
    for (const quint32 low : {0U, 1U, ownGroup, quint32(-1), 0x80000000U}) {
        EXPECT_FALSE(ProcessTable::sendSignal({0, low}, 0)) << low;
        EXPECT_FALSE(ProcessTable::sendSignal({1, low}, 0)) << low;
    }
    EXPECT_TRUE(ProcessTable::sendSignal(*ProcessTable::getCurrentProcess(), 0));
    EXPECT_FALSE(ProcessTable::sendSignal(*ProcessTable::getCurrentProcess(), 100000));
}

TEST_F(ProcessTableTest, TheSystemProcessHasItsNumberWheneverItWasStarted)
{
    EXPECT_EQ(ProcessTable::getProcessForPID(1), kSystemProcess);
    EXPECT_EQ(ProcessTable::getProcessPID(kSystemProcess), 1);
    EXPECT_FALSE(ProcessTable::getProcessPID({1, 1}));
    const auto information = ProcessTable::getProcessInformation(kSystemProcess);
    ASSERT_TRUE(information);
    EXPECT_EQ(information->launcher, kNoProcess);
}

TEST_F(ProcessTableTest, NoProcessHasTheNumberOfNone)
{
    EXPECT_FALSE(ProcessTable::getProcessForPID(0));
    EXPECT_FALSE(ProcessTable::getProcessForPID(-1));
    EXPECT_FALSE(ProcessTable::getProcessInformation(kNoProcess));
    EXPECT_FALSE(ProcessTable::getProcessPID(kNoProcess));
    EXPECT_TRUE(ProcessTable::sameProcess(kNoProcess, {0, 0}));
    EXPECT_FALSE(ProcessTable::sameProcess(kNoProcess, kSystemProcess));
}

TEST_F(ProcessTableTest, TellsNamePathLauncherAndLaunch)
{
    const double before = secondsSinceStart();
    const auto child = program.start();
    const double after = secondsSinceStart();
    const auto information = ProcessTable::getProcessInformation(serialNumberOf(*child));
    ASSERT_TRUE(information);
    EXPECT_EQ(information->name, helper);
    EXPECT_EQ(information->path, program.path());
    EXPECT_EQ(information->launcher, ProcessTable::getCurrentProcess());
    // The kernel's clock goes in hundredths.
    EXPECT_GE(information->launchDate / 60.0, before - 0.03);
    EXPECT_LE(information->launchDate / 60.0, after);
}

TEST_F(ProcessTableTest, AnExecutableThatWasRemovedOrReplacedKeepsItsPath)
{
    const auto child = program.start();
    const ProcessSerialNumber process = serialNumberOf(*child);
    ASSERT_TRUE(QFile::remove(program.path()));
    EXPECT_EQ(ProcessTable::getProcessInformation(process)->path, program.path());
    QFile successor(program.path());
    ASSERT_TRUE(successor.open(QIODevice::WriteOnly));
    EXPECT_EQ(ProcessTable::getProcessInformation(process)->path, program.path());
}

TEST_F(ProcessTableTest, AnExecutableMayBeNamedAsIfItWereRemoved)
{
    const IdleProgram named(QStringLiteral("a (deleted)"));
    const auto child = named.start();
    EXPECT_EQ(ProcessTable::getProcessInformation(serialNumberOf(*child))->path, named.path());
    ASSERT_TRUE(QFile::remove(named.path()));
    EXPECT_EQ(ProcessTable::getProcessInformation(serialNumberOf(*child))->path, named.path());
}

TEST_F(ProcessTableTest, ANameThatTheKernelCutsIsCompletedByTheExecutable)
{
    const IdleProgram longName(QStringLiteral("QNBHelper of the whole office"));
    const IdleProgram exact(QStringLiteral("fifteen letters"));
    ASSERT_EQ(exact.name().size(), 15);
    const auto one = longName.start();
    const auto two = exact.start();
    EXPECT_THAT(childrenNamed(longName.name()), ElementsAre(serialNumberOf(*one)));
    EXPECT_THAT(childrenNamed(longName.name().first(15)), IsEmpty());
    EXPECT_THAT(childrenNamed(longName.name() + u'!'), IsEmpty());
    EXPECT_THAT(childrenNamed(exact.name()), ElementsAre(serialNumberOf(*two)));
    EXPECT_EQ(ProcessTable::getProcessInformation(serialNumberOf(*one))->name, longName.name());
}

TEST_F(ProcessTableTest, ANameThatIsCutWithinACharacterIsCompleted)
{
    const IdleProgram named(QStringLiteral("ääääääää"));
    ASSERT_EQ(QFile::encodeName(named.name()).size(), 16);
    const auto child = named.start();
    EXPECT_THAT(childrenNamed(named.name()), ElementsAre(serialNumberOf(*child)));
}

TEST_F(ProcessTableTest, ACutNameThatTheExecutableDoesNotContinueStaysCut)
{
    const QByteArray given("a name that it gave itself");
    const auto child = program.start({QStringLiteral("named"), QString::fromLatin1(given.toHex())});
    EXPECT_THAT(childrenNamed(QString::fromLatin1(given.first(15))), ElementsAre(serialNumberOf(*child)));
    EXPECT_THAT(childrenNamed(QString::fromLatin1(given)), IsEmpty());
    EXPECT_THAT(childrenNamed(helper), IsEmpty());
}

TEST_F(ProcessTableTest, AProcessMayGiveItselfAnyName)
{
    for (const QByteArray &name :
         {QByteArray(") Z 1 (x"), QByteArray("QNB\nHelper"), QByteArray("\n"), QByteArray("\xff\xfeQNB"),
          QByteArray(""), QByteArray(" "), QByteArray("\xc3\xa4"), QByteArray("\xef\xbf\xbd")}) {
        const auto child = program.start({QStringLiteral("named"), QString::fromLatin1(name.toHex())});
        const ProcessSerialNumber process = serialNumberOf(*child);
        const auto information = ProcessTable::getProcessInformation(process);
        ASSERT_TRUE(information) << name.toHex().constData();
        EXPECT_FALSE(information->name.isNull());
        EXPECT_EQ(information->name, QString::fromLocal8Bit(name));
        EXPECT_EQ(information->path, program.path());
        EXPECT_THAT(childrenNamed(QString::fromLocal8Bit(name)), Contains(process));
        EXPECT_TRUE(ProcessTable::sendSignal(process, SIGTERM));
        EXPECT_TRUE(child->waitForEnd());
    }
}

TEST_F(ProcessTableTest, TheTableIsWalkedInTheOrderOfIds)
{
    const auto one = program.start();
    const auto two = program.start();
    QList<ProcessSerialNumber> walked;
    for (auto next = ProcessTable::getNextProcess(kNoProcess); next;
         next = ProcessTable::getNextProcess(*next))
        walked.append(*next);
    EXPECT_TRUE(isInOrder(walked));
    EXPECT_THAT(walked, Contains(serialNumberOf(*one)));
    EXPECT_THAT(walked, Contains(serialNumberOf(*two)));
    EXPECT_THAT(walked, Contains(*ProcessTable::getCurrentProcess()));
    EXPECT_THAT(ProcessTable::processesAfter(serialNumberOf(*one)), Not(Contains(serialNumberOf(*one))));
    EXPECT_THAT(ProcessTable::processesAfter(), Contains(serialNumberOf(*two)));
}

TEST_F(ProcessTableTest, TheWalkGoesOnBehindAProcessThatEnded)
{
    const auto one = program.start();
    const auto two = program.start();
    // Ids start anew when they are used up.
    const bool isOneFirst = one->pid() < two->pid();
    ChildProcess &first = isOneFirst ? *one : *two;
    const ChildProcess &second = isOneFirst ? *two : *one;
    const ProcessSerialNumber ended = serialNumberOf(first);
    first.signal(SIGKILL);
    ASSERT_TRUE(first.waitForEnd());
    EXPECT_THAT(ProcessTable::processesAfter(ended), Contains(serialNumberOf(second)));
}

TEST_F(ProcessTableTest, AStoppedProcessRunsAndIsWokenUp)
{
    const auto child = program.start();
    const ProcessSerialNumber process = serialNumberOf(*child);
    child->signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([&] { return stateOf(*child) == 'T'; }));
    EXPECT_THAT(childrenNamed(helper), ElementsAre(process));
    EXPECT_TRUE(ProcessTable::wakeUpProcess(process));
    EXPECT_TRUE(waitUntil([&] { return stateOf(*child) == 'S'; }));
    EXPECT_FALSE(ProcessTable::wakeUpProcess(kSystemProcess));
    EXPECT_FALSE(ProcessTable::wakeUpProcess(kNoProcess));
}

TEST_F(ProcessTableTest, ProcessesOfOtherUsersAreKnownButNotListed)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const bool ready = ::geteuid() != 0 ||
                           (::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0);
        const auto first = ProcessTable::getNextProcess(kNoProcess);
        const bool isListed =
            first == kSystemProcess || ProcessTable::processesAfter().contains(kSystemProcess);
        const bool isKnown = ProcessTable::getProcessInformation(kSystemProcess).has_value();
        const bool listsItself = ProcessTable::processesAfter().contains(*ProcessTable::getCurrentProcess());
        ::_exit(!ready ? 2 : !isListed && isKnown && listsItself ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ProcessTableTest, AHelperOfAnotherUserIsNotListedForTheAdministratorEither)
{
    std::array<int, 2> report = {};
    ASSERT_EQ(::pipe2(report.data(), O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::prctl(PR_SET_NAME, qPrintable(helper));
        const char isOther =
            ::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0 ? 1 : 0;
        const bool isTold = ::write(report[1], &isOther, 1) == 1;
        while (isTold)
            ::pause();
        ::_exit(1);
    }
    char isOther = 0;
    ASSERT_EQ(::read(report[0], &isOther, 1), 1);
    ::close(report[0]);
    ::close(report[1]);
    EXPECT_EQ(isOther != 0, ::geteuid() == 0);
    // Who cannot become another user has a helper of their own here.
    EXPECT_EQ(holdsPid(ProcessTable::processesNamed(helper), child), isOther == 0);
    EXPECT_EQ(holdsPid(ProcessTable::processesAfter(), child), isOther == 0);
    EXPECT_TRUE(ProcessTable::getProcessForPID(child));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}
