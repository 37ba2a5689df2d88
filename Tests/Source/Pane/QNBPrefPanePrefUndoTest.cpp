// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QPlainTextEdit>
#include <QTest>

namespace {

class QNBPrefPanePrefUndo : public PaneFixture
{
protected:
    void SetUp() override
    {
        store({preset(QStringLiteral("First"), {QStringLiteral("a")}),
               preset(QStringLiteral("Second"), {QStringLiteral("b")})});
        openPane();
    }

    QPlainTextEdit &description() const
    {
        return *outlet<QPlainTextEdit>(QStringLiteral("_ui_presetDescription"));
    }
    QAction &undoAction() const { return *outlet<QAction>(QStringLiteral("_undoAction")); }
    QAction &redoAction() const { return *outlet<QAction>(QStringLiteral("_redoAction")); }
};

} // namespace

TEST_F(QNBPrefPanePrefUndo, NothingToTakeBackAtFirst)
{
    EXPECT_FALSE(undoAction().isEnabled());
    EXPECT_FALSE(redoAction().isEnabled());
}

TEST_F(QNBPrefPanePrefUndo, TheMenuNamesTheStep)
{
    pane->addPreset();
    EXPECT_TRUE(undoAction().isEnabled());
    EXPECT_EQ(undoAction().text(), QStringLiteral("&Undo New Preset"));
    pane->undo();
    EXPECT_EQ(controller().arrangedObjects().size(), 2);
    EXPECT_EQ(undoAction().text(), QStringLiteral("&Undo"));
    EXPECT_EQ(redoAction().text(), QStringLiteral("&Redo New Preset"));
    pane->redo();
    EXPECT_EQ(controller().arrangedObjects().size(), 3);
}

TEST_F(QNBPrefPanePrefUndo, KeysTakeTypingInTheDescriptionBackParagraphByParagraph)
{
    description().setFocus();
    QTest::keyClicks(&description(), QStringLiteral("one"));
    QTest::keyClick(&description(), Qt::Key_Return);
    QTest::keyClicks(&description(), QStringLiteral("two"));
    ASSERT_EQ(description().toPlainText(), QStringLiteral("one\ntwo"));

    QTest::keyClick(&description(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(description().toPlainText(), QStringLiteral("one"));
    QTest::keyClick(&description(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(description().toPlainText(), QString());
    EXPECT_FALSE(undoAction().isEnabled());
    QTest::keyClick(&description(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(&description(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(description().toPlainText(), QStringLiteral("one\ntwo"));
}

TEST_F(QNBPrefPanePrefUndo, TheStepsOfAnotherPresetSelectIt)
{
    description().setFocus();
    QTest::keyClicks(&description(), QStringLiteral("of the first"));
    controller().setSelectionIndex(1);
    ASSERT_EQ(description().toPlainText(), QString());

    pane->undo();
    EXPECT_EQ(controller().selectionIndex(), 0);
    EXPECT_EQ(description().toPlainText(), QString());
    controller().setSelectionIndex(1);
    pane->redo();
    EXPECT_EQ(controller().selectionIndex(), 0);
    EXPECT_EQ(description().toPlainText(), QStringLiteral("of the first"));
}

TEST_F(QNBPrefPanePrefUndo, AnUndoneStepIsSavedAsUndone)
{
    pane->addPreset();
    pane->undo();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(stored().presets.size(), 2);
}
