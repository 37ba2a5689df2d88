// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/TQProcess.h"

#include "Source/System/TQProcessesEnumerater.h"
#include "Tests/Session/DisplayVariable.h"
#include "Tests/Session/IdleProgram.h"
#include "Tests/Session/VirtualScreen.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <bit>
#include <cmath>
#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// What failures of these tests print.
void PrintTo(const TQProcess &process, std::ostream *stream)
{
    *stream << process.description().toStdString();
}

namespace {

const QString helper = QStringLiteral("QNBHelper");

TQProcess processOf(const ChildProcess &child)
{
    return TQProcess::processWithProcessID(pid_t(child.pid()))
        .value_or(TQProcess::processWithProcessSerialNumber(kNoProcess));
}

/// Those that this test started. Others on this machine may run, of other tests, too.
QList<TQProcess> childrenAmong(QList<TQProcess> processes)
{
    processes.removeIf(
        [](const TQProcess &process) { return process.launcher() != TQProcess::currentProcess(); });
    return processes;
}
QList<TQProcess> childrenNamed(const QString &name)
{
    return childrenAmong(TQProcess::everyProcessNamed(name));
}

/// A process that has ended, and was asked nothing before.
TQProcess endedProcess(const IdleProgram &program)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    child->signal(SIGKILL);
    EXPECT_TRUE(child->waitForEnd());
    return process;
}

/// For as long as this lives, this process can open two files and no more: too few to look at another one.
class TwoMoreFiles
{
public:
    TwoMoreFiles()
    {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        const rlimit few{std::min<rlim_t>(before_.rlim_cur, 256), before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        for (int file = ::dup(STDIN_FILENO); file != -1; file = ::dup(STDIN_FILENO))
            inTheWay_.push_back(file);
        // The undefined-behaviour sanitizer looks at memory through a pipe.
        for (int end = 0; end < 2 && !inTheWay_.empty(); ++end) {
            ::close(inTheWay_.back());
            inTheWay_.pop_back();
        }
    }
    ~TwoMoreFiles()
    {
        for (const int file : inTheWay_)
            ::close(file);
        ::setrlimit(RLIMIT_NOFILE, &before_);
    }
    TwoMoreFiles(const TwoMoreFiles &) = delete;
    TwoMoreFiles &operator=(const TwoMoreFiles &) = delete;

private:
    rlimit before_ = {};
    std::vector<int> inTheWay_;
};

class TQProcessTest : public ::testing::Test
{
protected:
    const IdleProgram program{helper};
};

/// The helper in a bundle.
class TQProcessBundleTest : public ::testing::Test
{
protected:
    TQProcessBundleTest()
    {
        QFile file(bundle() + QStringLiteral("/Contents/Info.plist"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>QNBHelper</string>"
                   "<key>CFBundlePackageType</key><string>APPL</string>"
                   "<key>CFBundleSignature</key><string>QNBH</string></dict></plist>");
    }
    QString bundle() const { return program.path().section(u'/', 0, -4); }

    const IdleProgram program{helper, QStringLiteral("My Helper.app/Contents/MacOS")};
};

} // namespace

TEST_F(TQProcessTest, EveryProcessNamedWithoutAMatchIsEmpty)
{
    EXPECT_THAT(TQProcess::everyProcessNamed(QStringLiteral("no such program")), IsEmpty());
    EXPECT_THAT(TQProcess::everyProcessNamed(QStringLiteral("no process")), IsEmpty());
    EXPECT_FALSE(TQProcess::firstProcessNamed(QStringLiteral("no such program")));
}

TEST_F(TQProcessTest, EveryProcessNamedComparesExactly)
{
    const IdleProgram lower(QStringLiteral("qnbhelper"));
    const IdleProgram longer(QStringLiteral("QNBHelper2"));
    const auto one = lower.start();
    const auto two = longer.start();
    EXPECT_THAT(childrenNamed(helper), IsEmpty());
    const auto three = program.start();
    const auto four = program.start();
    const QList<TQProcess> found = childrenNamed(helper);
    EXPECT_THAT(found, UnorderedElementsAre(processOf(*three), processOf(*four)));
    for (const TQProcess &process : found)
        EXPECT_EQ(process.name(), helper);
    EXPECT_EQ(TQProcess::firstProcessNamed(lower.name()), processOf(*one));
}

TEST_F(TQProcessTest, EveryProcessBeginingWithPathFindsExactPathsOnly)
{
    const auto child = program.start();
    EXPECT_THAT(TQProcess::everyProcessBeginingWithPath(program.path()), ElementsAre(processOf(*child)));
    EXPECT_THAT(TQProcess::everyProcessBeginingWithPath(program.folder()), IsEmpty());
    EXPECT_THAT(TQProcess::everyProcessBeginingWithPath(program.path().chopped(1)), IsEmpty());
    EXPECT_THAT(TQProcess::everyProcessBeginingWithPath({}), IsEmpty());
    const QUrl url = QUrl::fromLocalFile(program.path());
    EXPECT_THAT(TQProcess::everyProcessBeginingWithURL(url), ElementsAre(processOf(*child)));
    EXPECT_THAT(TQProcess::everyProcessBeginingWithURL(QUrl::fromLocalFile(program.folder())), IsEmpty());
    EXPECT_THAT(TQProcess::everyProcessBeginingWithURL({}), IsEmpty());
}

TEST_F(TQProcessTest, TheNameOfAProcessThatCannotBeFetchedIsNullAndRetried)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    {
        const TwoMoreFiles inTheWay;
        EXPECT_TRUE(process.name().isNull());
        EXPECT_TRUE(process.url().isEmpty());
        EXPECT_FALSE(process.isValid());
    }
    EXPECT_EQ(process.name(), helper);
    EXPECT_EQ(process.path(), program.path());
    EXPECT_TRUE(process.isValid());
}

TEST_F(TQProcessTest, TheNameIsFetchedAnewAndThenKept)
{
    const auto child = program.start();
    const TQProcess asked = processOf(*child);
    const TQProcess notAsked = processOf(*child);
    EXPECT_EQ(asked.name(), helper);
    EXPECT_EQ(asked.path(), program.path());
    EXPECT_GT(notAsked.launchTime(), 0.0);
    child->signal(SIGKILL);
    ASSERT_TRUE(child->waitForEnd());
    // Kept: the name, the URL. The record was fetched, but the name asks for it anew.
    EXPECT_EQ(asked.name(), helper);
    EXPECT_EQ(asked.path(), program.path());
    EXPECT_GT(notAsked.launchTime(), 0.0);
    EXPECT_TRUE(notAsked.name().isNull());
    EXPECT_EQ(notAsked.launchTime(), 0.0);
}

TEST_F(TQProcessTest, IsValidAsksAgain)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    const double time = process.launchTime();
    EXPECT_TRUE(process.isValid());
    child->signal(SIGKILL);
    ASSERT_TRUE(child->waitForEnd());
    EXPECT_EQ(process.launchTime(), time);
    EXPECT_FALSE(process.isValid());
    EXPECT_EQ(process.launchTime(), 0.0);
}

TEST_F(TQProcessTest, CopiesShareWhatIsFetched)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    const TQProcess copy = process;
    EXPECT_EQ(process.name(), helper);
    child->signal(SIGKILL);
    ASSERT_TRUE(child->waitForEnd());
    EXPECT_EQ(copy.name(), helper);
}

TEST_F(TQProcessTest, AProcessThatHasEndedGivesTheValuesForFailure)
{
    const TQProcess process = endedProcess(program);
    EXPECT_FALSE(process.isNoProcess());
    EXPECT_FALSE(process.isSystemProcess());
    EXPECT_FALSE(process.isValid());
    EXPECT_FALSE(process.isFrontProcess());
    EXPECT_FALSE(process.isCurrentProcess());
    EXPECT_FALSE(process.makeFrontProcess());
    EXPECT_FALSE(process.wakeUpProcess());
    EXPECT_TRUE(process.name().isNull());
    EXPECT_EQ(process.type(), 0U);
    EXPECT_EQ(process.signature(), 0U);
    EXPECT_EQ(process.mode(), 0U);
    EXPECT_FALSE(process.launcher());
    EXPECT_EQ(process.launchTime(), 0.0);
    EXPECT_TRUE(process.url().isEmpty());
    EXPECT_TRUE(process.path().isNull());
    EXPECT_EQ(process.processID(), -1);
    EXPECT_EQ(process.description(), QStringLiteral("name:\"(null)\", procces ID: -1, time:[0h 0m 0.0s], "
                                                    "type:'NULL', signature:'NULL'"));
}

TEST_F(TQProcessTest, AZombieDoesNotRun)
{
    const pid_t zombie = program.startZombie();
    EXPECT_FALSE(TQProcess::processWithProcessID(zombie));
    for (const QList<TQProcess> &processes :
         {TQProcess::everyProcessNamed(helper), TQProcess::everyProcess()}) {
        EXPECT_TRUE(std::none_of(processes.begin(), processes.end(), [zombie](const TQProcess &process) {
            return process.processSerialNumber().low == quint32(zombie);
        }));
    }
    ASSERT_EQ(::waitpid(zombie, nullptr, 0), zombie);
}

TEST_F(TQProcessTest, NoProcessIsNamedSo)
{
    const TQProcess none = TQProcess::processWithProcessSerialNumber(kNoProcess);
    EXPECT_TRUE(none.isNoProcess());
    EXPECT_FALSE(none.isSystemProcess());
    EXPECT_FALSE(none.isValid());
    EXPECT_EQ(none.name(), QStringLiteral("no process"));
    EXPECT_EQ(none.description(), QStringLiteral("no process"));
    EXPECT_EQ(none.processID(), -1);
    EXPECT_TRUE(none.path().isNull());
}

TEST_F(TQProcessTest, TheSystemProcessIsKnown)
{
    const auto first = TQProcess::processWithProcessID(1);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->isSystemProcess());
    EXPECT_TRUE(first->isValid());
    EXPECT_FALSE(first->launcher());
    EXPECT_EQ(first->processID(), 1);
    EXPECT_EQ(*first, TQProcess::initWithProcessSerialNumber(kSystemProcess));
}

TEST_F(TQProcessTest, TheCurrentProcessIsThisOne)
{
    const auto current = TQProcess::currentProcess();
    ASSERT_TRUE(current);
    EXPECT_TRUE(current->isCurrentProcess());
    EXPECT_TRUE(current->isValid());
    EXPECT_EQ(current->processID(), ::getpid());
    EXPECT_EQ(current->path(), QCoreApplication::applicationFilePath());
    EXPECT_EQ(*current, *TQProcess::initWithProcessID(::getpid()));
    EXPECT_TRUE(current->isEqual(*TQProcess::initWithCurrentProcess()));
    ASSERT_TRUE(current->launcher());
    EXPECT_EQ(current->launcher()->processID(), ::getppid());
}

TEST_F(TQProcessTest, TheLauncherIsTheParent)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    EXPECT_EQ(process.launcher(), TQProcess::currentProcess());
    EXPECT_FALSE(process.isCurrentProcess());
    EXPECT_NE(process, *TQProcess::currentProcess());
    EXPECT_EQ(process.processID(), child->pid());
    EXPECT_GE(process.launchTime(), TQProcess::currentProcess()->launchTime());
}

TEST_F(TQProcessTest, AStoppedProcessIsWokenUp)
{
    const auto child = program.start();
    child->signal(SIGSTOP);
    siginfo_t how = {};
    ASSERT_EQ(::waitid(P_PID, id_t(child->pid()), &how, WSTOPPED), 0);
    EXPECT_TRUE(processOf(*child).wakeUpProcess());
    EXPECT_EQ(::waitid(P_PID, id_t(child->pid()), &how, WCONTINUED), 0);
}

TEST_F(TQProcessTest, TheEnumeraterWalksTheTable)
{
    const auto child = program.start();
    QList<TQProcess> walked;
    TQProcessesEnumerater one = TQProcess::processesEnumerater();
    while (const auto process = one.nextObject())
        walked.append(*process);
    EXPECT_THAT(walked, Contains(processOf(*child)));
    EXPECT_THAT(walked, Contains(*TQProcess::currentProcess()));
    EXPECT_THAT(TQProcess::everyProcess(), Contains(processOf(*child)));

    TQProcessesEnumerater two = TQProcessesEnumerater::processesEnumerater();
    const auto first = two.nextObject();
    ASSERT_TRUE(first);
    const QList<TQProcess> rest = two.allObjects();
    EXPECT_THAT(rest, Contains(processOf(*child)));
    EXPECT_FALSE(rest.contains(*first));
}

TEST_F(TQProcessTest, AProcessIsFoundByItsUrlAndPath)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    const QUrl url = QUrl::fromLocalFile(program.path());
    EXPECT_EQ(process.url(), url);
    EXPECT_EQ(process.path(), program.path());
    EXPECT_EQ(TQProcess::processForURL(url), process);
    EXPECT_EQ(TQProcess::processForPath(program.path()), process);
    EXPECT_EQ(TQProcess::processForApplicationPath(program.path()), process);
    EXPECT_EQ(TQProcess::processForApplicationURL(url), process);
    EXPECT_FALSE(TQProcess::processForURL({}));
    EXPECT_FALSE(TQProcess::processForPath({}));
    EXPECT_FALSE(TQProcess::processForPath(program.folder()));
    EXPECT_FALSE(TQProcess::processForApplicationPath(program.folder()));
    EXPECT_FALSE(TQProcess::processForApplicationPath(program.path() + QStringLiteral("2")));
}

TEST_F(TQProcessBundleTest, AnApplicationIsFoundByItsBundle)
{
    EXPECT_FALSE(TQProcess::processForApplicationPath(bundle()));
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    EXPECT_EQ(TQProcess::processForApplicationPath(bundle()), process);
    EXPECT_EQ(TQProcess::processForApplicationURL(QUrl::fromLocalFile(bundle())), process);
    EXPECT_FALSE(TQProcess::processForPath(bundle()));
    EXPECT_THAT(TQProcess::everyProcessBeginingWithPath(bundle()), IsEmpty());
    ASSERT_TRUE(QFile::remove(program.path()));
    EXPECT_EQ(TQProcess::processForApplicationPath(bundle()), process);
    ASSERT_TRUE(QFile::remove(bundle() + QStringLiteral("/Contents/Info.plist")));
    EXPECT_FALSE(TQProcess::processForApplicationPath(bundle()));
}

TEST_F(TQProcessBundleTest, DescriptionHasTheExactForm)
{
    const auto child = program.start();
    const TQProcess process = processOf(*child);
    EXPECT_EQ(process.type(), 0x4150504cU);
    EXPECT_EQ(process.signature(), 0x514e4248U);
    EXPECT_EQ(process.mode(), 0U);
    const double time = process.launchTime();
    const bool isReversed = std::endian::native == std::endian::little;
    EXPECT_EQ(process.description(),
              QString::asprintf("name:\"QNBHelper\", procces ID: %i, time:[%ih %im %.1fs], type:'%s', "
                                "signature:'%s'",
                                int(child->pid()), int(time / 3600), int(time / 60) % 60,
                                std::fmod(time, 60.0), isReversed ? "LPPA" : "APPL",
                                isReversed ? "HBNQ" : "QNBH"));
}

TEST_F(TQProcessTest, DescriptionTakesTheNameAsItIs)
{
    const auto child =
        program.start({QStringLiteral("named"), QString::fromLatin1(QByteArray("%1 %2\"%").toHex())});
    EXPECT_TRUE(processOf(*child).description().startsWith(QStringLiteral("name:\"%1 %2\"%\", procces ID: ") +
                                                           QString::number(child->pid()) + u','));
}

TEST(TQProcessFrontTest, TheFrontProcessHasTheFocusAndAnotherTakesIt)
{
    const TemporaryHome home;
    const VirtualScreen screen(home);
    const DisplayVariable display(screen.display());
    const QProcessEnvironment environment = screen.environmentFrom(home.environment());
    const QString alpha = QStringLiteral("alpha");
    const QString beta = QStringLiteral("beta");
    const ChildProcess one(QStringLiteral(QUENBY_WINDOWS), {alpha}, environment);
    const ChildProcess two(QStringLiteral(QUENBY_WINDOWS), {beta}, environment);
    const QString windowOfOne = screen.windowNamed(alpha);
    ASSERT_TRUE(screen.activate(screen.windowNamed(beta)));
    ASSERT_TRUE(screen.activate(windowOfOne));
    EXPECT_EQ(TQProcess::frontProcess(), processOf(one));
    EXPECT_TRUE(processOf(one).isFrontProcess());
    EXPECT_FALSE(processOf(two).isFrontProcess());
    EXPECT_TRUE(processOf(two).makeFrontProcess());
    EXPECT_TRUE(waitUntil([&] { return processOf(two).isFrontProcess(); }));
    EXPECT_TRUE(processOf(one).makeFrontProcessFrontWindowOnly(true));
    EXPECT_TRUE(waitUntil([&] { return TQProcess::initWithFrontProcess() == processOf(one); }));
    EXPECT_FALSE(TQProcess::currentProcess()->makeFrontProcess());
}

TEST(TQProcessFrontTest, WithoutAScreenThereIsNoFrontProcess)
{
    const DisplayVariable display({});
    EXPECT_FALSE(TQProcess::frontProcess());
    EXPECT_FALSE(TQProcess::currentProcess()->isFrontProcess());
    EXPECT_FALSE(TQProcess::currentProcess()->makeFrontProcess());
}
