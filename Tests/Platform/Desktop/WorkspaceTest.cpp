// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Workspace.h"

#include "TestLauncher.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TestApplication.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class WorkspaceTest : public ::testing::Test
{
protected:
    TestLauncher launcher;
};

class WorkspaceApplicationTest : public ::testing::Test
{
protected:
    WorkspaceApplicationTest()
    {
        launcher.install();
        qputenv("HOME", home.path().toUtf8());
    }
    ~WorkspaceApplicationTest() override { qputenv("HOME", oldHome); }

    QString in(const QString &name) const { return folder.filePath(name); }

    /// The folder with this name, whatever it holds, has an application that is started as itself.
    void expectStarted(const QString &parent)
    {
        const TestApplication application(in(parent) + QStringLiteral("/Recording.app"));
        ASSERT_TRUE(Workspace::openFile(application.path())) << qPrintable(parent);
        const std::optional<TestApplication::Start> start = application.start();
        ASSERT_TRUE(start) << qPrintable(parent);
        EXPECT_EQ(start->program, QFile::encodeName(application.executable()));
        EXPECT_EQ(start->arguments, QList<QByteArray>());
    }

    const QTemporaryDir folder;
    const QTemporaryDir home;
    const QByteArray oldHome = qgetenv("HOME");
    TestLauncher launcher;
};

} // namespace

TEST_F(WorkspaceTest, OpensAWebAddressAsOneArgument)
{
    launcher.install();
    EXPECT_TRUE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example/help.php?a=1&b=2"))));
    EXPECT_EQ(launcher.launched(), "[https://quenby.example/help.php?a=1&b=2]");
}

TEST_F(WorkspaceTest, NoShellReadsTheAddress)
{
    launcher.install();
    EXPECT_TRUE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example/$(id)/a b;'\"`"))));
    EXPECT_EQ(launcher.launched(), "[https://quenby.example/$(id)/a%20b;'%22%60]");
}

TEST_F(WorkspaceTest, OpensAFolderByItsEncodedAddress)
{
    launcher.install();
    EXPECT_TRUE(Workspace::openURL(QUrl::fromLocalFile(QStringLiteral("/some where/50%/Ünïcode"))));
    EXPECT_EQ(launcher.launched(), "[file:///some%20where/50%25/%C3%9Cn%C3%AFcode]");
}

TEST_F(WorkspaceTest, RefusesAddressesThatCouldStartAnything)
{
    launcher.install();
    const QStringList addresses = {QString(),
                                   QStringLiteral("--help"),
                                   QStringLiteral("relative/path"),
                                   QStringLiteral("/no/scheme"),
                                   QStringLiteral("https://"),
                                   QStringLiteral("mailto:"),
                                   QStringLiteral("javascript:alert(1)"),
                                   QStringLiteral("smb://server/share"),
                                   QStringLiteral("file://server/share"),
                                   QStringLiteral("file:relative")};
    for (const QString &address : addresses)
        EXPECT_FALSE(Workspace::openURL(QUrl(address))) << qPrintable(address);
    EXPECT_TRUE(Workspace::openURL(QUrl(QStringLiteral("mailto:someone@quenby.example"))));
    EXPECT_EQ(launcher.launched(), "[mailto:someone@quenby.example]");
}

TEST_F(WorkspaceTest, SaysWhenThereIsNoLauncher)
{
    const QTemporaryDir empty;
    qputenv("PATH", empty.path().toUtf8());
    EXPECT_FALSE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example"))));
}

TEST_F(WorkspaceTest, OpensAFileOrAFolderByItsPath)
{
    launcher.install();
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("50% & more?#")));
    EXPECT_TRUE(Workspace::openFile(folder.filePath(QStringLiteral("50% & more?#"))));
    EXPECT_EQ(launcher.launched(), "[file://" + folder.path().toUtf8() + "/50%25%20&%20more%3F%23]");
}

TEST_F(WorkspaceTest, OpensNothingThatIsNotThere)
{
    launcher.install();
    const QTemporaryDir folder;
    EXPECT_FALSE(Workspace::openFile(folder.filePath(QStringLiteral("missing"))));
    EXPECT_FALSE(Workspace::openFile({}));
    EXPECT_TRUE(Workspace::openFile(folder.path()));
    EXPECT_EQ(launcher.launched(), "[file://" + folder.path().toUtf8() + "]");
}

TEST_F(WorkspaceApplicationTest, AnApplicationIsStartedByItsExecutable)
{
    const TestApplication application(in(QStringLiteral("Recording.app")));
    EXPECT_TRUE(Workspace::openFile(application.path()));
    const std::optional<TestApplication::Start> start = application.start();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->program, application.executable().toUtf8());
    EXPECT_EQ(start->processName, TestApplication::defaultExecutable);
    EXPECT_EQ(start->arguments, QList<QByteArray>());
    EXPECT_FALSE(launcher.wasStarted());
}

TEST_F(WorkspaceApplicationTest, AnApplicationIsNobodysChildAndSharesNothing)
{
    const TestApplication application(in(QStringLiteral("Recording.app")));
    EXPECT_TRUE(Workspace::openFile(application.path()));
    const std::optional<TestApplication::Start> start = application.start();
    ASSERT_TRUE(start);
    EXPECT_NE(start->parent, ::getpid());
    EXPECT_NE(start->session, ::getsid(0));
    EXPECT_EQ(start->standardFiles, QList<QByteArray>(3, "/dev/null"));
    EXPECT_EQ(start->folder, home.path().toUtf8());
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(WorkspaceApplicationTest, AnApplicationIsNotToldWhatABusSaidToThisProgram)
{
    const TestApplication application(in(QStringLiteral("Recording.app")));
    const QString record = in(QStringLiteral("environment"));
    QFile script(application.executable());
    ASSERT_TRUE(script.open(QIODevice::WriteOnly | QIODevice::Truncate));
    const QByteArray path = '\'' + record.toUtf8() + '\'';
    script.write("#!/bin/sh\nenv > " + path + ".new\nmv " + path + ".new " + path + '\n');
    script.close();
    qputenv("QUENBY_TEST_KEPT", "kept");
    for (const char *name : {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE"})
        qputenv(name, "said");
    EXPECT_TRUE(Workspace::openFile(application.path()));
    for (const char *name : {"DBUS_STARTER_ADDRESS", "DBUS_STARTER_BUS_TYPE"})
        qunsetenv(name);
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(record); }));
    QFile file(record);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray variables = file.readAll();
    EXPECT_TRUE(variables.contains("QUENBY_TEST_KEPT=kept"));
    EXPECT_FALSE(variables.contains("DBUS_STARTER_"));
}

TEST_F(WorkspaceApplicationTest, AnApplicationIsStartedWithoutAHomeToo)
{
    qputenv("HOME", in(QStringLiteral("missing")).toUtf8());
    const TestApplication application(in(QStringLiteral("Recording.app")));
    EXPECT_TRUE(Workspace::openFile(application.path()));
    const std::optional<TestApplication::Start> start = application.start();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->folder, "/");
}

TEST_F(WorkspaceApplicationTest, EveryPathReachesTheApplicationUnharmed)
{
    for (const char *name : {"a b", " ends ", "'single'", "\"double\"", "new\nline", "ta\tb",
                             "back\\slash\\n", "50%", "%f %%", "$HOME", "`id`", "$(id)", "-x", "--help",
                             "a;b&c|d>e", "*?[a]~#", "Ünïcode 漢字 \xf0\x9f\x98\x80", "\x01\x7f"})
        expectStarted(QString::fromUtf8(name));
    EXPECT_FALSE(launcher.wasStarted());
}

TEST_F(WorkspaceApplicationTest, ThePathMayEndInASlashOrBeRelative)
{
    const TestApplication application(in(QStringLiteral("Recording.app")));
    EXPECT_TRUE(Workspace::openFile(application.path() + u'/'));
    ASSERT_TRUE(application.start());

    const TestApplication other(in(QStringLiteral("-Other.app")));
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    EXPECT_TRUE(Workspace::openFile(QStringLiteral("-Other.app")));
    EXPECT_TRUE(other.start());
    QDir::setCurrent(before);
}

TEST_F(WorkspaceApplicationTest, WhatCannotBeNamedIsNotStarted)
{
    const QByteArray text = QFile::encodeName(in(QStringLiteral("a\uFFFD")));
    const TestApplication application(QFile::decodeName(text) + QStringLiteral("/Recording.app"));
    const QByteArray noText = folder.path().toUtf8() + "/a\xff";
    ASSERT_EQ(::rename(text.constData(), noText.constData()), 0);
    // Read as text, it is the name that the folder had before.
    EXPECT_FALSE(Workspace::openFile(QFile::decodeName(noText + "/Recording.app")));
    EXPECT_FALSE(application.wasStarted());
    ASSERT_EQ(::rename(noText.constData(), text.constData()), 0);
}

TEST_F(WorkspaceApplicationTest, AnApplicationWithoutAnExecutableIsNotOpened)
{
    const QString unnamed = in(QStringLiteral("Unnamed.app"));
    ASSERT_TRUE(QDir().mkpath(unnamed + QStringLiteral("/Contents/MacOS")));
    EXPECT_FALSE(Workspace::openFile(unnamed));

    const QString missing = in(QStringLiteral("Missing.app"));
    TestApplication::makeBundle(missing, QStringLiteral("Missing"));
    EXPECT_FALSE(Workspace::openFile(missing));

    const QString outside = in(QStringLiteral("Outside.app"));
    TestApplication::makeBundle(outside, QStringLiteral("../../../Missing.app/Contents/Info.plist"));
    EXPECT_FALSE(Workspace::openFile(outside));
    EXPECT_FALSE(launcher.wasStarted());
}

TEST_F(WorkspaceApplicationTest, AnExecutableThatCannotBeRunIsReported)
{
    const TestApplication application(in(QStringLiteral("Recording.app")));
    ASSERT_TRUE(QFile::setPermissions(application.executable(), QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_FALSE(Workspace::openFile(application.path()));

    QFile executable(application.executable());
    ASSERT_TRUE(executable.open(QIODevice::WriteOnly));
    executable.write("#!/no/such/interpreter\n");
    executable.close();
    ASSERT_TRUE(executable.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    EXPECT_FALSE(Workspace::openFile(application.path()));
    EXPECT_FALSE(application.wasStarted());
    EXPECT_FALSE(launcher.wasStarted());
}

TEST_F(WorkspaceApplicationTest, OtherBundlesAreFoldersStill)
{
    const TestApplication bundle(in(QStringLiteral("Recording.plugin")));
    EXPECT_TRUE(Workspace::openFile(bundle.path()));
    EXPECT_EQ(launcher.launched(), "[file://" + bundle.path().toUtf8() + "]");
    EXPECT_FALSE(bundle.wasStarted());
}
