// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

constexpr int fixedItems = 3;
constexpr int noFileTag = 2100;
constexpr QSize iconSize(16, 16);

class QNBPrefPanePrefFolderMenus : public PaneFixture
{
protected:
    /// A preset with a file in row 0 and a folder in row 1, the file selected; a second, empty one.
    void open()
    {
        ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("support/Quenby"))));
        store({preset(QStringLiteral("First"), {QStringLiteral("file"), QStringLiteral("folder/")}),
               preset(QStringLiteral("Second"))});
        openPane();
        outline().selectRow(0);
    }

    void makeContent(const QString &name) const
    {
        writeFile(QStringLiteral("support/Quenby/File Content/") + name, "content");
    }
    void makeScript(const QString &name, bool isExecutable = true) const
    {
        const QString file = QStringLiteral("support/Quenby/Scripts/") + name;
        writeFile(file, "#!/bin/sh\n");
        if (isExecutable) {
            ASSERT_TRUE(
                QFile::setPermissions(path(file), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
    }

    QMenu &contentMenu() const { return *outlet<QMenu>(QStringLiteral("_fileContentMenu")); }
    QMenu &scriptMenu() const { return *outlet<QMenu>(QStringLiteral("_ui_scriptSelectionMenu")); }
    QPushButton &scriptButton() const { return *outlet<QPushButton>(QStringLiteral("_scriptButton")); }

    static QList<QAction *> built(const QMenu &menu) { return menu.actions().mid(fixedItems); }
    static std::vector<QString> titles(const QMenu &menu)
    {
        std::vector<QString> result;
        for (const QAction *item : built(menu))
            result.push_back(item->data().toString());
        return result;
    }
    static QAction *entry(const QMenu &menu, const QString &title)
    {
        for (QAction *item : built(menu)) {
            if (item->data().toString() == title)
                return item;
        }
        return nullptr;
    }
    static QAction *noFileItem(const QMenu &menu)
    {
        for (QAction *item : menu.actions().mid(0, fixedItems)) {
            if (item->property("tag").toInt() == noFileTag)
                return item;
        }
        return nullptr;
    }
    /// The titles of the entries that are on; "none" for the no-file item.
    static QStringList checked(const QMenu &menu)
    {
        QStringList result;
        if (noFileItem(menu)->isChecked())
            result << QStringLiteral("none");
        for (const QAction *item : built(menu)) {
            if (item->isChecked())
                result << item->data().toString();
        }
        return result;
    }

    /// Lets the pane build the menu, and chooses from it as a click would.
    void choose(QMenu &menu, const QString &title)
    {
        pane->menuNeedsUpdate(menu);
        QAction *item = entry(menu, title);
        ASSERT_TRUE(item) << qPrintable(title);
        item->trigger();
    }
    void chooseNone(QMenu &menu)
    {
        pane->menuNeedsUpdate(menu);
        noFileItem(menu)->trigger();
    }

    QNBHierarchyItemPtr item(int row) const
    {
        return std::static_pointer_cast<QNBHierarchyItem>(outline().itemAtRow(row));
    }
    QString content() const { return item(0)->contentFilename(); }
    QVariant script(int index = 0) const
    {
        return controller().arrangedObjects().at(index)->valueForKey(QNBPresetKey::scriptFile);
    }
    bool canUndo() const { return outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled(); }
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
    pane->didUnselect();
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
            EXPECT_EQ(item->icon().actualSize(iconSize), iconSize) << qPrintable(item->text());
            EXPECT_TRUE(item->isIconVisibleInMenu());
            EXPECT_TRUE(item->shortcut().isEmpty());
        }
    }
    EXPECT_NE(entry(scriptMenu(), QStringLiteral("Sub"))->icon().cacheKey(),
              entry(scriptMenu(), QStringLiteral("Sub/run.sh"))->icon().cacheKey());
}

TEST_F(QNBPrefPanePrefFolderMenus, OddNamesAreShownReadablyAndStoredExactly)
{
    const QStringList names = {QStringLiteral("R&D && more.txt"), QStringLiteral("line\nbreak\tand tab"),
                               QStringLiteral("<b>bold</b>.txt"), QString(250, u'&')};
    for (const QString &name : names)
        makeContent(name);
    open();
    for (const QString &name : names) {
        choose(contentMenu(), name);
        EXPECT_EQ(content(), name);
        pane->menuNeedsUpdate(contentMenu());
        EXPECT_EQ(checked(contentMenu()), QStringList{name});
    }
    EXPECT_EQ(entry(contentMenu(), names.at(0))->text(), QStringLiteral("R&&D &&&& more.txt"));
    EXPECT_EQ(entry(contentMenu(), names.at(1))->text(), QStringLiteral("line␊break␉and tab"));
    EXPECT_EQ(entry(contentMenu(), names.at(2))->text(), names.at(2));
    const QAction &longEntry = *entry(contentMenu(), names.at(3));
    EXPECT_LT(longEntry.text().size(), 250);
    EXPECT_EQ(longEntry.text().count(u'&') % 2, 0);
    EXPECT_EQ(longEntry.toolTip(), QStringLiteral("<span>%1</span>").arg(names.at(3).toHtmlEscaped()));
}

TEST_F(QNBPrefPanePrefFolderMenus, ChoicesAreStepsOfTheHistory)
{
    makeContent(QStringLiteral("a.txt"));
    makeScript(QStringLiteral("run.sh"));
    open();
    choose(contentMenu(), QStringLiteral("a.txt"));
    choose(scriptMenu(), QStringLiteral("run.sh"));
    outline().selectRow(1);
    pane->undo();
    EXPECT_FALSE(script().isValid());
    pane->undo();
    EXPECT_EQ(content(), QString());
    EXPECT_EQ(outline().selectedRow(), 0) << "the item is shown";
    EXPECT_FALSE(canUndo());
    pane->redo();
    pane->redo();
    EXPECT_EQ(content(), QStringLiteral("a.txt"));
    EXPECT_EQ(script().toString(), QStringLiteral("run.sh"));
}

TEST_F(QNBPrefPanePrefFolderMenus, ChoosingWhatIsChosenAlreadyIsNoStep)
{
    makeContent(QStringLiteral("a.txt"));
    makeScript(QStringLiteral("run.sh"));
    open();
    chooseNone(contentMenu());
    chooseNone(scriptMenu());
    EXPECT_FALSE(canUndo());
    for (int time = 0; time < 2; ++time) {
        choose(contentMenu(), QStringLiteral("a.txt"));
        choose(scriptMenu(), QStringLiteral("run.sh"));
    }
    pane->undo();
    pane->undo();
    EXPECT_FALSE(canUndo());
}

TEST_F(QNBPrefPanePrefFolderMenus, TheFoldersAreShownAndMadeIfTheyAreMissing)
{
    open();
    pane->openScriptsFolder();
    pane->openFileContentFolder();
    const QString scripts = path(QStringLiteral("support/Quenby/Scripts"));
    const QString contents = path(QStringLiteral("support/Quenby/File Content"));
    EXPECT_EQ(openedFiles, QStringList{scripts});
    EXPECT_EQ(selectedFiles, QStringList{contents});
    EXPECT_TRUE(QFileInfo(scripts).isDir());
    EXPECT_TRUE(QFileInfo(contents).isDir());

    scriptMenu().actions().at(1)->trigger();
    contentMenu().actions().at(1)->trigger();
    EXPECT_EQ(openedFiles.size(), 2);
    EXPECT_EQ(selectedFiles.size(), 2);
}

TEST_F(QNBPrefPanePrefFolderMenus, TheScriptButtonFollowsThePresetAndTheHistory)
{
    makeScript(QStringLiteral("R&D/run.sh"));
    const QString longName = QString(200, u'x') + QStringLiteral(".sh");
    makeScript(longName);
    open();
    const int usualWidth = scriptButton().minimumSizeHint().width();
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    choose(scriptMenu(), QStringLiteral("R&D/run.sh"));
    EXPECT_EQ(scriptButton().text(), QStringLiteral("R&&D/run.sh"));
    EXPECT_EQ(scriptButton().accessibleDescription(), QStringLiteral("R&D/run.sh"));
    controller().setSelectionIndex(1);
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    EXPECT_EQ(scriptButton().accessibleDescription(), QString());
    pane->undo();
    EXPECT_EQ(controller().selectionIndex(), 0);
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    pane->redo();
    EXPECT_EQ(scriptButton().text(), QStringLiteral("R&&D/run.sh"));

    choose(scriptMenu(), longName);
    EXPECT_LT(scriptButton().minimumSizeHint().width(), usualWidth * 6);
    EXPECT_EQ(scriptButton().accessibleDescription(), longName);
}

TEST_F(QNBPrefPanePrefFolderMenus, AScriptThatIsNoTextCountsAsNone)
{
    makeScript(QStringLiteral("5"));
    open();
    controller().setValueForKey(qlonglong(5), QNBPresetKey::scriptFile, 0);
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_EQ(checked(scriptMenu()), QStringList{QStringLiteral("none")});
}

TEST_F(QNBPrefPanePrefFolderMenus, KeysOpenTheScriptMenuAndChoose)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    // The menu runs inside the key that opens it.
    bool hasChosen = false;
    QObject::connect(&scriptMenu(), &QMenu::aboutToShow, view.get(), [this, &hasChosen] {
        QMetaObject::invokeMethod(
            view.get(),
            [this, &hasChosen] {
                EXPECT_TRUE(scriptMenu().isVisible());
                QTest::keyClick(&scriptMenu(), Qt::Key_Up);
                EXPECT_EQ(scriptMenu().activeAction(), entry(scriptMenu(), QStringLiteral("run.sh")));
                QTest::keyClick(&scriptMenu(), Qt::Key_Return);
                hasChosen = true;
            },
            Qt::QueuedConnection);
    });
    scriptButton().setFocus();
    QTest::keyClick(&scriptButton(), Qt::Key_Space);
    EXPECT_TRUE(hasChosen);
    EXPECT_EQ(script().toString(), QStringLiteral("run.sh"));
    EXPECT_FALSE(scriptMenu().isVisible());
    EXPECT_EQ(scriptButton().text(), QStringLiteral("run.sh"));
}

TEST_F(QNBPrefPanePrefFolderMenus, TheScriptMenuPopsUpForTheSender)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    pane->popUpScriptSelectionMenu(scriptButton());
    ASSERT_TRUE(scriptMenu().isVisible());
    EXPECT_THAT(titles(scriptMenu()), ElementsAre(QStringLiteral("run.sh")));
    QTest::keyClick(&scriptMenu(), Qt::Key_Up);
    QTest::keyClick(&scriptMenu(), Qt::Key_Return);
    EXPECT_EQ(script().toString(), QStringLiteral("run.sh"));

    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(3, 3),
                            scriptButton().mapToGlobal(QPoint(3, 3)));
    QCoreApplication::sendEvent(&scriptButton(), &event);
    EXPECT_TRUE(scriptMenu().isVisible());
    EXPECT_EQ(checked(scriptMenu()), QStringList{QStringLiteral("run.sh")});
    QTest::keyClick(&scriptMenu(), Qt::Key_Escape);
    EXPECT_FALSE(scriptMenu().isVisible());
}

TEST_F(QNBPrefPanePrefFolderMenus, KeysChooseAContentFileInTheOpenContextualMenu)
{
    makeContent(QStringLiteral("Sub/name.ext"));
    open();
    auto *menu = outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu"));
    menu->popup(view->mapToGlobal(QPoint(5, 5)));
    menu->setActiveAction(contentMenu().menuAction());
    QTest::keyClick(menu, Qt::Key_Right);
    ASSERT_TRUE(QTest::qWaitFor([this] { return contentMenu().isVisible(); }));
    EXPECT_TRUE(noFileItem(contentMenu())->isEnabled());
    QTest::keyClick(&contentMenu(), Qt::Key_Up);
    while (contentMenu().activeAction() != entry(contentMenu(), QStringLiteral("Sub/name.ext"))) {
        ASSERT_TRUE(contentMenu().activeAction());
        QTest::keyClick(&contentMenu(), Qt::Key_Up);
    }
    QTest::keyClick(&contentMenu(), Qt::Key_Return);
    EXPECT_EQ(content(), QStringLiteral("Sub/name.ext"));
    EXPECT_FALSE(menu->isVisible());
}

TEST_F(QNBPrefPanePrefFolderMenus, AMenuOfThousandsScrollsAndItsLastEntryIsReached)
{
    constexpr int count = 3000;
    for (int i = 0; i < count; ++i)
        makeContent(QStringLiteral("file %1.x%2").arg(i).arg(i));
    open();
    contentMenu().popup(QPoint(0, 0));
    EXPECT_EQ(built(contentMenu()).size(), count);
    const QSize screen = view->screen()->size();
    EXPECT_LE(contentMenu().height(), screen.height());
    EXPECT_LT(contentMenu().width(), screen.width() / 2);
    QTest::keyClick(&contentMenu(), Qt::Key_Up);
    QTest::keyClick(&contentMenu(), Qt::Key_Return);
    EXPECT_EQ(content(), built(contentMenu()).constLast()->data().toString());
}
