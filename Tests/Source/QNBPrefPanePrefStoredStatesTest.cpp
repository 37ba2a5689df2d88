// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Settings that cannot be read at the start, and those of earlier times.

#include "PaneFixture.h"
#include "Platform/PropertyList.h"
#include "Shared/Source/QNBShared.h"
#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>

namespace {

const QString mine = QStringLiteral("Mine");
const QString defaults = QStringLiteral("Default");

class QNBPrefPanePrefStoredStatesTest : public PaneFixture
{
protected:
    QString domain() const
    {
        return path(QStringLiteral("config/") + QNBProductIdentifier() + QStringLiteral(".plist"));
    }
    QString unmounted() const { return path(QStringLiteral("unmounted")); }
    QString mounted() const { return path(QStringLiteral("mounted")); }

    /// The stored presets are where nothing leads to now, as on a home that is not mounted yet.
    void storeOutOfReach()
    {
        writeFile(QStringLiteral("Quenby.prefPane/Contents/Resources/DefaultPresets.plist"),
                  *PropertyList::write(QVariantList{preset(defaults)->toStored()}).bytes);
        store({preset(mine)});
        ASSERT_TRUE(QDir().mkpath(unmounted()));
        ASSERT_TRUE(QFile::rename(domain(), unmounted() + QStringLiteral("/domain.plist")));
        ASSERT_TRUE(QFile::link(mounted() + QStringLiteral("/domain.plist"), domain()));
    }
    void mount() { ASSERT_TRUE(QDir().rename(unmounted(), mounted())); }
    QStringList shown() const
    {
        QStringList labels;
        for (const ArrayController::Object &object : controller().arrangedObjects())
            labels << object->valueForKey(QNBPresetKey::label).toString();
        return labels;
    }
    QStringList storedLabels() const
    {
        QStringList labels;
        for (const QNBPresetRecordPtr &record : stored().presets)
            labels << record->label();
        return labels;
    }
    QStringList keptAside() const
    {
        return QDir(mounted()).entryList({QStringLiteral("*.before-*")}, QDir::Files);
    }
};

} // namespace

TEST_F(QNBPrefPanePrefStoredStatesTest, PresetsThatCouldNotBeReadAreTakenWhenTheyCan)
{
    storeOutOfReach();
    openPane();
    EXPECT_EQ(shown(), QStringList{defaults});
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(QFile::exists(mounted()));
    mount();
    loseKeyboardAndRegainIt();
    EXPECT_EQ(shown(), QStringList{mine});
    EXPECT_EQ(storedLabels(), QStringList{mine});
    EXPECT_EQ(keptAside(), QStringList());
    pane->addPreset();
    loseKeyboardAndRegainIt();
    EXPECT_EQ(storedLabels(), (QStringList{mine, QStringLiteral("Untitled Preset")}));
}

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatTheUserMadeMeanwhileAndWhatWasThereBothSurvive)
{
    storeOutOfReach();
    openPane();
    pane->addPreset();
    loseKeyboardAndRegainIt();
    mount();
    loseKeyboardAndRegainIt();
    EXPECT_EQ(storedLabels(), (QStringList{defaults, QStringLiteral("Untitled Preset")}));
    ASSERT_EQ(keptAside().size(), 1);
    QFile aside(QDir(mounted()).filePath(keptAside().constFirst()));
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    const auto presets = QNBSettingsStore::presetsOf(aside.readAll());
    ASSERT_TRUE(presets && presets->size() == 1);
    EXPECT_EQ(presets->constFirst()->label(), mine);
}

TEST_F(QNBPrefPanePrefStoredStatesTest, AnOptionThatWasChosenMeanwhileStaysAndReplacesNoPreset)
{
    storeOutOfReach();
    openPane();
    mount();
    outlet<QCheckBox>(QStringLiteral("_ui_showMenubar"))->click();
    EXPECT_EQ(shown(), QStringList{mine});
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(stored().showMenubar);
    EXPECT_EQ(storedLabels(), QStringList{mine});
    EXPECT_EQ(keptAside(), QStringList());
}

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatCannotBeReadUntilTheEndStaysAsItIs)
{
    storeOutOfReach();
    openPane();
    pane->addPreset();
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(QFile::exists(mounted()));
    mount();
    EXPECT_EQ(storedLabels(), QStringList{mine});
    EXPECT_EQ(QDir(mounted()).entryList(QDir::Files), QStringList{QStringLiteral("domain.plist")});
}

TEST_F(QNBPrefPanePrefStoredStatesTest, RestoringAnEarlierStateIsOneStepOfUndo)
{
    store({preset(mine, {QStringLiteral("a.txt")}), preset(defaults)});
    openPane();
    pane->addPreset();
    loseKeyboardAndRegainIt();
    const QStringList now = shown();
    ASSERT_EQ(now.size(), 3);
    controller().setSelectionIndex(1);

    chosenState = 0;
    pane->restoreEarlierState();
    ASSERT_EQ(offeredStates.size(), 1) << "the backup and the earlier state are the same";
    EXPECT_EQ(shown(), (QStringList{mine, defaults}));
    EXPECT_EQ(outlineRows(), QStringList{QStringLiteral("a.txt")});
    pane->undo();
    EXPECT_EQ(shown(), now);
    EXPECT_EQ(controller().selectionIndex(), 1);
    pane->redo();
    EXPECT_EQ(shown(), (QStringList{mine, defaults}));
    loseKeyboardAndRegainIt();
    EXPECT_EQ(storedLabels(), (QStringList{mine, defaults}));
}

TEST_F(QNBPrefPanePrefStoredStatesTest, CancellingChangesNothing)
{
    store({preset(mine)});
    openPane();
    pane->restoreEarlierState();
    EXPECT_TRUE(offeredStates.isEmpty());
    EXPECT_EQ(shown(), QStringList{mine});
    EXPECT_FALSE(outlet<QAction>(QStringLiteral("_undoAction"))->isEnabled());
}
