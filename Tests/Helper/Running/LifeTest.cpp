// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/HelperService.h"
#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Preferences/Preferences.h"
#include "Tests/Helper/Running/RunningFixture.h"
#include "Tests/Session/FakeTray.h"
#include "Tests/Session/FileContent.h"
#include "Tests/Session/SilentSocket.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const QString lettersPreset = QStringLiteral("Letters");

/// What the threads are called that had not ended when the process did, by what strace wrote of it.
QByteArrayList threadsAtTheEnd(const QByteArray &calls)
{
    QMap<QByteArray, QByteArray> names;
    const QByteArrayList lines = calls.split('\n');
    for (const QByteArray &line : lines) {
        const QByteArray thread = line.left(line.indexOf(' '));
        if (line.contains("PR_SET_NAME"))
            names.insert(thread, line.split('"').value(1));
        else if (line.contains(" exit("))
            names.remove(thread);
        else if (line.contains(" exit_group("))
            return names.values();
    }
    ADD_FAILURE() << "it has not ended";
    return {};
}

class LifeProgramTest : public RunningFixture
{
protected:
    /// For programs of a user without a session bus.
    QProcessEnvironment withoutBus() const
    {
        QProcessEnvironment result = environment();
        result.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        return result;
    }
    /// The path of an entry that starts a helper which is no longer there.
    QString loginItemOfOldPlace() const
    {
        const QString folder = home_.configFolder() + QStringLiteral("/autostart");
        EXPECT_TRUE(QDir().mkpath(folder));
        QString path = folder + QStringLiteral("/org.quenby.QNBHelper.desktop");
        QFile entry(path);
        EXPECT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write("[Desktop Entry]\nType=Application\nName=QNBHelper\nExec=/old/QNBHelper.app/QNBHelper\n"
                    "X-Quenby-URL=file:///old/QNBHelper.app\nX-Quenby-Place=1\n");
        return path;
    }
    static bool hasRead(ChildProcess &helper) { return helper.errors().contains("presets in the menu: 2"); }
    static bool waitUntilItHasRead(ChildProcess &helper)
    {
        return waitUntil([&] { return hasRead(helper) || !helper.isRunning(); }, std::chrono::minutes(2)) &&
               helper.isRunning();
    }
    /// The menu in the tray, orders and the settings' changes.
    void expectToUseTheBus(FakeTray &tray, ChildProcess &helper)
    {
        EXPECT_EQ(tray.menuWith(lettersPreset).labels().value(0), lettersPreset);
        EXPECT_TRUE(waitUntil([&] { return isOnBus(); }));
        QString reason;
        EXPECT_TRUE(order(lettersPreset, &reason)) << qPrintable(reason);
        QNBSettings more = settings();
        more.presets.append(record(preset(lettersPreset, {})));
        storeAndPost(more);
        EXPECT_TRUE(waitUntil([&] { return helper.errors().contains("presets in the menu: 3"); }));
    }
};

} // namespace

TEST_F(LifeProgramTest, ItIsFoundByItsName)
{
    store(settings());
    const auto helper = start();
    QFile name(QStringLiteral("/proc/%1/comm").arg(helper->pid()));
    ASSERT_TRUE(name.open(QIODevice::ReadOnly));
    EXPECT_EQ(name.readAll(), "QNBHelper\n");
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, WithoutADisplayItSaysSoAndEnds)
{
    store(settings());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":65000"));
    for (const char *platform : {"xcb", "wayland"}) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QString::fromLatin1(platform));
        for (const QStringList &arguments : {QStringList(), QStringList(QStringLiteral("--launcher"))}) {
            ChildProcess helper(program(), arguments, environment);
            ASSERT_TRUE(helper.waitForEnd(std::chrono::minutes(1))) << platform;
            EXPECT_TRUE(helper.hasReturned(1)) << platform;
            EXPECT_THAT(helper.errors().toStdString(), HasSubstr("\nQNBHelper: No window can be shown: "))
                << platform;
        }
    }
}

TEST_F(LifeProgramTest, ItsLoginItemFollowsItToANewPlace)
{
    store(settings());
    const QString path = loginItemOfOldPlace();
    const auto helper = start();
    EXPECT_THAT(contentOf(path).toStdString(), HasSubstr(program().toStdString()));
    EXPECT_EQ(QFileInfo(path).dir().entryList(QDir::Files).size(), 1);
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, AfterAStopInThePaneNoLoginItemFollowsIt)
{
    store(settings());
    Preferences preferences(QStringLiteral(QUENBY_IDENTIFIER), {home_.configFolder(), home_.runtimeFolder()});
    preferences.setAppValue(QNBPreferenceKey::launchHelperOnStart, false);
    ASSERT_TRUE(preferences.appSynchronize());
    const QString path = loginItemOfOldPlace();
    const QByteArray before = contentOf(path);
    const auto helper = start();
    EXPECT_FALSE(before.isEmpty());
    EXPECT_EQ(contentOf(path), before);
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, ASecondOneEndsAtOnceAndLeavesTheFirstAlone)
{
    store(settings());
    const auto helper = start();
    const auto second = startIn(environment());
    ASSERT_TRUE(second->waitForEnd(std::chrono::minutes(1)));
    EXPECT_TRUE(second->hasReturned(0));
    EXPECT_THAT(second->errors().toStdString(), HasSubstr("is locked by another process"));
    EXPECT_TRUE(helper->isRunning());
    expectEndOf(*helper);
    const auto third = start();
    expectEndOf(*third);
}

TEST_F(LifeProgramTest, ASecondOneEndsAtOnceWithoutABusToo)
{
    store(settings());
    const auto helper = startIn(withoutBus());
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    const auto second = startIn(withoutBus());
    ASSERT_TRUE(second->waitForEnd(std::chrono::minutes(1)));
    EXPECT_THAT(second->errors().toStdString(), HasSubstr("is locked by another process"));
    EXPECT_TRUE(helper->isRunning());
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, OneThatCannotLockSaysWhyAndDoesNotClaimThatAnotherOneRuns)
{
    store(settings());
    ASSERT_TRUE(QDir().mkdir(home_.runtimeFolder() + QStringLiteral("/quenby-helper.lock")));
    const auto helper = startIn(environment());
    ASSERT_TRUE(helper->waitForEnd(std::chrono::minutes(1)));
    EXPECT_THAT(helper->errors().toStdString(), HasSubstr("not started: \"cannot open the lock "));
    EXPECT_THAT(helper->errors().toStdString(), Not(HasSubstr("another")));
}

TEST_F(LifeProgramTest, ABusThatIsSilentKeepsItNeitherFromRunningNorFromEnding)
{
    store(settings());
    const SilentSocket silent;
    QProcessEnvironment withSilentBus = environment();
    withSilentBus.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), silent.busAddress());
    const auto helper = startIn(withSilentBus);
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, ABusThatDiesIsSurvived)
{
    store(settings());
    const auto helper = start();
    bus_.kill();
    EXPECT_TRUE(
        waitUntil([&] { return helper->errors().contains("the bus has gone"); }, std::chrono::minutes(1)));
    EXPECT_TRUE(helper->isRunning());
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, ADisplayThatGoesEndsItInOrder)
{
    store(settings());
    const QString calls = home_.filePath(QStringLiteral("calls"));
    QProcessEnvironment traced = environment();
    // What looks for leaks cannot do so while somebody traces it.
    traced.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    ChildProcess helper(QStringLiteral("strace"),
                        {QStringLiteral("-f"), QStringLiteral("-qq"), QStringLiteral("-o"), calls,
                         QStringLiteral("-e"), QStringLiteral("trace=prctl,exit,exit_group"), program()},
                        traced);
    ASSERT_TRUE(waitUntilItHasRead(helper));
    screen_.kill();
    ASSERT_TRUE(helper.waitForEnd(std::chrono::minutes(1)));
    EXPECT_TRUE(helper.hasReturned(1)) << helper.errors().constData();
    EXPECT_TRUE(contentOf(calls).contains("\"session bus\""));
    EXPECT_FALSE(threadsAtTheEnd(contentOf(calls)).contains("session bus"));
}

TEST_F(LifeProgramTest, ABusThatIsStoppedAtItsStartIsUsedOnceItAnswers)
{
    store(settings());
    FakeTray tray(bus_.address());
    bus_.process().signal(SIGSTOP);
    QElapsedTimer stopped;
    stopped.start();
    const auto helper = startIn(environment());
    EXPECT_TRUE(waitUntilItHasRead(*helper));
    ASSERT_TRUE(waitUntil([&] { return stopped.hasExpired(3000); }));
    bus_.process().signal(SIGCONT);
    expectToUseTheBus(tray, *helper);
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, OrdersAreTakenWhileAWindowKeepsItFromBeginningAnewForTheBus)
{
    ASSERT_TRUE(QDir().mkpath(home_.configFolder() + QStringLiteral("/" QUENBY_IDENTIFIER ".plist")));
    bus_.process().signal(SIGSTOP);
    const auto helper = startIn(environment());
    EXPECT_FALSE(screen_.windowOf(helper->pid()).isEmpty()) << "it tells that the presets cannot be read";
    bus_.process().signal(SIGCONT);
    SessionBus bus(bus_.address());
    QString reason;
    EXPECT_TRUE(waitUntil([&] {
        return HelperService::create(bus, {lettersPreset}, {target()}, &reason) ==
               HelperService::Answer::NotUnderstood;
    })) << qPrintable(reason);
    EXPECT_FALSE(screen_.windowOf(helper->pid()).isEmpty());
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, ToldToEndWhileItBeginsAnewItEnds)
{
    store(settings());
    bus_.process().signal(SIGSTOP);
    const auto helper = startIn(environment());
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    bus_.process().signal(SIGCONT);
    ASSERT_TRUE(waitUntil([&] { return helper->errors().contains("beginning anew"); }));
    helper->signal(SIGTERM);
    EXPECT_TRUE(helper->waitForEnd(std::chrono::minutes(1)));
}

TEST_F(LifeProgramTest, ABusThatStartsAgainIsUsedAgain)
{
    store(settings());
    const auto helper = start();
    bus_.kill();
    ASSERT_TRUE(waitUntil([&] { return helper->errors().contains("the bus has gone"); }));
    // Nobody can tell of this change.
    QNBSettings fewer = settings();
    fewer.presets.removeLast();
    store(fewer);
    bus_.start();
    EXPECT_TRUE(waitUntil([&] { return helper->errors().contains("presets in the menu: 1"); }));
    FakeTray tray(bus_.address());
    expectToUseTheBus(tray, *helper);
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, ChangesThatNeverCeaseAreReadAllTheSame)
{
    store(settings());
    const auto helper = start();
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    QNBSettings more = settings();
    more.presets.append(record(preset(lettersPreset, {})));
    store(more);
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus_.address()));
    QElapsedTimer pause;
    pause.start();
    qint64 longestPause = 0;
    EXPECT_TRUE(waitUntil([&] {
        // Well below the time that the helper waits for more of them.
        longestPause = std::max(longestPause, pause.restart());
        centre.postNotificationName(QNBPresetConfigurationChangedNotification);
        return helper->errors().contains("presets in the menu: 3");
    })) << "the longest pause was "
        << longestPause << " ms";
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, AnOrderForTooManyFoldersIsRefusedWithTheReasonAndOthersAreTaken)
{
    store(settings());
    const auto helper = start();
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    QStringList folders;
    for (int i = 0; i < 3000; ++i)
        folders.append(home_.filePath(QStringLiteral("folder %1").arg(i)));
    QString reason;
    SessionBus bus(bus_.address());
    EXPECT_EQ(HelperService::create(bus, {lettersPreset}, folders, &reason), HelperService::Answer::Refused);
    EXPECT_THAT(reason.toStdString(), HasSubstr("more than 1000 folders"));
    EXPECT_EQ(HelperService::create(bus, {lettersPreset}, {target()}, &reason), HelperService::Answer::Taken);
    EXPECT_TRUE(waitUntil([&] { return tree().size() == 2; }));
    expectEndOf(*helper);
}

TEST_F(LifeProgramTest, TheEndOfWhatALibraryOfTheDesktopDoesInItIsNotItsOwn)
{
    store(settings());
    QProcessEnvironment environment = this->environment();
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(QUENBY_DESKTOP_PLUGINS));
    environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"), QStringLiteral("desktopjobs"));
    const auto helper = startIn(environment);
    ASSERT_TRUE(waitUntilItHasRead(*helper));
    const auto jobs = [&] { return helper->errors().count("a job of the desktop was done"); };
    EXPECT_TRUE(waitUntil([&, before = jobs()] { return jobs() > before + 1; }));
    expectEndOf(*helper);
}
