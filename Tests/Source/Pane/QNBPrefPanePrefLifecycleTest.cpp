// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"
#include "Tests/Session/ComposingInputMethod.h"

#include "Source/Controls/ZBIconCell.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>

#include <QTest>

namespace {

const QString showMenubarOutlet = QStringLiteral("_ui_showMenubar");
const QString descriptionOutlet = QStringLiteral("_ui_presetDescription");
const QString recorderOutlet = QStringLiteral("_ui_shortcutRecorderControl");

class QNBPrefPanePrefLifecycle : public PaneFixture
{
protected:
    QStringList storedLabels() const
    {
        QStringList labels;
        const QNBSettings settings = stored();
        for (const QNBPresetRecordPtr &record : settings.presets)
            labels << record->label();
        return labels;
    }
};

TEST_F(QNBPrefPanePrefLifecycle, FirstRunShowsTheBundlesPresetsAndTheFirstSaveKeepsThem)
{
    openPane();
    ASSERT_EQ(controller().arrangedObjects().size(), 1);
    EXPECT_TRUE(storedLabels().isEmpty()) << "nothing is stored before the pane is left";
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("From the bundle")}));
}

TEST_F(QNBPrefPanePrefLifecycle, TheRowsOfTheOutlineAreDrawnByAnEditableIconCell)
{
    openPane();
    const auto *cell = dynamic_cast<const ZBIconCell *>(outline().dataCell());
    ASSERT_TRUE(cell);
    EXPECT_TRUE(cell->isEditable());
}

TEST_F(QNBPrefPanePrefLifecycle, PreferencesAreReadWhenTheViewIsLoadedAndNotBefore)
{
    pane = std::make_unique<QNBPrefPanePref>(services());
    EXPECT_EQ(pane->mainView(), nullptr);
    store({preset(QStringLiteral("Stored meanwhile"))});
    view.reset(pane->loadMainView());
    EXPECT_EQ(controller().arrangedObjects().constFirst()->valueForKey(QNBPresetKey::label),
              QVariant(QStringLiteral("Stored meanwhile")));
}

TEST_F(QNBPrefPanePrefLifecycle, DeselectingSavesAndNotifiesEvenWhenNothingChanged)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    EXPECT_TRUE(notifications.isEmpty());
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(notifications, QStringList({QNBPresetConfigurationChangedNotification}));
    pane->didSelect();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(notifications.size(), 2);
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A")}));
}

TEST_F(QNBPrefPanePrefLifecycle, AnyWindowLosingTheKeyboardSavesEvenWhenNothingChanged)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    loseKeyboardAndRegainIt();
    // Ours lost it, then the other window did.
    EXPECT_EQ(notifications.size(), 2);
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A")}));
}

TEST_F(QNBPrefPanePrefLifecycle, WindowsAreWatchedOnlyWhileThePaneIsSelected)
{
    openPane();
    EXPECT_TRUE(pane->didUnselect());
    notifications.clear();
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(notifications.isEmpty());
    pane->didSelect();
    pane->didSelect();
    loseKeyboardAndRegainIt();
    EXPECT_EQ(notifications.size(), 2) << "selecting twice does not save twice";
}

TEST_F(QNBPrefPanePrefLifecycle, APopupMenuIsNotAWindow)
{
    openPane();
    QMenu menu;
    menu.addAction(QStringLiteral("Something"));
    menu.popup(view->mapToGlobal(QPoint(10, 10)));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    menu.close();
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    EXPECT_TRUE(notifications.isEmpty());
}

TEST_F(QNBPrefPanePrefLifecycle, ResigningCommitsTheDescriptionBeingTyped)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    auto *description = outlet<QPlainTextEdit>(descriptionOutlet);
    description->setFocus();
    QTest::keyClicks(description, QStringLiteral("for clients"));
    loseKeyboardAndRegainIt();
    EXPECT_EQ(stored().presets.constFirst()->valueForKey(QNBPresetKey::presetDescription),
              QVariant(QStringLiteral("for clients")));
}

TEST_F(QNBPrefPanePrefLifecycle, LeavingCommitsTheDescriptionBeingComposed)
{
    ComposingInputMethod inputMethod;
    store({preset(QStringLiteral("A"))});
    openPane();
    outlet<QPlainTextEdit>(descriptionOutlet)->setFocus();
    inputMethod.compose(QStringLiteral("\u65e5\u672c"));
    leavePane();
    EXPECT_EQ(stored().presets.constFirst()->valueForKey(QNBPresetKey::presetDescription),
              QVariant(QStringLiteral("\u65e5\u672c")));
}

TEST_F(QNBPrefPanePrefLifecycle, ResigningCommitsTheLabelBeingTyped)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    list().editColumn(QNBPresetKey::label, 0);
    QTest::keyClicks(list().viewport()->findChild<QLineEdit *>(), QStringLiteral("Renamed"));
    loseKeyboardAndRegainIt();
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("Renamed")}));
    EXPECT_FALSE(list().isEditing());
}

TEST_F(QNBPrefPanePrefLifecycle, DeselectingCommitsTheLabelBeingTyped)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    list().editColumn(QNBPresetKey::label, 0);
    QTest::keyClicks(list().viewport()->findChild<QLineEdit *>(), QStringLiteral("Left in haste"));
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("Left in haste")}));
}

TEST_F(QNBPrefPanePrefLifecycle, OptionsAreSavedFromTheControls)
{
    store({});
    openPane();
    auto *showMenubar = outlet<QCheckBox>(showMenubarOutlet);
    EXPECT_TRUE(showMenubar->isChecked());
    showMenubar->click();
    const KeyCombo combo{KeyCodes::commandFlag, 45};
    outlet<KeyComboRecorder>(recorderOutlet)->setKeyCombo(combo);
    EXPECT_TRUE(pane->didUnselect());
    const QNBSettings settings = stored();
    EXPECT_FALSE(settings.showMenubar);
    EXPECT_EQ(settings.shortcutCombo.flags, combo.flags);
    EXPECT_EQ(settings.shortcutCombo.code, combo.code);
    closePane();

    openPane();
    EXPECT_FALSE(outlet<QCheckBox>(showMenubarOutlet)->isChecked());
    EXPECT_EQ(outlet<KeyComboRecorder>(recorderOutlet)->keyCombo(), combo);
}

TEST_F(QNBPrefPanePrefLifecycle, PresetsAreSavedInTheOrderShown)
{
    store({preset(QStringLiteral("A")), preset(QStringLiteral("B"))});
    openPane();
    controller().insertObject(preset(QStringLiteral("C")), 1);
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A"), QStringLiteral("C"), QStringLiteral("B")}));
}

TEST_F(QNBPrefPanePrefLifecycle, AFailedSaveIsToldAndTheNextOneStoresWhatWasMade)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    controller().setValueForKey(QStringLiteral("Must not be lost"), QNBPresetKey::label, 0);
    {
        const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
        loseKeyboardAndRegainIt();
        ASSERT_FALSE(listener.results.isEmpty());
        EXPECT_FALSE(listener.results.constLast());
        EXPECT_FALSE(listener.results.constLast().error.isEmpty());
        const Result<> left = pane->didUnselect();
        EXPECT_FALSE(left);
        EXPECT_FALSE(left.error.isEmpty());
    }
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A")}));
    EXPECT_TRUE(pane->save());
    EXPECT_TRUE(listener.results.constLast());
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("Must not be lost")}));
}

TEST_F(QNBPrefPanePrefLifecycle, AFailedSavePostsTheNotificationToo)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
    EXPECT_FALSE(pane->save());
    EXPECT_EQ(notifications, QStringList({QNBPresetConfigurationChangedNotification}));
}

TEST_F(QNBPrefPanePrefLifecycle, AChangedOptionTellsWhenItCannotBeSaved)
{
    openPane();
    const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
    outlet<QCheckBox>(showMenubarOutlet)->click();
    ASSERT_EQ(listener.results.size(), 1);
    EXPECT_FALSE(listener.results.constFirst());
}

TEST_F(QNBPrefPanePrefLifecycle, ACopyHoldsAllThatTheDomainWouldHold)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("x/")})});
    openPane();
    controller().setValueForKey(QStringLiteral("Only in memory"), QNBPresetKey::label, 0);
    const KeyCombo combo{KeyCodes::commandFlag, 45};
    outlet<KeyComboRecorder>(recorderOutlet)->setKeyCombo(combo);
    const QString copy = path(QStringLiteral("config/copied.plist"));
    ASSERT_TRUE(pane->saveCopy(copy));
    EXPECT_EQ(QFile::permissions(copy) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A")}));

    Preferences copied(QStringLiteral("copied"), {.folder = path(QStringLiteral("config")),
                                                  .lockFolder = path(QStringLiteral("config"))});
    QNBSettings settings;
    ASSERT_TRUE(QNBSettingsStore::read(copied, std::nullopt, settings));
    ASSERT_EQ(settings.presets.size(), 1);
    EXPECT_EQ(settings.presets.constFirst()->label(), QStringLiteral("Only in memory"));
    EXPECT_EQ(settings.presets.constFirst()->fileHierarchy()->children().size(), 1U);
    EXPECT_EQ(settings.shortcutCombo.code, combo.code);
    EXPECT_TRUE(settings.showMenubar);

    const Result<> failed = pane->saveCopy(path(QStringLiteral("nowhere/copy.plist")));
    EXPECT_FALSE(failed);
    EXPECT_FALSE(failed.error.isEmpty());
}

TEST_F(QNBPrefPanePrefLifecycle, APaneThatWasNeverLeftDoesNotSaveWhenItGoes)
{
    store({preset(QStringLiteral("A"))});
    openPane();
    controller().setValueForKey(QStringLiteral("B"), QNBPresetKey::label, 0);
    closePane();
    EXPECT_EQ(storedLabels(), QStringList({QStringLiteral("A")}));
    EXPECT_TRUE(notifications.isEmpty());
}

TEST_F(QNBPrefPanePrefLifecycle, TheViewOutlivesThePane)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("x/")})});
    openPane();
    pane.reset();
    view->resize(view->size() + QSize(10, 10));
    view->grab();
    QTest::mouseClick(list().viewport(), Qt::LeftButton);
    view->setPalette(QPalette(Qt::black));
    EXPECT_EQ(outline().model()->rowCount(), 0);
}

TEST_F(QNBPrefPanePrefLifecycle, WithoutItsBundleThePaneStillOpens)
{
    ASSERT_TRUE(QDir(path(QStringLiteral("Quenby.prefPane"))).removeRecursively());
    openPane();
    EXPECT_TRUE(controller().arrangedObjects().isEmpty());
    EXPECT_TRUE(pane->imageNamed(QStringLiteral("DragHandle")).isNull());
}

} // namespace
