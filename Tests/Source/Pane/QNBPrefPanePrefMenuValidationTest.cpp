// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QMenu>
#include <QStyle>

namespace {

struct Case
{
    const char *action;
    int tag;
    bool enabledForNothing;
    bool enabledForFile;
    bool enabledForFolder;
};

void PrintTo(const Case &menuItem, std::ostream *out)
{
    *out << menuItem.action << '/' << menuItem.tag;
}

class QNBPrefPanePrefMenuValidation : public PaneFixture, public ::testing::WithParamInterface<Case>
{
protected:
    void open()
    {
        store({preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("folder/")})});
        openPane();
    }
};

TEST_P(QNBPrefPanePrefMenuValidation, FollowsTheSelection)
{
    open();
    QAction item;
    item.setProperty("action", QString::fromLatin1(GetParam().action));
    item.setProperty("tag", GetParam().tag);
    outline().selectRow(OutlineView::noRow);
    EXPECT_EQ(pane->validateMenuItem(item), GetParam().enabledForNothing);
    outline().selectRow(0);
    EXPECT_EQ(pane->validateMenuItem(item), GetParam().enabledForFile);
    outline().selectRow(1);
    EXPECT_EQ(pane->validateMenuItem(item), GetParam().enabledForFolder);
}

INSTANTIATE_TEST_SUITE_P(, QNBPrefPanePrefMenuValidation,
                         ::testing::Values(Case{"deleteSelectedItemInPresetHierarchy", 0, false, true, true},
                                           Case{"deleteSelectedItemInPresetHierarchy", 7, false, true, true},
                                           Case{"renameSelectedItemInPresetHierarchy", 0, false, true, true},
                                           Case{"dummyAction", 1000, false, true, false},
                                           Case{"dummyAction", 1100, false, true, true},
                                           Case{"dummyAction", 0, true, true, true},
                                           Case{"dummyAction", 2100, true, true, true},
                                           Case{"openFileContentFolder", 0, false, true, false},
                                           Case{"fileContentItemClicked", 2100, false, true, false},
                                           Case{"fileContentItemClicked", 0, false, true, false},
                                           Case{"openScriptsFolder", 0, true, true, true},
                                           Case{"addPreset", 1000, true, true, true},
                                           Case{"", 0, true, true, true}),
                         [](const ::testing::TestParamInfo<Case> &row) {
                             return std::string(row.param.action) + "_" + std::to_string(row.param.tag);
                         });

class QNBPrefPanePrefContextualMenu : public PaneFixture
{
};

TEST_F(QNBPrefPanePrefContextualMenu, IsValidatedWheneverItOpens)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("file"), QStringLiteral("folder/")})});
    openPane();
    auto *menu = outlet<QMenu>(QStringLiteral("_ui_presetContextualMenu"));
    const auto *rename = outlet<QAction>(QStringLiteral("_renameItemAction"));
    const QAction *contents = outlet<QMenu>(QStringLiteral("_fileContentMenu"))->menuAction();
    Q_EMIT menu->aboutToShow();
    EXPECT_FALSE(rename->isEnabled());
    EXPECT_FALSE(contents->isEnabled());
    outline().selectRow(0);
    Q_EMIT menu->aboutToShow();
    EXPECT_TRUE(rename->isEnabled());
    EXPECT_TRUE(contents->isEnabled());
    outline().selectRow(1);
    Q_EMIT menu->aboutToShow();
    EXPECT_TRUE(rename->isEnabled());
    EXPECT_FALSE(contents->isEnabled());
}

TEST_F(QNBPrefPanePrefContextualMenu, ScrollsWhereTheScreenIsTooLow)
{
    openPane();
    for (const char *name : {"_ui_presetContextualMenu", "_itemActionsMenu", "_presetActionsMenu"}) {
        const auto *menu = outlet<QMenu>(QString::fromLatin1(name));
        EXPECT_TRUE(menu->style()->styleHint(QStyle::SH_Menu_Scrollable, nullptr, menu)) << name;
    }
}

} // namespace
