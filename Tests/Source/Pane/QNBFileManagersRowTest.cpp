// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBFileManagersRow.h"

#include "PaneFixture.h"

#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString listCommand = QStringLiteral("list");
const QString bothWithout = QStringLiteral("Dolphin\tno\nThunar\tno\n");
const QString oneWith = QStringLiteral("Dolphin\tyes\nThunar\tno\n");
const QString bothWith = QStringLiteral("Dolphin\tyes\nThunar\tyes\n");
const QString plugin =
    QStringLiteral("Quenby.prefPane/Contents/MacOS/QNBContextMenu.plugin/Contents/Info.plist");

/// That of the pane is 1.2.3.
QByteArray information(const QByteArray &version)
{
    return "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" + version +
           "</string></dict></plist>";
}

class QNBFileManagersRowTest : public PaneFixture
{
protected:
    /// With a plug-in that says \a answer when it is asked for the file managers.
    void openTab(const Result<QString> &answer)
    {
        writeFile(plugin, information("1.2.3"));
        pluginAnswers.insert(listCommand, answer);
        openPane();
        showTab();
    }
    void showTab()
    {
        auto *page = outlet<QWidget>(QStringLiteral("_ui_generalViewContainer"));
        tabs().setCurrentWidget(page);
    }
    QTabWidget &tabs() const { return *view->findChild<QTabWidget *>(); }
    QString state() const { return outlet<QLabel>(QStringLiteral("_fileManagersState"))->text(); }
    QPushButton &installButton() const { return *outlet<QPushButton>(QStringLiteral("_installMenusButton")); }
    QPushButton &removeButton() const { return *outlet<QPushButton>(QStringLiteral("_removeMenusButton")); }
    QString installed() const
    {
        return path(
            QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin/Contents/Info.plist"));
    }
    bool waitForList()
    {
        return QTest::qWaitFor([this] { return pluginCommands.contains(listCommand); });
    }
    const PaneNotice *hint() const
    {
        const auto found = listener.notices.constFind(PaneNotice::Kind::Tip);
        return found == listener.notices.constEnd() ? nullptr : &*found;
    }
};

} // namespace

TEST_F(QNBFileManagersRowTest, ItSaysWhichAreThereAndWhichHaveTheEntries)
{
    openTab(bothWithout);
    EXPECT_EQ(state(), u"The presets are not in the menus of Dolphin, Thunar yet.");
    EXPECT_TRUE(installButton().isEnabled());
    EXPECT_FALSE(removeButton().isEnabled());

    pluginAnswers.insert(listCommand, oneWith);
    loseKeyboardAndRegainIt();
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin.\nThey are not in the menus of Thunar.");
    EXPECT_TRUE(installButton().isEnabled());
    EXPECT_TRUE(removeButton().isEnabled());

    pluginAnswers.insert(listCommand, bothWith);
    loseKeyboardAndRegainIt();
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin, Thunar.");
    EXPECT_FALSE(installButton().isEnabled());

    pluginAnswers.insert(listCommand, QString());
    loseKeyboardAndRegainIt();
    EXPECT_EQ(state(), u"No file manager was found that takes entries for its menus.");
    EXPECT_FALSE(installButton().isEnabled());
    EXPECT_FALSE(removeButton().isEnabled());
}

TEST_F(QNBFileManagersRowTest, APaneWithoutThePluginSaysSo)
{
    openPane();
    showTab();
    EXPECT_EQ(state(), u"This installation comes without the menu for file managers.");
    EXPECT_FALSE(installButton().isEnabled());
    EXPECT_FALSE(removeButton().isEnabled());
    EXPECT_THAT(pluginCommands, IsEmpty());
}

TEST_F(QNBFileManagersRowTest, InstallInstallsAndRemoveTakesItBack)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(bothWithout);
    pluginAnswers.insert(listCommand, bothWith);
    pluginCommands.clear();
    installButton().click();
    EXPECT_THAT(pluginCommands, ElementsAre(QStringLiteral("register"), listCommand));
    EXPECT_TRUE(QFile::exists(installed()));
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin, Thunar.\n"
                       "In Thunar they show up once the file manager is started again.");
    EXPECT_TRUE(removeButton().isEnabled());

    pluginAnswers.insert(listCommand, bothWithout);
    pluginCommands.clear();
    removeButton().click();
    EXPECT_THAT(pluginCommands, ElementsAre(QStringLiteral("unregister"), listCommand));
    EXPECT_FALSE(QFile::exists(installed()));
    EXPECT_EQ(state(), u"The presets are not in the menus of Dolphin, Thunar yet.");
    EXPECT_FALSE(removeButton().isEnabled());
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(QNBFileManagersRowTest, APluginOfAnotherVersionCanBeInstalledAnew)
{
    writeFile(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin/Contents/Info.plist"),
              information("1.2.2"));
    openTab(bothWith);
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin, Thunar.\n"
                       "What is installed comes from another version of Quenby.");
    ASSERT_TRUE(installButton().isEnabled());
    installButton().click();
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin, Thunar.\n"
                       "In Thunar they show up once the file manager is started again.");
    EXPECT_FALSE(installButton().isEnabled());
}

TEST_F(QNBFileManagersRowTest, WhatThePluginComplainsOfIsShown)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(oneWith);
    pluginAnswers.insert(QStringLiteral("register"),
                         Result<QString>::failure(QStringLiteral("the disk\nis full")));
    installButton().click();
    EXPECT_EQ(state(), u"The presets are in the menus of Dolphin.\nThey are not in the menus of Thunar.\n"
                       "Not everything went well: the disk\u240Ais full");
    EXPECT_TRUE(installButton().isEnabled());
    pluginAnswers.insert(QStringLiteral("unregister"), Result<QString>::failure(QStringLiteral("no")));
    removeButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: no"));
    EXPECT_TRUE(QFile::exists(installed()));
    pluginAnswers.insert(listCommand, Result<QString>::failure(QStringLiteral("nobody knows")));
    loseKeyboardAndRegainIt();
    EXPECT_EQ(state(), u"Not everything went well: nobody knows");
    EXPECT_TRUE(installButton().isEnabled()) << "it writes anew what could not be read";
}

TEST_F(QNBFileManagersRowTest, WhatThePluginRemarksIsShownAlthoughItDidNotFail)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(bothWithout);
    pluginAnswers.insert(QStringLiteral("register"), QStringLiteral("one was changed\none is odd\n"));
    pluginAnswers.insert(listCommand, bothWith);
    installButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: one was changed\u240Aone is odd"))
        << qPrintable(state());
    pluginAnswers.insert(QStringLiteral("unregister"), QStringLiteral("one stays\n"));
    pluginAnswers.insert(listCommand, bothWithout);
    removeButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: one stays")) << qPrintable(state());
    EXPECT_FALSE(QFile::exists(installed()));
}

TEST_F(QNBFileManagersRowTest, AComplaintIsShownAlthoughNothingIsMissingAfterIt)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(bothWithout);
    pluginAnswers.insert(QStringLiteral("register"), Result<QString>::failure(QStringLiteral("no")));
    pluginAnswers.insert(listCommand, bothWith);
    installButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: no")) << qPrintable(state());
    EXPECT_TRUE(installButton().isEnabled());
}

TEST_F(QNBFileManagersRowTest, AComplaintEndsWhenNothingIsMissingAnyMore)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(oneWith);
    pluginAnswers.insert(QStringLiteral("register"), Result<QString>::failure(QStringLiteral("no")));
    installButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: no"));
    pluginAnswers.insert(listCommand, bothWith);
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(state().contains(u"Not everything")) << qPrintable(state());
    EXPECT_FALSE(installButton().isEnabled());

    // What was not removed is complained of although nothing is missing.
    pluginAnswers.insert(QStringLiteral("unregister"), Result<QString>::failure(QStringLiteral("never")));
    removeButton().click();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: never"));
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: never"));
}

TEST_F(QNBFileManagersRowTest, AComplaintOutlastsAListThatCannotBeRead)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(oneWith);
    pluginAnswers.insert(QStringLiteral("register"), Result<QString>::failure(QStringLiteral("no")));
    installButton().click();
    pluginAnswers.insert(listCommand, Result<QString>::failure(QStringLiteral("nobody knows")));
    loseKeyboardAndRegainIt();
    EXPECT_EQ(state(), u"Not everything went well: nobody knows");
    pluginAnswers.insert(listCommand, oneWith);
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(state().endsWith(u"Not everything went well: no")) << qPrintable(state());
    pluginAnswers.insert(listCommand, Result<QString>::failure(QStringLiteral("nobody knows")));
    loseKeyboardAndRegainIt();
    pluginAnswers.insert(listCommand, bothWith);
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(state().contains(u"Not everything")) << "nothing is missing by now";
}

TEST_F(QNBFileManagersRowTest, WhatItDoesLeavesTheNoticesOfOthers)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(bothWithout);
    listener.showNotice({.kind = PaneNotice::Kind::Hint, .text = QStringLiteral("Nothing is kept.")});
    installButton().click();
    EXPECT_TRUE(listener.notices.contains(PaneNotice::Kind::Hint));
}

TEST_F(QNBFileManagersRowTest, WhatCannotBeInstalledIsToldByTheInstaller)
{
    openTab(bothWithout);
    writeFile(QStringLiteral("Library"), "no folder");
    alertAnswers << AlertPanel::Answer::Default;
    installButton().click();
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.constFirst().title, u"Failed to install contextual menu2");
    EXPECT_EQ(state(), u"The presets are not in the menus of Dolphin, Thunar yet.");
    EXPECT_TRUE(installButton().isEnabled());
}

TEST_F(QNBFileManagersRowTest, AFirstStartTellsOfItOnceInTheStrip)
{
    openTab(bothWithout);
    tabs().setCurrentIndex(0);
    ASSERT_TRUE(QTest::qWaitFor([this] { return hint() != nullptr; }));
    EXPECT_EQ(hint()->text, u"The presets can be put into the menus of Dolphin, Thunar.");
    ASSERT_EQ(hint()->actions.size(), 1);
    hint()->actions[0].run();
    EXPECT_EQ(hint(), nullptr);
    EXPECT_EQ(tabs().currentWidget(), outlet<QWidget>(QStringLiteral("_ui_generalViewContainer")));
    EXPECT_TRUE(installButton().hasFocus());
    EXPECT_THAT(alerts, IsEmpty());
    leavePane();
    closePane();

    pluginCommands.clear();
    openPane();
    ASSERT_TRUE(waitForList());
    EXPECT_EQ(hint(), nullptr) << "once";
}

TEST_F(QNBFileManagersRowTest, WhoInstallsIsToldOfItNoLonger)
{
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("Library"))));
    openTab(bothWithout);
    ASSERT_TRUE(QTest::qWaitFor([this] { return hint() != nullptr; }));
    installButton().click();
    EXPECT_EQ(hint(), nullptr);
}

TEST_F(QNBFileManagersRowTest, WhoHasTheEntriesIsNotTold)
{
    writeFile(plugin, information("1.2.3"));
    pluginAnswers.insert(listCommand, oneWith);
    openPane();
    ASSERT_TRUE(waitForList());
    EXPECT_EQ(hint(), nullptr);
}
