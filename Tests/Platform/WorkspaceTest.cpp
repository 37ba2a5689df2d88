// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Workspace.h"

#include "TestLauncher.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class WorkspaceTest : public ::testing::Test
{
protected:
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
