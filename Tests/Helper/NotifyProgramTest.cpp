// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/Preferences.h"
#include "Source/Model/QNBSettingsStore.h"
#include "Tests/Helper/FakeDesktop.h"
#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/KilledProcess.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <utility>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const QString fakeHelperConnection = QStringLiteral("fake-helper");

/// A helper that runs, and writes down what it is asked for.
class FakeHelper final : public QDBusVirtualObject
{
public:
    enum class Manner { Helpful, Refusing, Misunderstanding, Silent };

    /// Calls \a asked for each order, before it answers.
    FakeHelper(
        const QString &busAddress, Manner manner, std::function<void()> asked = [] {})
        : manner_(manner)
        , asked_(std::move(asked))
    {
        QDBusConnection connection = QDBusConnection::connectToBus(busAddress, fakeHelperConnection);
        EXPECT_TRUE(connection.registerVirtualObject(text("/org/quenby/QNBHelper"), this));
        EXPECT_TRUE(connection.registerService(text("org.quenby.QNBHelper")));
    }
    ~FakeHelper() override { QDBusConnection::disconnectFromBus(fakeHelperConnection); }

    QStringList orders() const { return orders_; }

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QList<QVariant> arguments = message.arguments();
        orders_ << text("%1.%2(%3) %4 %5 in %6")
                       .arg(message.interface(), message.member(), message.signature(),
                            arguments.value(0).toString(), arguments.value(1).toString(),
                            arguments.value(2).toStringList().join(u' '));
        asked_();
        switch (manner_) {
        case Manner::Silent:
            break;
        case Manner::Helpful:
            connection.send(message.createReply());
            break;
        case Manner::Refusing:
            connection.send(message.createErrorReply(QDBusError::Failed, text("not now")));
            break;
        case Manner::Misunderstanding:
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, text("no such thing")));
            break;
        }
        return true;
    }
    QString introspect(const QString &) const override { return {}; }

    const Manner manner_;
    const std::function<void()> asked_;
    QStringList orders_;
};

class NotifyProgramTest : public HelperFixture
{
protected:
    NotifyProgramTest() { storePresets({preset(text("A preset"), {file(text("made"))})}); }

    Ended createAndNotify(const QString &busAddress, const QStringList &more = {})
    {
        return create(text("A preset"), QStringList{text("--notify")} + more, busAddress);
    }

    /// Has the bus start \a command under the name of the helper.
    void offer(const QString &command) const
    {
        QFile service(bus_.servicesFolder() + text("/org.quenby.QNBHelper.service"));
        ASSERT_TRUE(service.open(QIODevice::WriteOnly));
        service.write("[D-BUS Service]\nName=org.quenby.QNBHelper\nExec=" + command.toUtf8() + '\n');
    }
    /// The helper of this user, as a bus starts it, which has none of our variables.
    QString startedHelper() const
    {
        QStringList words = {text("/usr/bin/env")};
        const QProcessEnvironment environment = home_.environment(bus_.address());
        for (const QString &name : environment.keys())
            words << text("\"%1=%2\"").arg(name, environment.value(name));
        return (words << program()).join(u' ');
    }
    void storeThatTheHelperIsStopped() const
    {
        Preferences preferences(text(QUENBY_IDENTIFIER), {home_.configFolder(), home_.runtimeFolder()});
        preferences.setAppValue(QNBPreferenceKey::launchHelperOnStart, false);
        ASSERT_TRUE(preferences.appSynchronize());
    }
    /// The process that has the helper's name; 0 if none has.
    qint64 owner() const { return bus_.processOf(text("org.quenby.QNBHelper")); }

    PrivateBus bus_;
};

} // namespace

TEST_F(NotifyProgramTest, ARunningHelperIsAskedToDoIt)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Helpful);
    const FakeDesktop desktop(bus_.address(), {});
    const Ended asked = createAndNotify(bus_.address(), {text("--in"), text("other")});
    EXPECT_EQ(asked.code, 0) << asked.errors.constData();
    EXPECT_THAT(helper.orders(), ElementsAre(text("org.quenby.QNBHelper.Create(sias) A preset 0 in %1 %2")
                                                 .arg(target(), home_.filePath(text("other")))));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_THAT(desktop.shown(), IsEmpty()) << "the running helper tells";
}

TEST_F(NotifyProgramTest, ThePositionIsPassedOn)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Helpful);
    EXPECT_EQ(createAndNotify(bus_.address(), {text("--position"), text("2")}).code, 0);
    ASSERT_EQ(helper.orders().size(), 1);
    EXPECT_THAT(helper.orders()[0].toStdString(), HasSubstr("A preset 2 in"));
}

TEST_F(NotifyProgramTest, ANumberNamesNoPresetForACallerThatMayHaveAnOldList)
{
    const FakeDesktop desktop(bus_.address(), {});
    const Ended refused =
        run({text("--create"), text("#1"), text("--in"), target(), text("--notify")}, bus_.address());
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(tree(), IsEmpty());
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_THAT(desktop.shown()[0].text.toStdString(), HasSubstr("There is no preset \"#1\""));
}

TEST_F(NotifyProgramTest, OfAKilledCreationTheNextOneWithReadersTells)
{
    storePresets({preset(text("A preset"), {folder(text("in"), {})})});
    ASSERT_TRUE(KilledProcess::isKilledAt(text("mkdirat"), 1, program(),
                                          {text("--create"), text("A preset"), text("--in"), target()},
                                          home_.environment()));
    {
        const FakeHelper helper(bus_.address(), FakeHelper::Manner::Helpful);
        EXPECT_EQ(createAndNotify(bus_.address()).errors, QByteArray());
        EXPECT_EQ(helper.orders().size(), 1);
    }
    EXPECT_THAT(run({text("--list")}).errors.toStdString(), HasSubstr(target().toStdString()));
}

TEST_F(NotifyProgramTest, WithoutOneItDoesItAndNotifies)
{
    const FakeDesktop desktop(bus_.address(), {});
    const Ended created = createAndNotify(bus_.address());
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_THAT(tree(), ElementsAre(text("made")));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_THAT(desktop.shown()[0].title.toStdString(), HasSubstr("\"A preset\" was created"));
    EXPECT_THAT(desktop.shown()[0].text.toStdString(), HasSubstr(target().toStdString()));
}

TEST_F(NotifyProgramTest, TheBusStartsAnInstalledHelperThatDoesIt)
{
    const FakeDesktop desktop(bus_.address(), {});
    offer(startedHelper());
    const Ended asked = createAndNotify(bus_.address());
    EXPECT_EQ(asked.code, 0) << asked.errors.constData();
    const qint64 started = owner();
    EXPECT_GT(started, 0) << "it goes on running";
    EXPECT_TRUE(waitUntil([&] { return tree() == QStringList(text("made")); }));
    if (started > 0)
        ::kill(pid_t(started), SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return owner() == 0; }));
}

TEST_F(NotifyProgramTest, AHelperThatTheUserHasStoppedIsNotStarted)
{
    const FakeDesktop desktop(bus_.address(), {});
    const QString trace = home_.filePath(text("trace"));
    offer(text("/usr/bin/touch ") + trace);
    storeThatTheHelperIsStopped();
    EXPECT_EQ(createAndNotify(bus_.address()).code, 0);
    EXPECT_THAT(tree(), ElementsAre(text("made")));
    EXPECT_FALSE(QFileInfo::exists(trace));
}

TEST_F(NotifyProgramTest, WhereTheBusCannotStartOneItDoesItItself)
{
    const FakeDesktop desktop(bus_.address(), {});
    offer(text("/bin/false"));
    EXPECT_EQ(createAndNotify(bus_.address()).code, 0);
    EXPECT_THAT(tree(), ElementsAre(text("made")));
}

TEST_F(NotifyProgramTest, OneThatRunsWithoutThisBusDoesNotHoldItUp)
{
    const FakeDesktop desktop(bus_.address(), {});
    ChildProcess other(program(), {}, home_.environment());
    const QString lock = home_.runtimeFolder() + text("/quenby-helper.lock");
    ASSERT_TRUE(waitUntil([&] { return QFileInfo::exists(lock); }));
    offer(startedHelper());
    const Ended created = createAndNotify(bus_.address());
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_THAT(tree(), ElementsAre(text("made")));
}

TEST_F(NotifyProgramTest, WhatIsAskedForEspeciallyIsDoneHere)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Helpful);
    const FakeDesktop desktop(bus_.address(), {});
    EXPECT_EQ(createAndNotify(bus_.address(), {text("--on-conflict"), text("refuse")}).code, 0);
    EXPECT_THAT(helper.orders(), IsEmpty());
    EXPECT_THAT(tree(), ElementsAre(text("made")));
    EXPECT_EQ(desktop.shown().size(), 1);
}

TEST_F(NotifyProgramTest, AnUndoIsNotifiedToo)
{
    const FakeDesktop desktop(bus_.address(), {});
    ASSERT_EQ(create(text("A preset")).code, 0);
    EXPECT_EQ(run({text("--undo"), text("--notify")}, bus_.address()).code, 0);
    EXPECT_EQ(run({text("--undo"), text("--notify")}, bus_.address()).code, 6);
    ASSERT_EQ(desktop.shown().size(), 2);
    EXPECT_EQ(desktop.shown()[0].title, text("The last creation was undone"));
    EXPECT_EQ(desktop.shown()[1].title, text("The last creation was not undone"));
}

TEST_F(NotifyProgramTest, AFailureIsNotifiedToo)
{
    const FakeDesktop desktop(bus_.address(), {});
    const Ended failed =
        run({text("--create"), text("Absent"), text("--in"), target(), text("--notify")}, bus_.address());
    EXPECT_EQ(failed.code, 2);
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_THAT(desktop.shown()[0].title.toStdString(), HasSubstr("\"Absent\" was not created"));
    EXPECT_FALSE(desktop.shown()[0].text.isEmpty());
}

TEST_F(NotifyProgramTest, AHelperThatRefusesIsNotGoneBehind)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Refusing);
    const FakeDesktop desktop(bus_.address(), {});
    const Ended refused = createAndNotify(bus_.address());
    EXPECT_EQ(refused.code, 4);
    EXPECT_THAT(refused.errors.toStdString(), HasSubstr("The running helper did not do it: not now"));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_EQ(desktop.shown().size(), 1);
}

TEST_F(NotifyProgramTest, AnOrderThatABusTookBeforeItWentIsNotCarriedOutHereToo)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Silent, [this] { bus_.kill(); });
    const Ended unanswered = createAndNotify(bus_.address());
    EXPECT_EQ(helper.orders().size(), 1);
    EXPECT_EQ(unanswered.code, 4);
    EXPECT_THAT(unanswered.errors.toStdString(),
                HasSubstr("Whether the running helper has done it is not known"));
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(NotifyProgramTest, AHelperThatKnowsNoSuchPresetIsBelieved)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Misunderstanding);
    const FakeDesktop desktop(bus_.address(), {});
    const Ended misunderstood = createAndNotify(bus_.address());
    EXPECT_EQ(misunderstood.code, 2);
    EXPECT_THAT(misunderstood.errors.toStdString(), HasSubstr("no such thing"));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_EQ(desktop.shown().size(), 1);
}

TEST_F(NotifyProgramTest, ARunningHelperIsAskedForTheLauncherWithTheLeaveToComeToTheFront)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Helpful);
    const auto openIn = [this](const QStringList &arguments, const QString &variable) {
        QProcessEnvironment environment = home_.environment(bus_.address());
        environment.insert(variable, text("token"));
        ChildProcess process(program(), arguments, environment);
        EXPECT_TRUE(waitUntil([&] { return !process.isRunning(); }));
        EXPECT_TRUE(process.waitForEnd() && process.hasReturned(0)) << process.errors().constData();
    };
    openIn({text("--launcher"), text("--in"), target(), text("--in"), text("other")},
           text("XDG_ACTIVATION_TOKEN"));
    openIn({text("--menu"), text("--in"), target()}, text("DESKTOP_STARTUP_ID"));
    openIn({text("--launcher")}, text("UNRELATED"));
    const QString call = text("org.quenby.QNBHelper.ShowLauncher(ass) %1 %2 in ");
    // The fake prints a list as a text only if it has one entry.
    EXPECT_EQ(helper.orders(),
              QStringList({call.arg(QString(), text("token")), call.arg(target(), text("token")),
                           call.arg(QString(), QString())}));
}

TEST_F(NotifyProgramTest, AHelperThatRefusesTheLauncherIsBelieved)
{
    const FakeHelper helper(bus_.address(), FakeHelper::Manner::Misunderstanding);
    const FakeDesktop desktop(bus_.address(), {});
    const Ended refused = run({text("--launcher"), text("--notify")}, bus_.address());
    EXPECT_EQ(refused.code, 4);
    EXPECT_THAT(refused.errors.toStdString(), HasSubstr("no such thing"));
    EXPECT_EQ(desktop.shown().size(), 1);
}

TEST_F(NotifyProgramTest, WithoutADisplayTheLauncherIsRefusedWithTheReason)
{
    const FakeDesktop desktop(bus_.address(), {});
    const Ended withoutDisplay = run({text("--launcher"), text("--notify")}, bus_.address());
    EXPECT_EQ(withoutDisplay.code, 4);
    EXPECT_THAT(withoutDisplay.errors.toStdString(), HasSubstr("There is no display"));
    ASSERT_EQ(desktop.shown().size(), 1);
    EXPECT_EQ(desktop.shown()[0].title, text("The presets were not shown"));
    EXPECT_THAT(desktop.shown()[0].text.toStdString(), HasSubstr("There is no display"));
}

TEST_F(NotifyProgramTest, WithoutABusItDoesItAllTheSame)
{
    const SilentSocket silence;
    for (const QString &address : {QString(), silence.busAddress()})
        EXPECT_EQ(createAndNotify(address).code, 0) << qPrintable(address);
    EXPECT_THAT(tree(), ElementsAre(text("made"), text("made-1")));
}
