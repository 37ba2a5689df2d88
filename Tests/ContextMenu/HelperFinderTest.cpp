// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/HelperFinder.h"

#include "Platform/Desktop/SharedFileList.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/IdleProgram.h"

#include <QDir>
#include <QFile>
#include <QUrl>

namespace {

const QString code = QStringLiteral("/Contents/MacOS/");
const QString helperBundle = QStringLiteral("QNBHelper.app");

class HelperFinderTest : public MenuHome
{
protected:
    QString helperProgram() const
    {
        return pane() + code + helperBundle + code + QStringLiteral("QNBHelper");
    }
    /// Another copy of the helper's bundle, in \a folder.
    QString copyTo(const QString &folder) const
    {
        const QString bundle = folder + u'/' + helperBundle;
        makeFolder(bundle + code);
        EXPECT_TRUE(QFile::copy(pane() + code + helperBundle + QStringLiteral("/Contents/Info.plist"),
                                bundle + QStringLiteral("/Contents/Info.plist")));
        EXPECT_TRUE(QFile::copy(helperProgram(), bundle + code + QStringLiteral("QNBHelper")));
        return bundle + code + QStringLiteral("QNBHelper");
    }
    QString installedPlugin() const
    {
        return in(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin")) + code +
               QStringLiteral("QNBContextMenu");
    }
    QString found() const { return QString::fromUtf8(HelperFinder::find(installedPlugin())); }
};

} // namespace

TEST_F(HelperFinderTest, TheHelperBesideThePluginIsTheOne)
{
    copyTo(data(QStringLiteral("PreferencePanes/Other.prefPane") + code));
    const QString plugin = pane() + code + QStringLiteral("QNBContextMenu.plugin") + code;
    makeFolder(plugin);
    put(plugin + QStringLiteral("QNBContextMenu"), "");
    EXPECT_EQ(HelperFinder::find(plugin + QStringLiteral("QNBContextMenu")), helperProgram().toUtf8());
}

TEST_F(HelperFinderTest, WithoutAnyThereIsNone)
{
    EXPECT_EQ(found(), QString());
}

TEST_F(HelperFinderTest, AProgramThatMerelyRunsUnderItsNameIsNotTaken)
{
    const IdleProgram program(QStringLiteral("QNBHelper"));
    const std::unique_ptr<ChildProcess> running = program.start();
    ASSERT_TRUE(running->isRunning());
    EXPECT_EQ(found(), QString());
}

TEST_F(HelperFinderTest, ElsewhereTheLoginItemIsTaken)
{
    copyTo(data(QStringLiteral("PreferencePanes/Other.prefPane") + code));
    const std::optional<SharedFileList> list = SharedFileList::create();
    ASSERT_TRUE(list);
    const QString item = copyTo(in(QStringLiteral("item")));
    ASSERT_TRUE(list->insertItemURL(QUrl::fromLocalFile(in(QStringLiteral("item/") + helperBundle))));
    EXPECT_EQ(found(), item);
    ASSERT_TRUE(QFile::remove(item));
    EXPECT_NE(found(), item);
}

TEST_F(HelperFinderTest, ThenTheOneInAPane)
{
    const QString ofTheSystem =
        copyTo(home_.systemDataFolder() + QStringLiteral("/PreferencePanes/Some.prefPane") + code);
    EXPECT_EQ(found(), QDir::cleanPath(ofTheSystem));
    const QString ofTheUser = copyTo(data(QStringLiteral("PreferencePanes/Some.prefPane") + code));
    EXPECT_EQ(found(), QDir::cleanPath(ofTheUser));
}

TEST_F(HelperFinderTest, ThenTheOneInTheSearchPath)
{
    const QString link = programs_.folder() + QStringLiteral("/QNBHelper");
    ASSERT_TRUE(QFile::link(helperProgram(), link));
    EXPECT_EQ(found(), link);
}

TEST_F(HelperFinderTest, ThePaneIsFoundThroughLinks)
{
    const QString link = in(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(helperProgram(), link));
    const std::optional<Bundle> bundle = HelperFinder::paneOf(link.toUtf8());
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundlePath(), QFileInfo(pane()).canonicalFilePath());
    EXPECT_FALSE(HelperFinder::paneOf("/bin/sh"));
    EXPECT_FALSE(HelperFinder::paneOf("/nowhere/QNBHelper"));
}
