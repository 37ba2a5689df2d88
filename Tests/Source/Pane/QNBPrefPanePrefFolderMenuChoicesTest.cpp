// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "FolderMenusFixture.h"

#include <QCursor>
#include <QScreen>
#include <QTest>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace {

class QNBPrefPanePrefFolderMenuChoices : public FolderMenusFixture
{
};

} // namespace

TEST_F(QNBPrefPanePrefFolderMenuChoices, OddNamesAreShownReadablyAndStoredExactly)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, ChoicesAreStepsOfTheHistory)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, ChoosingWhatIsChosenAlreadyIsNoStep)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheFoldersAreShownAndMadeIfTheyAreMissing)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheScriptButtonFollowsThePresetAndTheHistory)
{
    makeScript(QStringLiteral("R&D/run.sh"));
    const QString longName = QString(200, u'x') + QStringLiteral(".sh");
    makeScript(longName);
    open();
    const int usualWidth = scriptButton().minimumSizeHint().width();
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    const QString usualToolTip = scriptButton().toolTip();
    EXPECT_FALSE(usualToolTip.isEmpty());
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
    EXPECT_EQ(scriptButton().toolTip(), QStringLiteral("<span>%1</span>").arg(longName));
    pane->undo();
    EXPECT_EQ(scriptButton().toolTip(), usualToolTip);
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, AScriptThatIsNoTextCountsAsNone)
{
    makeScript(QStringLiteral("5"));
    open();
    controller().setValueForKey(qlonglong(5), QNBPresetKey::scriptFile, 0);
    EXPECT_EQ(scriptButton().text(), QStringLiteral("No Script"));
    pane->menuNeedsUpdate(scriptMenu());
    EXPECT_EQ(checked(scriptMenu()), QStringList{QStringLiteral("none")});
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, KeysOpenTheScriptMenuAndChoose)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    // The menu may run inside the key that opens it.
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return hasChosen; }));
    EXPECT_EQ(script().toString(), QStringLiteral("run.sh"));
    EXPECT_FALSE(scriptMenu().isVisible());
    EXPECT_EQ(scriptButton().text(), QStringLiteral("run.sh"));
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheScriptMenuPopsUpForTheSender)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheScriptMenuOpensAtThePointerOverTheSenderElseBelowIt)
{
    makeScript(QStringLiteral("run.sh"));
    open();
    view->move(0, 0);
    const QPoint inside = scriptButton().mapToGlobal(scriptButton().rect().center());
    QCursor::setPos(inside);
    pane->popUpScriptSelectionMenu(scriptButton());
    EXPECT_EQ(scriptMenu().pos(), inside);
    scriptMenu().close();
    QCursor::setPos(scriptButton().mapToGlobal(QPoint(-5, -5)));
    pane->popUpScriptSelectionMenu(scriptButton());
    EXPECT_EQ(scriptMenu().pos(), scriptButton().mapToGlobal(scriptButton().rect().bottomLeft()));
    scriptMenu().close();
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, KeysChooseAContentFileInTheOpenContextualMenu)
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

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheOpenContentMenuListsFilesOfAllFoldersAndNoHiddenOnes)
{
    for (const char *name : {".DS_Store", "_notes.txt", "_old/letter.txt", "Sub/name.ext"})
        makeContent(QString::fromLatin1(name));
    open();
    const auto titlesWhenOpen = [this](int row) {
        outline().selectRow(row);
        contentMenu().popup(view->mapToGlobal(QPoint(5, 5)));
        EXPECT_TRUE(contentMenu().isVisible());
        QTest::keyClick(&contentMenu(), Qt::Key_Escape);
        return titles(contentMenu());
    };
    EXPECT_THAT(titlesWhenOpen(0), ::testing::UnorderedElementsAre(QStringLiteral("_old/letter.txt"),
                                                                   QStringLiteral("Sub/name.ext")));
    EXPECT_EQ(checked(contentMenu()), QStringList{QStringLiteral("none")});
    EXPECT_THAT(titlesWhenOpen(1), ElementsAre()) << "for a folder";
    EXPECT_EQ(contentMenu().actions().size(), fixedItems);
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, TheOpenScriptMenuListsBundlesOnceAndTakesTheChoiceBackWithoutAsking)
{
    makeScript(QStringLiteral("Tool.app/AppDir/AppRun"));
    open();
    const auto press = [this](const QList<Qt::Key> &keys) {
        scriptMenu().popup(view->mapToGlobal(QPoint(5, 5)));
        for (const Qt::Key key : keys)
            QTest::keyClick(&scriptMenu(), key);
        EXPECT_FALSE(scriptMenu().isVisible());
    };
    press({Qt::Key_Escape});
    EXPECT_THAT(titles(scriptMenu()), ElementsAre(QStringLiteral("Tool.app")));
    press({Qt::Key_Up, Qt::Key_Return});
    EXPECT_EQ(script(), built(scriptMenu()).constLast()->data());
    press({Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(script(), QVariant(QString()));
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, APaneThatIsLeftDuringTheAlertIsLeftAlone)
{
    makeScript(QStringLiteral("run.sh"), false);
    store({preset(QStringLiteral("First"))});
    QNBPrefPanePref::Services world = services();
    std::unique_ptr<QNBPrefPanePref> another;
    auto witness = std::make_shared<int>();
    const std::weak_ptr<int> watched = witness;
    bool isWhole = false;
    const auto leave = [&another, &isWhole, watched] {
        another.reset();
        isWhole = !watched.expired();
    };
    world.runAlertPanel = [&leave, kept = std::move(witness)](QWidget *, const AlertPanel &) {
        leave();
        return AlertPanel::Answer::Default;
    };
    another = std::make_unique<QNBPrefPanePref>(std::move(world));
    const std::unique_ptr<QWidget> itsView(another->loadMainView());
    QAction chosen;
    chosen.setData(QStringLiteral("run.sh"));
    another->scriptsItemClicked(chosen);
    EXPECT_FALSE(another);
    EXPECT_TRUE(isWhole) << "what asks lives until it is answered";
}

TEST_F(QNBPrefPanePrefFolderMenuChoices, AMenuOfThousandsScrollsAndItsLastEntryIsReached)
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
