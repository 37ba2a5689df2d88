// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "FolderMenusFixture.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

namespace {

constexpr QSize menuIconSize(16, 16);

class QNBPrefPanePrefFolderMenus : public FolderMenusFixture
{
};

} // namespace

TEST_F(QNBPrefPanePrefFolderMenus, AContentFileInASubfolderIsListedAndStoredByItsRelativePath)
{
    makeContent(QStringLiteral("Sub/name.ext"));
    open();
    pane->menuNeedsUpdate(contentMenu());
    ASSERT_THAT(titles(contentMenu()), ElementsAre(QStringLiteral("Sub/name.ext")));
    EXPECT_EQ(built(contentMenu()).constFirst()->text(), QStringLiteral("Sub/name.ext"));
    pane->fileContentItemClicked(*built(contentMenu()).constFirst());
    EXPECT_EQ(content(), QStringLiteral("Sub/name.ext"));
    leavePane();
    EXPECT_EQ(stored().presets.at(0)->fileHierarchy()->childAtIndex(0)->contentFilename(),
              QStringLiteral("Sub/name.ext"));
}

TEST_F(QNBPrefPanePrefFolderMenus, FilesNamedDSStoreAndUnderscoreNotesAreNeverListed)
{
    for (const char *name : {".DS_Store", "_notes.txt", "Sub/.DS_Store", "Sub/_notes.txt", "shown.txt"}) {
        makeContent(QString::fromLatin1(name));
        makeScript(QString::fromLatin1(name));
    }
    open();
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_THAT(titles(contentMenu()), ElementsAre(QStringLiteral("shown.txt")));
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_THAT(titles(scriptMenu()),
                UnorderedElementsAre(QStringLiteral("Sub"), QStringLiteral("shown.txt")));
}

TEST_F(QNBPrefPanePrefFolderMenus, AFileInsideAFolderNamedUnderscoreOldIsListed)
{
    makeContent(QStringLiteral("_old/letter.txt"));
    open();
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_THAT(titles(contentMenu()), ElementsAre(QStringLiteral("_old/letter.txt")));
}

TEST_F(QNBPrefPanePrefFolderMenus, AnApplicationBundleInScriptsIsListedOnceAndNothingInsideIt)
{
    makeScript(QStringLiteral("Tool.app/Contents/MacOS/Tool"));
    makeScript(QStringLiteral("Portable.app/AppDir/AppRun"));
    open();
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_THAT(titles(scriptMenu()),
                UnorderedElementsAre(QStringLiteral("Tool.app"), QStringLiteral("Portable.app")));
}

TEST_F(QNBPrefPanePrefFolderMenus, AFolderInScriptsWhoseNameBeginsWithAnUnderscoreIsListed)
{
    makeScript(QStringLiteral("_old/run.sh"));
    open();
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_THAT(titles(scriptMenu()), ElementsAre(QStringLiteral("_old"), QStringLiteral("_old/run.sh")));
}

TEST_F(QNBPrefPanePrefFolderMenus, WithAFolderSelectedTheContentMenuShowsOnlyItsFixedItems)
{
    makeContent(QStringLiteral("a.txt"));
    open();
    choose(contentMenu(), QStringLiteral("a.txt"));
    pane->menuNeedsUpdate(contentMenu());
    ASSERT_EQ(contentMenu().actions().size(), fixedItems + 1);
    ASSERT_FALSE(noFileItem(contentMenu())->isChecked());
    for (const int row : {1, OutlineView::noRow}) {
        outline().selectRow(row);
        pane->menuNeedsUpdate(contentMenu());
        EXPECT_EQ(contentMenu().actions().size(), fixedItems) << row;
        EXPECT_FALSE(noFileItem(contentMenu())->isChecked()) << "left as it was";
    }
}

TEST_F(QNBPrefPanePrefFolderMenus, AnItemWithoutContentFileHasTheNoFileItemOnAndNoOther)
{
    makeContent(QStringLiteral("a.txt"));
    makeContent(QStringLiteral("b.txt"));
    open();
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_EQ(checked(contentMenu()), QStringList{QStringLiteral("none")});
}

TEST_F(QNBPrefPanePrefFolderMenus, ChoosingNoScriptNeverShowsTheAlert)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    choose(scriptMenu(), QStringLiteral("run.sh"));
    chooseNone(scriptMenu());
    EXPECT_EQ(script(), QVariant(QString()));
    chooseNone(scriptMenu());
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefFolderMenus, TheEntryThatIsChosenIsOnAndNoOther)
{
    for (const char *name : {"a.txt", "A.TXT", "Sub/a.txt"}) {
        makeContent(QString::fromLatin1(name));
        makeScript(QString::fromLatin1(name));
    }
    open();
    choose(contentMenu(), QStringLiteral("A.TXT"));
    choose(scriptMenu(), QStringLiteral("Sub/a.txt"));
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_EQ(checked(contentMenu()), QStringList{QStringLiteral("A.TXT")});
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_EQ(checked(scriptMenu()), QStringList{QStringLiteral("Sub/a.txt")});
}

TEST_F(QNBPrefPanePrefFolderMenus, AScriptThatIsNotExecutableIsRefusedWithAnAlert)
{
    makeScript(QStringLiteral("run.sh"));
    makeScript(QStringLiteral("Sub/100%1 notes.txt"), false);
    open();
    choose(scriptMenu(), QStringLiteral("run.sh"));
    alertAnswers = {AlertPanel::Answer::Default};
    choose(scriptMenu(), QStringLiteral("Sub/100%1 notes.txt"));
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.at(0).title, QStringLiteral("Script File not Executable"));
    EXPECT_EQ(alerts.at(0).message,
              QStringLiteral("Script file '100%1 notes.txt' is not set to be executable. Please make sure it "
                             "is set to be executable (chmod +x)."));
    EXPECT_FALSE(alerts.at(0).defaultButton.isEmpty());
    EXPECT_TRUE(alerts.at(0).alternateButton.isEmpty());
    EXPECT_TRUE(alerts.at(0).otherButton.isEmpty());
    EXPECT_EQ(script().toString(), QStringLiteral("run.sh"));
    pane->undo();
    EXPECT_FALSE(canUndo()) << "the refusal is no step";
}

TEST_F(QNBPrefPanePrefFolderMenus, AFolderIsRefusedAsAScriptUnlessItHoldsAProgram)
{
    makeScript(QStringLiteral("Sub/run.sh"));
    makeScript(QStringLiteral("Tool.app/Contents/MacOS/tool"));
    makeScript(QStringLiteral("Portable.app/AppDir/AppRun"));
    makeScript(QStringLiteral("Empty.app/Contents/readme"));
    makeScript(QStringLiteral("Elsewhere.app/AppDir/readme"));
    ASSERT_TRUE(QFile::link(path(QStringLiteral("support/Quenby/Scripts/Sub/run.sh")),
                            path(QStringLiteral("support/Quenby/Scripts/Elsewhere.app/AppDir/AppRun"))));
    writeFile(
        QStringLiteral("support/Quenby/Scripts/Tool.app/Contents/Info.plist"),
        "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>tool</string></dict></plist>");
    open();
    for (const char *name : {"Tool.app", "Portable.app"}) {
        choose(scriptMenu(), QString::fromLatin1(name));
        EXPECT_EQ(script().toString(), QString::fromLatin1(name));
    }
    for (const char *name : {"Sub", "Empty.app", "Elsewhere.app"}) {
        alerts.clear();
        alertAnswers = {AlertPanel::Answer::Default};
        choose(scriptMenu(), QString::fromLatin1(name));
        ASSERT_EQ(alerts.size(), 1) << name;
        const bool isExecutable = QString::fromLatin1(name) == QStringLiteral("Elsewhere.app");
        EXPECT_EQ(alerts.at(0).title, isExecutable ? QStringLiteral("Script Program Lies Elsewhere")
                                                   : QStringLiteral("Script File not Executable"));
        EXPECT_NE(alerts.at(0).message.contains(QStringLiteral("chmod +x")), isExecutable);
    }
    EXPECT_EQ(
        alerts.at(0).message,
        QStringLiteral("The program of 'Elsewhere.app' lies outside of it, behind a link, and is not run. "
                       "Please put the program itself there."));
    EXPECT_EQ(script().toString(), QStringLiteral("Portable.app"));
}

TEST_F(QNBPrefPanePrefFolderMenus, AScriptThatHasGoneMeanwhileIsRefused)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    pane->menuNeedsUpdate(scriptMenu());
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("support/Quenby/Scripts/run.sh"))));
    alertAnswers = {AlertPanel::Answer::Default};
    pane->scriptsItemClicked(*entry(scriptMenu(), QStringLiteral("run.sh")));
    EXPECT_EQ(alerts.size(), 1);
    EXPECT_FALSE(script().isValid());
}

TEST_F(QNBPrefPanePrefFolderMenus, AContentFileIsNotChecked)
{
    makeContent(QStringLiteral("a.txt"));
    open();
    pane->menuNeedsUpdate(contentMenu());
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("support/Quenby/File Content/a.txt"))));
    pane->fileContentItemClicked(*entry(contentMenu(), QStringLiteral("a.txt")));
    EXPECT_EQ(content(), QStringLiteral("a.txt"));
}

TEST_F(QNBPrefPanePrefFolderMenus, ChoosingForAFolderOrForNothingDoesNothing)
{
    makeContent(QStringLiteral("a.txt"));
    open();
    pane->menuNeedsUpdate(contentMenu());
    const QAction &chosen = *entry(contentMenu(), QStringLiteral("a.txt"));
    for (const int row : {1, OutlineView::noRow}) {
        outline().selectRow(row);
        pane->fileContentItemClicked(chosen);
    }
    EXPECT_EQ(content(), QString());
    EXPECT_EQ(item(1)->contentFilename(), QString());
    EXPECT_FALSE(canUndo());
}

TEST_F(QNBPrefPanePrefFolderMenus, WithoutAPresetTheScriptMenuShowsOnlyItsFixedItems)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    pane->menuNeedsUpdate(scriptMenu());
    QAction chosen;
    chosen.setData(QStringLiteral("run.sh"));
    controller().setSelectionIndex(ArrayController::noIndex);
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_EQ(scriptMenu().actions().size(), fixedItems);
    pane->scriptsItemClicked(chosen);
    EXPECT_FALSE(canUndo());
    EXPECT_FALSE(scriptButton().isEnabled());
}

TEST_F(QNBPrefPanePrefFolderMenus, MissingFoldersShowOnlyTheFixedItemsAndSaySo)
{
    open();
    for (QMenu *menu : {&contentMenu(), &scriptMenu()}) {
        pane->menuNeedsUpdate(*menu);
        EXPECT_EQ(menu->actions().size(), fixedItems);
        EXPECT_EQ(checked(*menu), QStringList{QStringLiteral("none")});
        EXPECT_TRUE(menu->actions().at(1)->text().endsWith(QStringLiteral("(Empty)")));
    }
}

TEST_F(QNBPrefPanePrefFolderMenus, FilesAddedMeanwhileAppearTheNextTime)
{
    open();
    pane->menuNeedsUpdate(contentMenu());
    makeContent(QStringLiteral("a.txt"));
    makeContent(QStringLiteral("b.txt"));
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_THAT(titles(contentMenu()),
                UnorderedElementsAre(QStringLiteral("a.txt"), QStringLiteral("b.txt")));
    EXPECT_EQ(contentMenu().actions().at(1)->text(), QStringLiteral("&Show Content Folder"));
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("support/Quenby/File Content/a.txt"))));
    pane->menuNeedsUpdate(contentMenu());
    EXPECT_THAT(titles(contentMenu()), ElementsAre(QStringLiteral("b.txt")));
}

TEST_F(QNBPrefPanePrefFolderMenus, AMenuWithAnotherTitleIsLeftAlone)
{
    makeContent(QStringLiteral("a.txt"));
    open();
    QMenu other(QStringLiteral("Content"));
    for (int i = 0; i < 5; ++i)
        other.addAction(QString::number(i))->setProperty("tag", noFileTag);
    pane->menuNeedsUpdate(other);
    EXPECT_EQ(other.actions().size(), 5);
    EXPECT_FALSE(other.actions().constFirst()->isCheckable());
}

TEST_F(QNBPrefPanePrefFolderMenus, AnyMenuWhoseTitleContainsTheWordsIsBuilt)
{
    makeContent(QStringLiteral("a.txt"));
    makeScript(QStringLiteral("run.sh"));
    open();
    for (const auto &[title, name] :
         {std::pair("The File Content of", "a.txt"), std::pair("My Script Selection", "run.sh")}) {
        QMenu menu(QString::fromLatin1(title));
        for (int i = 0; i < 7; ++i)
            menu.addAction(QString::number(i));
        pane->menuNeedsUpdate(menu);
        EXPECT_THAT(titles(menu), ElementsAre(QString::fromLatin1(name)));
        EXPECT_EQ(menu.actions().at(2)->text(), QStringLiteral("2"));
    }
}

TEST_F(QNBPrefPanePrefFolderMenus, EntriesHaveAnIconAndNoShortcut)
{
    makeContent(QStringLiteral("a.txt"));
    makeScript(QStringLiteral("Sub/run.sh"));
    open();
    for (QMenu *menu : {&contentMenu(), &scriptMenu()}) {
        pane->menuNeedsUpdate(*menu);
        ASSERT_FALSE(built(*menu).isEmpty());
        for (const QAction *item : built(*menu)) {
            EXPECT_EQ(item->icon().actualSize(menuIconSize), menuIconSize) << qPrintable(item->text());
            EXPECT_TRUE(item->isIconVisibleInMenu());
            EXPECT_TRUE(item->shortcut().isEmpty());
        }
    }
    EXPECT_NE(entry(scriptMenu(), QStringLiteral("Sub"))->icon().cacheKey(),
              entry(scriptMenu(), QStringLiteral("Sub/run.sh"))->icon().cacheKey());
}
