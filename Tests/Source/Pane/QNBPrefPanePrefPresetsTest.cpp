// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTest>

namespace {

class QNBPrefPanePrefPresets : public PaneFixture
{
protected:
    void TearDown() override { expectNothingSavedSinceStoring(); }

    QNBPresetRecordPtr record(int row) const
    {
        return std::static_pointer_cast<QNBPresetRecord>(controller().arrangedObjects().at(row));
    }
    QPlainTextEdit &description() const
    {
        return *outlet<QPlainTextEdit>(QStringLiteral("_ui_presetDescription"));
    }
    void clickNewPreset() const
    {
        QTest::mouseClick(outlet<QPushButton>(QStringLiteral("_addPresetButton")), Qt::LeftButton);
    }
    QLineEdit *labelEditor() const { return list().viewport()->findChild<QLineEdit *>(); }
};

TEST_F(QNBPrefPanePrefPresets, ANewPresetIsSelectedAndItsNameIsTypedAtOnce)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    clickNewPreset();
    ASSERT_EQ(controller().arrangedObjects().size(), 2);
    EXPECT_EQ(list().selectedRow(), 1);
    EXPECT_EQ(record(1)->label(), u"Untitled Preset");
    ASSERT_TRUE(labelEditor());
    QTest::keyClicks(labelEditor(), QStringLiteral("Wedding"));
    QTest::keyClick(labelEditor(), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return record(1)->label() == u"Wedding"; }));
    EXPECT_EQ(outline().placeholderText(), u"This preset is empty");
    EXPECT_EQ(outline().accessibleDescription(), u"This preset is empty");
    leavePane();
    EXPECT_EQ(stored().presets.size(), 2);
}

TEST_F(QNBPrefPanePrefPresets, PresetsOfOneLabelSayWhatCommandsCallThem)
{
    store({preset(QStringLiteral("A")), preset(QStringLiteral("B")), preset(QStringLiteral("b"))});
    openPane();
    QAbstractItemModel &model = *list().model();
    const auto shown = [&model] {
        QStringList labels;
        for (int row = 0; row < model.rowCount(); ++row)
            labels << model.index(row, 1).data().toString();
        return labels;
    };
    const QStringList asStored{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("b")};
    EXPECT_EQ(shown(), asStored);
    EXPECT_EQ(model.index(1, 1).data(Qt::AccessibleDescriptionRole).toString(), u"");

    ASSERT_TRUE(model.setData(model.index(1, 1), QStringLiteral("A"))) << "it may be called like another";
    EXPECT_EQ(shown(),
              QStringList({QStringLiteral("A (#1)"), QStringLiteral("A (#2)"), QStringLiteral("b")}));
    EXPECT_EQ(model.index(1, 1).data(Qt::EditRole).toString(), u"A");
    EXPECT_TRUE(model.index(1, 1).data(Qt::AccessibleDescriptionRole).toString().contains(u"#2"));
    controller().setSelectionIndex(0);
    outlet<QAction>(QStringLiteral("_movePresetDownAction"))->trigger();
    outlet<QAction>(QStringLiteral("_movePresetDownAction"))->trigger();
    EXPECT_EQ(shown(),
              QStringList({QStringLiteral("A (#1)"), QStringLiteral("b"), QStringLiteral("A (#3)")}));
    pane->undo();
    pane->undo();
    pane->undo();
    EXPECT_EQ(shown(), asStored);
}

TEST_F(QNBPrefPanePrefPresets, APresetThatNoNumberNamesSaysHowCommandsNameIt)
{
    store({preset(QStringLiteral("A")), preset(QStringLiteral("#3")), preset(QStringLiteral("A"))});
    openPane();
    const QAbstractItemModel &model = *list().model();
    EXPECT_EQ(model.index(0, 1).data().toString(), u"A (#1)");
    EXPECT_EQ(model.index(1, 1).data().toString(), u"#3");
    EXPECT_EQ(model.index(2, 1).data().toString(), u"A (same label)");
    EXPECT_TRUE(model.index(2, 1).data(Qt::AccessibleDescriptionRole).toString().contains(u"--position 2"));
}

TEST_F(QNBPrefPanePrefPresets, NewPresetsGetUniqueLabelsWithoutRegardToCase)
{
    store({preset(QStringLiteral("UNTITLED preset"))});
    openPane();
    clickNewPreset();
    clickNewPreset();
    EXPECT_EQ(record(1)->label(), u"Untitled Preset-1");
    EXPECT_EQ(record(2)->label(), u"Untitled Preset-2");
}

TEST_F(QNBPrefPanePrefPresets, AnEmptyLabelIsRefused)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    for (const QString &typed : {QString(), QStringLiteral("   ")}) {
        list().editColumn(QNBPresetKey::label, 0);
        QTest::keyClick(labelEditor(), Qt::Key_Delete);
        QTest::keyClicks(labelEditor(), typed);
        list().endEditing();
        EXPECT_EQ(record(0)->label(), u"A");
    }
}

TEST_F(QNBPrefPanePrefPresets, DescriptionsBelongToTheirPresets)
{
    auto a = preset(QStringLiteral("A"));
    a->setValueForKey(QStringLiteral("about\nA\u00a0!"), QNBPresetKey::presetDescription);
    store({a, preset(QStringLiteral("B"))});
    openPane();
    EXPECT_EQ(description().toPlainText(), u"about\nA !") << "the widget shows no-break spaces as spaces";
    controller().setSelectionIndex(1);
    EXPECT_EQ(description().toPlainText(), u"");
    description().setFocus();
    QTest::keyClicks(&description(), QStringLiteral("bee"));
    QTest::keyClick(&description(), Qt::Key_Return);
    QTest::keyClicks(&description(), QStringLiteral("two"));
    controller().setSelectionIndex(0);
    EXPECT_EQ(record(1)->valueForKey(QNBPresetKey::presetDescription), QVariant(QStringLiteral("bee\ntwo")));
    EXPECT_EQ(record(0)->valueForKey(QNBPresetKey::presetDescription),
              QVariant(QStringLiteral("about\nA\u00a0!")));
    description().moveCursor(QTextCursor::End);
    QTest::keyClicks(&description(), QStringLiteral("?"));
    EXPECT_EQ(record(0)->valueForKey(QNBPresetKey::presetDescription),
              QVariant(QStringLiteral("about\nA\u00a0!?")));
}

TEST_F(QNBPrefPanePrefPresets, ADescriptionThatIsNotTouchedKeepsItsValue)
{
    auto a = preset(QStringLiteral("A"));
    a->setValueForKey(QVariantList{1, 2}, QNBPresetKey::presetDescription);
    auto b = preset(QStringLiteral("B"));
    b->setValueForKey(QString(), QNBPresetKey::presetDescription);
    store({a, b});
    openPane();
    controller().setSelectionIndex(1);
    leavePane();
    const QNBSettings settings = stored();
    EXPECT_EQ(settings.presets.at(0)->valueForKey(QNBPresetKey::presetDescription).toList().size(), 2);
    EXPECT_TRUE(settings.presets.at(1)->valueForKey(QNBPresetKey::presetDescription).isValid());
}

TEST_F(QNBPrefPanePrefPresets, WithoutASelectedPresetThereIsNothingToDescribe)
{
    store({});
    openPane();
    EXPECT_FALSE(description().isEnabled());
    clickNewPreset();
    EXPECT_TRUE(description().isEnabled());
}

TEST_F(QNBPrefPanePrefPresets, ARecordWithoutATreeGetsAnEmptyOneWhenSelected)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    auto bare = std::make_shared<QNBPresetRecord>();
    controller().addObject(bare);
    ASSERT_TRUE(bare->fileHierarchy());
    EXPECT_EQ(bare->fileHierarchy()->numberOfChildren(), 0U);
}

TEST_F(QNBPrefPanePrefPresets, TheOutlineShowsIconsAndItsNamesAreEdited)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("folder/")})});
    openPane();
    const QAbstractItemModel &model = *outline().model();
    const QModelIndex file = model.index(0, 0);
    const QModelIndex folder = model.index(1, 0);
    EXPECT_TRUE(file.flags() & Qt::ItemIsEditable);
    const QIcon fileIcon = file.data(Qt::DecorationRole).value<QIcon>();
    const QIcon folderIcon = folder.data(Qt::DecorationRole).value<QIcon>();
    EXPECT_FALSE(fileIcon.isNull());
    EXPECT_FALSE(folderIcon.isNull());
    EXPECT_NE(fileIcon.pixmap(16).toImage(), folderIcon.pixmap(16).toImage());
    EXPECT_EQ(outline().indentation(), 18);
    EXPECT_EQ(outline().iconSize(), QSize(16, 16));
}

TEST_F(QNBPrefPanePrefPresets, AFileWithChildrenDoesNotExpand)
{
    auto a = preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("folder/")});
    a->fileHierarchy()->childAtIndex(0)->addChild(QNBHierarchyItem::init());
    store({a});
    openPane();
    EXPECT_FALSE(outline().model()->hasChildren(outline().model()->index(0, 0)));
    EXPECT_EQ(outline().numberOfRows(), 3);
}

TEST_F(QNBPrefPanePrefPresets, AHundredPresets)
{
    QList<QNBPresetRecordPtr> presets;
    for (int i = 0; i < 100; ++i)
        presets << preset(QStringLiteral("Preset %1").arg(i), {QStringLiteral("file %1").arg(i)});
    store(presets);
    openPane();
    EXPECT_EQ(list().model()->rowCount(), 100);
    list().setFocus();
    QTest::keyClick(&list(), Qt::Key_End);
    EXPECT_EQ(list().selectedRow(), 99);
    EXPECT_EQ(outlineRows(), QStringList({QStringLiteral("file 99")}));
    leavePane();
    const QNBSettings settings = stored();
    ASSERT_EQ(settings.presets.size(), 100);
    EXPECT_EQ(settings.presets.at(42)->label(), u"Preset 42");
}

class QNBPrefPanePrefDescriptionPane : public PaneFixture
{
protected:
    QNBPrefPanePrefDescriptionPane()
    {
        openPane();
        split().setParent(nullptr);
        split().show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&split()));
        split().resize(200, 400);
    }
    ~QNBPrefPanePrefDescriptionPane() override { split().setParent(view.get()); }

    QSplitter &split() const
    {
        if (!split_)
            split_ = outlet<QSplitter>(QStringLiteral("_leftColumnSplit"));
        return *split_;
    }
    /// Where divider 0 stands.
    int divider() const { return split().sizes().constFirst(); }

private:
    mutable QSplitter *split_ = nullptr;
};

TEST_F(QNBPrefPanePrefDescriptionPane, ToggleOnLeavesTheDescription130PointsOf400)
{
    pane->showHideDescriptionPane(Qt::Unchecked);
    pane->showHideDescriptionPane(Qt::Checked);
    EXPECT_EQ(split().height(), 400);
    EXPECT_EQ(divider(), 270);
}

TEST_F(QNBPrefPanePrefDescriptionPane, ToggleOffCollapsesTheDescription)
{
    pane->showHideDescriptionPane(Qt::Unchecked);
    EXPECT_EQ(split().sizes().constLast(), 0);
    EXPECT_EQ(divider(), split().height() - split().handleWidth());
}

TEST_F(QNBPrefPanePrefDescriptionPane, MixedDoesNothing)
{
    split().setSizes({200, 200});
    const QList<int> before = split().sizes();
    pane->showHideDescriptionPane(Qt::PartiallyChecked);
    EXPECT_EQ(split().sizes(), before);
}

TEST_F(QNBPrefPanePrefPresets, TheToggleMovesTheDividerAndFollowsIt)
{
    openPane();
    auto *toggle = outlet<QCheckBox>(QStringLiteral("_descriptionToggle"));
    auto *split = outlet<QSplitter>(QStringLiteral("_leftColumnSplit"));
    EXPECT_TRUE(toggle->isChecked());
    EXPECT_EQ(split->sizes().constFirst(), split->height() - 130);
    toggle->click();
    EXPECT_EQ(split->sizes().constLast(), 0);
    toggle->click();
    EXPECT_EQ(split->sizes().constFirst(), split->height() - 130);
    // The user drags the divider to the bottom.
    QSplitterHandle *handle = split->handle(1);
    QTest::mousePress(handle, Qt::LeftButton, {}, handle->rect().center());
    QTest::mouseMove(handle, handle->rect().center() + QPoint(0, 400));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, handle->rect().center());
    EXPECT_EQ(split->sizes().constLast(), 0);
    EXPECT_FALSE(toggle->isChecked());
}

TEST_F(QNBPrefPanePrefPresets, TheDescriptionKeepsItsHeightWhenTheWindowGrows)
{
    openPane();
    const auto *split = outlet<QSplitter>(QStringLiteral("_leftColumnSplit"));
    const int before = split->sizes().constLast();
    view->resize(view->width(), view->height() + 200);
    EXPECT_TRUE(QTest::qWaitFor([split] { return split->sizes().constFirst() > 400; }));
    EXPECT_EQ(split->sizes().constLast(), before);
}

} // namespace
