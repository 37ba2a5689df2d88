// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/LineText.h"
#include "PresetListFixture.h"

#include "Source/Model/QNBPresetFile.h"
#include "Toolkit/ArrayController.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

namespace {

const QString removePreset = QStringLiteral("Remove Preset");
const QString cancel = QStringLiteral("Cancel");

class QNBPrefPanePrefPresetActions : public PresetListFixture
{
protected:
    void SetUp() override
    {
        PresetListFixture::SetUp();
        list().setFocus();
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view->focusWidget(), key, modifiers);
    }
    QPushButton &button(const char *name) const { return *outlet<QPushButton>(QString::fromLatin1(name)); }
    QLineEdit *labelEditor() const { return list().viewport()->findChild<QLineEdit *>(); }
    QMenu &menu() const { return *outlet<QMenu>(QStringLiteral("_presetActionsMenu")); }
    QString makeFolder(const QString &name) const
    {
        QDir().mkpath(path(name));
        return path(name);
    }
};

} // namespace

TEST_F(QNBPrefPanePrefPresetActions, RemovalAsksInExactlyTheseWords)
{
    alertAnswers << AlertPanel::Answer::Default;
    pane->removeSelectedPresetAfterConfirmation();
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.constFirst().title, removePreset);
    EXPECT_EQ(alerts.constFirst().message, u"Are you sure you wish to permanently delete the preset 'A'?");
    EXPECT_EQ(alerts.constFirst().defaultButton, removePreset);
    EXPECT_EQ(alerts.constFirst().alternateButton, cancel);
    EXPECT_EQ(alerts.constFirst().otherButton, u"");
}

TEST_F(QNBPrefPanePrefPresetActions, RemovalTakesTheDefaultAnswerOnly)
{
    alertAnswers << AlertPanel::Answer::Alternate << AlertPanel::Answer::Other;
    pane->removeSelectedPresetAfterConfirmation();
    pane->removeSelectedPresetAfterConfirmation();
    EXPECT_EQ(alerts.size(), 2);
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo");
}

TEST_F(QNBPrefPanePrefPresetActions, ARemovedPresetComesBackAsTheVeryRecord)
{
    const QNBPresetRecordPtr removed = record(1);
    const QNBHierarchyItemPtr root = removed->fileHierarchy();
    controller().setSelectionIndex(1);
    alertAnswers << AlertPanel::Answer::Default;
    QTest::mouseClick(&button("_removePresetButton"), Qt::LeftButton);
    EXPECT_EQ(labels(), QStringList({a, c}));
    EXPECT_EQ(list().selectedRow(), 1);
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of C")));
    EXPECT_TRUE(list().hasFocus());
    EXPECT_EQ(stepToTakeBack(), u"&Undo Remove Preset");

    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(record(1), removed);
    EXPECT_EQ(record(1)->fileHierarchy(), root);
    EXPECT_EQ(list().selectedRow(), 1);
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of B")));

    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(labels(), QStringList({a, c}));
    EXPECT_EQ(alerts.size(), 1) << "made again without asking again";
}

TEST_F(QNBPrefPanePrefPresetActions, TheLastPresetCanBeRemovedAndNothingIsLeftToRemove)
{
    alertAnswers << AlertPanel::Answer::Default << AlertPanel::Answer::Default << AlertPanel::Answer::Default;
    for (int i = 0; i < 3; ++i)
        press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_TRUE(labels().isEmpty());
    EXPECT_TRUE(list().hasFocus());
    EXPECT_EQ(list().accessibleDescription(), u"No presets");
    EXPECT_EQ(outline().accessibleDescription(), u"No preset selected");
    press(Qt::Key_Delete, Qt::ControlModifier);
    pane->removeSelectedPresetAfterConfirmation();
    EXPECT_EQ(alerts.size(), 3) << "there is nothing to ask about";
    for (int i = 0; i < 3; ++i)
        pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(list().accessibleDescription(), u"");
}

TEST_F(QNBPrefPanePrefPresetActions, TheAlertShowsLabelsInALineAndNotAsMarkup)
{
    for (const QString &odd :
         {QStringLiteral("100% <b>%1</b> 'x'"), QStringLiteral("two\nlines"), QString()}) {
        controller().setValueForKey(odd, QNBPresetKey::label, 0);
        alertAnswers << AlertPanel::Answer::Alternate;
        pane->removeSelectedPresetAfterConfirmation();
        EXPECT_EQ(alerts.constLast().message,
                  QStringLiteral("Are you sure you wish to permanently delete the preset '") + lineText(odd) +
                      QStringLiteral("'?"));
    }
}

TEST_F(QNBPrefPanePrefPresetActions, RemovalTakesOverWhatIsBeingTyped)
{
    press(Qt::Key_F2);
    ASSERT_TRUE(labelEditor());
    QTest::keyClicks(labelEditor(), QStringLiteral("Typed"));
    alertAnswers << AlertPanel::Answer::Default;
    pane->removeSelectedPresetAfterConfirmation();
    EXPECT_TRUE(alerts.constLast().message.contains(u"'Typed'"));
    pane->undo();
    EXPECT_EQ(labels(), QStringList({QStringLiteral("Typed"), b, c}));
}

TEST_F(QNBPrefPanePrefPresetActions, WhatWasAskedAboutIsRemovedOrNothing)
{
    QNBPrefPanePref::Services world = services();
    ArrayController *presets = nullptr;
    world.runAlertPanel = [&presets](QWidget *, const AlertPanel &) {
        presets->setSelectionIndex(1);
        return AlertPanel::Answer::Default;
    };
    closePane();
    openPane(std::move(world));
    presets = &controller();
    pane->removeSelectedPresetAfterConfirmation();
    EXPECT_EQ(labels(), QStringList({a, b, c})) << "another preset was selected by the time of the answer";
}

TEST_F(QNBPrefPanePrefPresetActions, APaneThatIsGoneBeforeTheAnswerIsLeftAlone)
{
    QNBPrefPanePref::Services world = services();
    std::unique_ptr<QNBPrefPanePref> another;
    world.runAlertPanel = [&another](QWidget *, const AlertPanel &) {
        another.reset();
        return AlertPanel::Answer::Default;
    };
    another = std::make_unique<QNBPrefPanePref>(std::move(world));
    const std::unique_ptr<QWidget> itsView(another->loadMainView());
    another->removeSelectedPresetAfterConfirmation();
    EXPECT_FALSE(another);
}

TEST_F(QNBPrefPanePrefPresetActions, AltUpAndAltDownMoveThePreset)
{
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(labels(), QStringList({b, a, c}));
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(labels(), QStringList({b, c, a}));
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(labels(), QStringList({b, c, a})) << "it is the last";
    EXPECT_EQ(list().selectedRow(), 2);
    press(Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(labels(), QStringList({b, a, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Move Preset");
    for (int i = 0; i < 3; ++i)
        pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo");
}

TEST_F(QNBPrefPanePrefPresetActions, F2RenamesInPlace)
{
    press(Qt::Key_F2);
    ASSERT_TRUE(labelEditor());
    EXPECT_EQ(labelEditor()->selectedText(), a);
    QTest::keyClicks(labelEditor(), QStringLiteral("Wedding"));
    QTest::keyClick(labelEditor(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !list().isEditing(); }));
    EXPECT_EQ(labels(), QStringList({QStringLiteral("Wedding"), b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Rename Preset");
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    action("_renamePresetAction").trigger();
    EXPECT_TRUE(labelEditor());
}

TEST_F(QNBPrefPanePrefPresetActions, AClickOnAnotherPresetEndsTheRenamingAndSelectsIt)
{
    press(Qt::Key_F2);
    QTest::keyClicks(labelEditor(), QStringLiteral("Typed"));
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {},
                      list().visualRect(list().model()->index(2, 1)).center());
    EXPECT_EQ(labels(), QStringList({QStringLiteral("Typed"), b, c}));
    EXPECT_EQ(list().selectedRow(), 2);
}

TEST_F(QNBPrefPanePrefPresetActions, TheKeysOfTheListDoNothingElsewhere)
{
    outline().setFocus();
    press(Qt::Key_Down, Qt::AltModifier);
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefPresetActions, AShortcutAddsAPresetFromAnywhereAmongThePresets)
{
    outline().setFocus();
    press(Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(labels(), QStringList({a, b, c, QStringLiteral("Untitled Preset")}));
    EXPECT_TRUE(labelEditor());
    EXPECT_FALSE(record(3)->values().contains(QNBPresetKey::fileHierarchy));
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetActions, AddingAPresetTakesOverTheNameThatIsBeingTyped)
{
    const QString untitled = QStringLiteral("Untitled Preset");
    press(Qt::Key_F2);
    ASSERT_TRUE(labelEditor());
    QTest::keyClicks(labelEditor(), untitled);
    QTest::keyClick(labelEditor(), Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(labels(), QStringList({untitled, b, c, QStringLiteral("Untitled Preset-1")}));
    EXPECT_EQ(list().selectedRow(), 3);
    EXPECT_TRUE(list().isEditing());
    list().endEditing();
    EXPECT_EQ(stepToTakeBack(), u"&Undo New Preset");
    pane->undo();
    EXPECT_EQ(stepToTakeBack(), u"&Undo Rename Preset");
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetActions, WithNothingSelectedKeysSelectAPreset)
{
    controller().setSelectionIndex(ArrayController::noIndex);
    outline().setFocus();
    list().setFocus();
    press(Qt::Key_F2);
    EXPECT_FALSE(labelEditor()) << "there is none to rename";
    press(Qt::Key_Home);
    EXPECT_EQ(controller().selectionIndex(), 0);
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of A")));
    outline().setFocus();
    press(Qt::Key_F2);
    EXPECT_FALSE(outline().isEditing()) << "there is no item to rename";
    press(Qt::Key_Down);
    EXPECT_EQ(outline().selectedRow(), 0);
}

TEST_F(QNBPrefPanePrefPresetActions, ActionsAreEnabledWhereTheyMakeSense)
{
    const auto enabled = [this] {
        QString all;
        for (const char *name :
             {"_addPresetAction", "_importPresetsAction", "_renamePresetAction", "_removePresetAction",
              "_exportPresetAction", "_movePresetUpAction", "_movePresetDownAction"})
            all += action(name).isEnabled() ? u'1' : u'0';
        return all;
    };
    EXPECT_EQ(enabled(), u"1111101");
    controller().setSelectionIndex(1);
    EXPECT_EQ(enabled(), u"1111111");
    controller().setSelectionIndex(2);
    EXPECT_EQ(enabled(), u"1111110");
    controller().removeObject(record(1));
    controller().removeObject(record(0));
    EXPECT_EQ(enabled(), u"1111100") << "it is the only one now";
    controller().setSelectionIndex(ArrayController::noIndex);
    EXPECT_EQ(enabled(), u"1100000");
    for (const auto act : {&QNBPrefPanePref::moveSelectedPresetUp, &QNBPrefPanePref::moveSelectedPresetDown,
                           &QNBPrefPanePref::exportSelectedPreset, &QNBPrefPanePref::renameSelectedPreset,
                           &QNBPrefPanePref::removeSelectedPresetAfterConfirmation})
        (*pane.*act)();
    EXPECT_EQ(labels(), QStringList(c));
    EXPECT_TRUE(filePanels.isEmpty());
    EXPECT_TRUE(alerts.isEmpty());
    EXPECT_FALSE(labelEditor());
}

TEST_F(QNBPrefPanePrefPresetActions, TheMenuShowsTheShortcuts)
{
    EXPECT_EQ(button("_presetActionsButton").menu(), &menu());
    const QList<QPair<const char *, QString>> shortcuts = {
        {"_addPresetAction", QStringLiteral("Ctrl+Shift+P")},
        {"_renamePresetAction", QStringLiteral("F2")},
        {"_removePresetAction", QStringLiteral("Ctrl+Del")},
        {"_movePresetUpAction", QStringLiteral("Alt+Up")},
        {"_movePresetDownAction", QStringLiteral("Alt+Down")},
        {"_importPresetsAction", QStringLiteral("Ctrl+O")},
        {"_exportPresetAction", QStringLiteral("Ctrl+E")}};
    for (const auto &[name, shortcut] : shortcuts) {
        EXPECT_EQ(action(name).shortcut().toString(QKeySequence::PortableText), shortcut);
        EXPECT_TRUE(menu().actions().contains(&action(name))) << name;
    }
}

TEST_F(QNBPrefPanePrefPresetActions, ARightClickSelectsThePresetAndOpensTheMenu)
{
    const QPoint point = list().visualRect(list().model()->index(2, 1)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, list().viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(list().viewport(), &event);
    EXPECT_EQ(list().selectedRow(), 2);
    ASSERT_TRUE(menu().isVisible());
    EXPECT_FALSE(action("_movePresetDownAction").isEnabled());
    alertAnswers << AlertPanel::Answer::Default;
    menu().setActiveAction(&action("_removePresetAction"));
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(labels(), QStringList({a, b}));
    EXPECT_FALSE(menu().isVisible());
}

TEST_F(QNBPrefPanePrefPresetActions, ImportedFilesComeBelowTheSelectedPreset)
{
    filePanelAnswers << QStringList{presetFile(QStringLiteral("X.qnbp")),
                                    presetFile(QStringLiteral("Y.qnbp"))};
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(labels(), QStringList({a, QStringLiteral("Y"), QStringLiteral("X"), b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Import Presets");
    ASSERT_EQ(filePanels.size(), 1);
    EXPECT_EQ(filePanels.constFirst().kind, FilePanel::Kind::Files);
    EXPECT_EQ(filePanels.constFirst().nameFilters,
              QStringList({QStringLiteral("Preset files (*.qnbp)"), QStringLiteral("All files (*)")}));
}

TEST_F(QNBPrefPanePrefPresetActions, WithoutASelectionImportedFilesComeLast)
{
    controller().setSelectionIndex(ArrayController::noIndex);
    filePanelAnswers << QStringList{presetFile(QStringLiteral("X.qnbp"))};
    pane->importPresetsFromFiles();
    EXPECT_EQ(labels(), QStringList({a, b, c, QStringLiteral("X")}));
}

TEST_F(QNBPrefPanePrefPresetActions, CancelledDialogsDoNothing)
{
    filePanelAnswers << QStringList() << QStringList();
    pane->importPresetsFromFiles();
    pane->exportSelectedPreset();
    EXPECT_EQ(filePanels.size(), 2);
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo");
}

TEST_F(QNBPrefPanePrefPresetActions, ExportWritesIntoTheChosenFolder)
{
    const QString folder = makeFolder(QStringLiteral("out"));
    filePanelAnswers << QStringList(folder);
    press(Qt::Key_E, Qt::ControlModifier);
    ASSERT_EQ(filePanels.size(), 1);
    EXPECT_EQ(filePanels.constFirst().kind, FilePanel::Kind::Folder);
    const Result<QNBPresetRecordPtr> exported = QNBPresetFile::read(folder + QStringLiteral("/A.qnbp"));
    ASSERT_TRUE(exported) << qPrintable(exported.error);
    EXPECT_EQ((*exported)->toStored(), record(0)->toStored());
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefPresetActions, ExportAsksBeforeItReplacesAFile)
{
    const QString folder = makeFolder(QStringLiteral("out"));
    const QString file = folder + QStringLiteral("/A.qnbp");
    writeFile(QStringLiteral("out/A.qnbp"), "mine");
    filePanelAnswers << QStringList(folder) << QStringList(folder);
    alertAnswers << AlertPanel::Answer::Alternate << AlertPanel::Answer::Default;
    pane->exportSelectedPreset();
    EXPECT_FALSE(QNBPresetFile::read(file));
    EXPECT_TRUE(alerts.constFirst().message.contains(u"A.qnbp"));
    pane->exportSelectedPreset();
    EXPECT_EQ(QNBPresetFile::read(file).error, QString());
}

TEST_F(QNBPrefPanePrefPresetActions, ALabelOfUnsafeCharactersThatWasTypedExportsAsQNBPreset)
{
    press(Qt::Key_F2);
    QTest::keyClicks(labelEditor(), QStringLiteral("/~:"));
    QTest::keyClick(labelEditor(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !list().isEditing(); }));
    const QString folder = makeFolder(QStringLiteral("out"));
    filePanelAnswers << QStringList(folder);
    press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList(QStringLiteral("QNB Preset.qnbp")));
}

TEST_F(QNBPrefPanePrefPresetActions, ExportingTwiceLeavesOneFileTheLaterWrite)
{
    const QString folder = makeFolder(QStringLiteral("out"));
    filePanelAnswers << QStringList(folder) << QStringList(folder);
    alertAnswers << AlertPanel::Answer::Default;
    press(Qt::Key_E, Qt::ControlModifier);
    outline().setFocus();
    outline().selectRow(0);
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList(QStringLiteral("A.qnbp")));
    const Result<QNBPresetRecordPtr> exported = QNBPresetFile::read(folder + QStringLiteral("/A.qnbp"));
    ASSERT_TRUE(exported) << qPrintable(exported.error);
    EXPECT_EQ((*exported)->fileHierarchy()->childAtIndex(0)->colorName(), u"red");
}

TEST_F(QNBPrefPanePrefPresetActions, AFailedExportIsTold)
{
    filePanelAnswers << QStringList(path(QStringLiteral("absent")));
    alertAnswers << AlertPanel::Answer::Default;
    pane->exportSelectedPreset();
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.constFirst().title, u"Preset Not Exported");
    EXPECT_TRUE(alerts.constFirst().message.contains(path(QStringLiteral("absent"))));
}

TEST_F(QNBPrefPanePrefPresetActions, DialogsStartWhereTheLastOneEnded)
{
    const QString folder = makeFolder(QStringLiteral("out"));
    filePanelAnswers << QStringList(folder) << QStringList{presetFile(QStringLiteral("X.qnbp"))}
                     << QStringList();
    pane->exportSelectedPreset();
    pane->importPresetsFromFiles();
    pane->importPresetsFromFiles();
    ASSERT_EQ(filePanels.size(), 3);
    EXPECT_EQ(filePanels.at(1).folder, folder);
    EXPECT_EQ(filePanels.at(2).folder, path(QStringLiteral("files")));
}
