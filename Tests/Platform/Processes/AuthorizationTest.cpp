// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/Authorization.h"

#include "Platform/Files/FileOperations.h"
#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <csignal>
#include <sys/stat.h>

namespace {

const QString agentName = QStringLiteral("pkexec");
const QByteArray tool = QByteArrayLiteral("/bin/rm");

/// A stand-in for the agent, and a folder that the real tool is to remove.
class AuthorizationTest : public FileFixture
{
protected:
    AuthorizationTest() { makeVictim(victim); }
    ~AuthorizationTest() override
    {
        // What was given up ends, too.
        EXPECT_TRUE(waitUntil(hasNoChild));
    }

    static void makeVictim(const QByteArray &path)
    {
        EXPECT_EQ(::mkdir(path.constData(), S_IRWXU), 0);
        EXPECT_EQ(::mkdir((path + "/inside").constData(), S_IRWXU), 0);
    }
    static QByteArrayList removing(const QByteArray &path)
    {
        return {QByteArrayLiteral("-rf"), QByteArrayLiteral("--interactive=once"), path};
    }
    Authorization::Options agent(const QByteArray &then)
    {
        Authorization::Options options;
        options.agent = programs.add(agentName, then);
        return options;
    }
    Authorization::Options grantingAgent()
    {
        programs.grant();
        return agent(programs.becomeToolOnceGranted());
    }
    bool isWhole() const
    {
        return FileOperations::exists(victim) && FileOperations::exists(victim + "/inside");
    }

    StandInPrograms programs;
    const QByteArray victim = root().toUtf8() + "/victim";
};

} // namespace

TEST_F(AuthorizationTest, TheToolRemovesNothingBeforeTheRightIsUsed)
{
    Authorization authorization(grantingAgent());
    ASSERT_TRUE(authorization.copyRights(tool, removing(victim)));
    EXPECT_TRUE(isWhole());
    EXPECT_TRUE(authorization.executeWithPrivileges());
    EXPECT_TRUE(waitUntil([this] { return !FileOperations::exists(victim); }));
    EXPECT_EQ(programs.starts(agentName), (QList<QByteArrayList>{{"--disable-internal-agent", tool, "-rf",
                                                                  "--interactive=once", victim}}));
}

TEST_F(AuthorizationTest, TheToolGoesOnWhenItsOwnerHasGone)
{
    {
        Authorization authorization(grantingAgent());
        ASSERT_TRUE(authorization.copyRights(tool, removing(victim)));
        EXPECT_TRUE(authorization.executeWithPrivileges());
    }
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_FALSE(FileOperations::exists(victim));
}

TEST_F(AuthorizationTest, ARightThatIsNotUsedRemovesNothing)
{
    {
        Authorization authorization(grantingAgent());
        ASSERT_TRUE(authorization.copyRights(tool, removing(victim)));
    }
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_TRUE(isWhole());
}

TEST_F(AuthorizationTest, ARightIsUsedOnce)
{
    Authorization authorization(grantingAgent());
    EXPECT_FALSE(authorization.executeWithPrivileges());
    ASSERT_TRUE(authorization.copyRights(tool, removing(victim)));
    EXPECT_TRUE(authorization.executeWithPrivileges());
    EXPECT_FALSE(authorization.executeWithPrivileges());
}

TEST_F(AuthorizationTest, RefusedIsWhatEndsWithoutBecomingTheTool)
{
    for (const QByteArray &ending : {QByteArrayLiteral("exit 126"), QByteArrayLiteral("exit 127"),
                                     QByteArrayLiteral("exit 0"), QByteArrayLiteral("kill -KILL $$")}) {
        Authorization authorization(agent(ending));
        EXPECT_FALSE(authorization.copyRights(tool, removing(victim))) << ending.constData();
        EXPECT_FALSE(authorization.executeWithPrivileges());
        EXPECT_TRUE(isWhole());
    }
}

TEST_F(AuthorizationTest, RefusedIsWhatBecomesAnotherProgramThanTheTool)
{
    Authorization authorization(agent("exec /bin/true"));
    EXPECT_FALSE(authorization.copyRights(tool, removing(victim)));
}

TEST_F(AuthorizationTest, WithoutAnAgentThereAreNoRights)
{
    Authorization::Options options;
    options.agent = programs.folder() + QStringLiteral("/missing");
    EXPECT_FALSE(Authorization(options).copyRights(tool, removing(victim)));

    options.agent = in(QStringLiteral("not executable"));
    put(options.agent, "#!/bin/sh\n");
    EXPECT_FALSE(Authorization(options).copyRights(tool, removing(victim)));

    options.agent = in(QStringLiteral("no program"));
    put(options.agent, "\1\2\3");
    ASSERT_TRUE(QFile::setPermissions(options.agent, QFile::ReadOwner | QFile::ExeOwner));
    EXPECT_FALSE(Authorization(options).copyRights(tool, removing(victim)));
    EXPECT_TRUE(isWhole());
}

TEST_F(AuthorizationTest, TheAgentIsLookedForOnThePath)
{
    programs.grant();
    programs.add(agentName, programs.becomeToolOnceGranted());
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", programs.folder().toUtf8() + ':' + path);
    {
        Authorization authorization;
        EXPECT_TRUE(authorization.copyRights(tool, removing(victim)));
    }
    qputenv("PATH", path);
    EXPECT_EQ(programs.starts(agentName).size(), 1);
}

TEST_F(AuthorizationTest, WaitsForTheUserWhileTimersFire)
{
    Authorization authorization(agent(programs.becomeToolOnceGranted()));
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        EXPECT_TRUE(isWhole());
        if (++ticks == 50)
            programs.grant();
    });
    timer.start(5);
    EXPECT_TRUE(authorization.copyRights(tool, removing(victim)));
    EXPECT_GE(ticks, 50);
}

TEST_F(AuthorizationTest, AnUnansweredQuestionGoesWithTheProgram)
{
    Authorization authorization(agent(programs.becomeToolOnceGranted()));
    bool granted = true;
    QTimer::singleShot(0, qApp, [&] { granted = authorization.copyRights(tool, removing(victim)); });
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [this] {
        if (!programs.starts(agentName).isEmpty())
            QCoreApplication::quit();
    });
    poll.start(5);
    QCoreApplication::exec();
    EXPECT_FALSE(granted);
    EXPECT_TRUE(waitUntil(hasNoChild)) << "the question is still on the screen";
    EXPECT_TRUE(isWhole());
}

TEST_F(AuthorizationTest, WhatCannotBeSeenIsRefused)
{
    Authorization::Options options = grantingAgent();
    options.processes = root().toUtf8() + "/no-processes";
    Authorization authorization(options);
    EXPECT_FALSE(authorization.copyRights(tool, removing(victim)));
    EXPECT_FALSE(authorization.executeWithPrivileges());
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_TRUE(isWhole());
}

TEST_F(AuthorizationTest, AToolThatWasEndedIsNoHarmToThisProcess)
{
    Authorization authorization(grantingAgent());
    ASSERT_TRUE(authorization.copyRights(tool, removing(victim)));
    ASSERT_EQ(programs.processes(agentName).size(), 1);
    ASSERT_EQ(::kill(programs.processes(agentName).constFirst(), SIGKILL), 0);
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_FALSE(authorization.executeWithPrivileges());
    EXPECT_TRUE(isWhole());
}

TEST_F(AuthorizationTest, TheToolSpeaksThePlainLocale)
{
    qputenv("LC_ALL", "de_DE.UTF-8");
    const QString locale = in(QStringLiteral("locale"));
    Authorization authorization(agent("printf %s \"$LC_ALL\" > '" + locale.toUtf8() + "'; exit 126"));
    EXPECT_FALSE(authorization.copyRights(tool, removing(victim)));
    qunsetenv("LC_ALL");
    EXPECT_EQ(contentOf(locale), "C");
}

TEST_F(AuthorizationTest, AnyPathGoesUnharmed)
{
    programs.grant();
    for (const QByteArray &name :
         {QByteArrayLiteral("with blanks "), QByteArrayLiteral("'single' and \"double\""),
          QByteArrayLiteral("two\nlines"), QByteArrayLiteral("100% %s %n"), QByteArrayLiteral("-rf"),
          QByteArrayLiteral("$(touch x); `id` & | * ?"), QByteArrayLiteral("not \xff\xfe UTF-8 \xe9")}) {
        StandInPrograms own;
        own.grant();
        Authorization::Options options;
        options.agent = own.add(agentName, own.becomeToolOnceGranted());
        const QByteArray path = root().toUtf8() + '/' + name;
        makeVictim(path);
        Authorization authorization(options);
        ASSERT_TRUE(authorization.copyRights(tool, removing(path))) << name.constData();
        EXPECT_TRUE(authorization.executeWithPrivileges());
        EXPECT_TRUE(waitUntil(hasNoChild));
        EXPECT_FALSE(FileOperations::exists(path)) << name.constData();
        EXPECT_EQ(own.starts(agentName).value(0).value(4), path);
        EXPECT_TRUE(isWhole());
    }
}
