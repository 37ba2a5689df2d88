// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Workspace.h"

#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// A launcher of the test's own, first on the path, which writes down its arguments.
class WorkspaceTest : public ::testing::Test
{
protected:
    WorkspaceTest()
        : path_(qgetenv("PATH"))
    {
        qputenv("PATH", folder_.path().toUtf8() + ":" + path_);
    }
    ~WorkspaceTest() override { qputenv("PATH", path_); }

    void installLauncher()
    {
        QFile launcher(folder_.filePath(QStringLiteral("xdg-open")));
        ASSERT_TRUE(launcher.open(QIODevice::WriteOnly));
        launcher.write("#!/bin/sh\n"
                       "for argument in \"$@\"; do printf '[%s]' \"$argument\"; done > '" +
                       record().toUtf8() + ".new'\nmv '" + record().toUtf8() + ".new' '" + record().toUtf8() +
                       "'\n");
        launcher.close();
        ASSERT_TRUE(launcher.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    QString record() const { return folder_.filePath(QStringLiteral("record")); }

    /// What the launcher was given, once it was started.
    QByteArray launched()
    {
        if (!waitUntil([this] { return QFile::exists(record()); }))
            return "nothing";
        QFile file(record());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    const QTemporaryDir folder_;
    const QByteArray path_;
};

} // namespace

TEST_F(WorkspaceTest, OpensAWebAddressAsOneArgument)
{
    installLauncher();
    EXPECT_TRUE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example/help.php?a=1&b=2"))));
    EXPECT_EQ(launched(), "[https://quenby.example/help.php?a=1&b=2]");
}

TEST_F(WorkspaceTest, NoShellReadsTheAddress)
{
    installLauncher();
    EXPECT_TRUE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example/$(id)/a b;'\"`"))));
    EXPECT_EQ(launched(), "[https://quenby.example/$(id)/a%20b;'%22%60]");
}

TEST_F(WorkspaceTest, OpensAFolderByItsEncodedAddress)
{
    installLauncher();
    EXPECT_TRUE(Workspace::openURL(QUrl::fromLocalFile(QStringLiteral("/some where/50%/Ünïcode"))));
    EXPECT_EQ(launched(), "[file:///some%20where/50%25/%C3%9Cn%C3%AFcode]");
}

TEST_F(WorkspaceTest, RefusesAddressesThatCouldStartAnything)
{
    installLauncher();
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
    EXPECT_EQ(launched(), "[mailto:someone@quenby.example]");
}

TEST_F(WorkspaceTest, SaysWhenThereIsNoLauncher)
{
    const QTemporaryDir empty;
    qputenv("PATH", empty.path().toUtf8());
    EXPECT_FALSE(Workspace::openURL(QUrl(QStringLiteral("https://quenby.example"))));
}
