// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Settings that cannot be read at the start, and those of earlier times.

#include "PaneFixture.h"
#include "Platform/Files/FileLayer.h"
#include "Platform/Preferences/PreferencesFile.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Shared/Source/QNBShared.h"
#include "Toolkit/ArrayController.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLocale>

#include <cerrno>
#include <unistd.h>

namespace {

using Kind = PaneNotice::Kind;

const QString mine = QStringLiteral("Mine");
const QString defaults = QStringLiteral("Default");

/// Has no room for a copy of a file.
class NoCopies final : public FileLayer
{
public:
    int renameToFree(const QByteArray &, const QByteArray &) override
    {
        errno = ENOSPC;
        return -1;
    }
};

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
    /// What is there then cannot be read, and has a good backup.
    void damageOutOfReach()
    {
        const QString file = unmounted() + QStringLiteral("/domain.plist");
        ASSERT_TRUE(QFile::rename(file, file + QStringLiteral(".backup")));
        write(file, "damaged");
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

    QString backup() const { return domain() + QStringLiteral(".backup"); }
    QStringList damagedFiles() const
    {
        return QDir(path(QStringLiteral("config"))).entryList({QStringLiteral("*.damaged-*")}, QDir::Files);
    }
    void write(const QString &file, const QByteArray &bytes) const
    {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        ASSERT_EQ(out.write(bytes), bytes.size());
    }
    /// Stores two states; the first, which is the backup, long ago.
    void storeTwice()
    {
        store({preset(mine)});
        store({preset(QStringLiteral("Later"))});
        QFile file(backup());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    }
    /// Presses a button of a notice.
    void choose(Kind kind, const QString &title)
    {
        const QList<PaneNotice::Action> actions = listener.notices.value(kind).actions;
        for (const PaneNotice::Action &action : actions) {
            if (action.title == title)
                return action.run();
        }
        FAIL() << qPrintable(title);
    }
    /// What another program that saves holds.
    Result<FileLock> lockOfDomain() const
    {
        PreferencesFile file(FileLayer::real(), domain());
        EXPECT_TRUE(file.locate(false));
        return file.lock(path(QStringLiteral("config")), 0);
    }
    QString told(Kind kind) const { return listener.notices.value(kind).text; }

    inline static const QDateTime longAgo{QDate(2026, 2, 3), QTime(4, 5, 6)};
    inline static const QString changesWait = QStringLiteral("Your changes cannot be saved yet.");
    inline static const QString defaultsAreShown = QStringLiteral("The default presets are shown.");
    inline static const QString tryAgain = QStringLiteral("Try Again");
    inline static const QString restoreEarlier = QStringLiteral("Restore an Earlier State…");
};

} // namespace

TEST_F(QNBPrefPanePrefStoredStatesTest, PresetsThatCouldNotBeReadAreTakenWhenTheyCan)
{
    storeOutOfReach();
    openPane();
    EXPECT_EQ(shown(), QStringList{defaults});
    loseKeyboardAndRegainIt();
    EXPECT_FALSE(QFile::exists(mounted()));
    EXPECT_TRUE(listener.notices.contains(Kind::Unreadable));
    EXPECT_TRUE(listener.results.isEmpty()) << "nothing had to be saved";
    EXPECT_TRUE(notifications.contains(QNBPresetConfigurationChangedNotification));
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
    EXPECT_TRUE(told(Kind::Unreadable).contains(defaultsAreShown)) << qPrintable(told(Kind::Unreadable));
    EXPECT_FALSE(told(Kind::Unreadable).contains(changesWait));
    pane->addPreset();
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(told(Kind::Unreadable).contains(changesWait)) << qPrintable(told(Kind::Unreadable));
    EXPECT_FALSE(told(Kind::Unreadable).contains(u"are shown")) << qPrintable(told(Kind::Unreadable));
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

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatCannotBeKeptBeforeEditedPresetsReplaceItIsToldAsAFailedSave)
{
    storeOutOfReach();
    openPane();
    pane->addPreset();
    mount();
    {
        const Result<FileLock> busy = lockOfDomain();
        ASSERT_TRUE(busy);
        EXPECT_FALSE(pane->save());
    }
    ASSERT_EQ(listener.results.size(), 1);
    EXPECT_TRUE(listener.results.constFirst().error.contains(u"is locked by another process"));
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable)) << "they were read";
    EXPECT_EQ(storedLabels(), QStringList{mine});
    EXPECT_TRUE(pane->save());
    EXPECT_TRUE(listener.results.constLast());
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable));
    EXPECT_EQ(keptAside().size(), 1);
}

TEST_F(QNBPrefPanePrefStoredStatesTest, AnOptionThatWasChosenMeanwhileStaysAndReplacesNoPreset)
{
    storeOutOfReach();
    openPane();
    outlet<QCheckBox>(QStringLiteral("_ui_showMenubar"))->click();
    EXPECT_TRUE(told(Kind::Unreadable).contains(changesWait)) << qPrintable(told(Kind::Unreadable));
    mount();
    ASSERT_NO_FATAL_FAILURE(choose(Kind::Unreadable, tryAgain));
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

TEST_F(QNBPrefPanePrefStoredStatesTest, DamagedPresetsAreToldOnceWithWhatIsShownInstead)
{
    storeTwice();
    write(domain(), "damaged");
    openPane();
    EXPECT_EQ(shown(), QStringList{mine});
    ASSERT_EQ(damagedFiles().size(), 1);
    const PaneNotice notice = listener.notices.value(Kind::Replaced);
    EXPECT_TRUE(notice.text.contains(QLocale().toString(longAgo, QLocale::ShortFormat)))
        << qPrintable(notice.text);
    EXPECT_TRUE(notice.text.contains(damagedFiles().constFirst())) << qPrintable(notice.text);
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable));
    EXPECT_TRUE(listener.results.isEmpty());

    chosenState = std::nullopt;
    ASSERT_NO_FATAL_FAILURE(choose(Kind::Replaced, restoreEarlier));
    EXPECT_FALSE(offeredStates.isEmpty());
    EXPECT_TRUE(listener.notices.contains(Kind::Replaced)) << "cancelled";
    chosenState = 0;
    ASSERT_NO_FATAL_FAILURE(choose(Kind::Replaced, restoreEarlier));
    EXPECT_FALSE(listener.notices.contains(Kind::Replaced));

    EXPECT_TRUE(pane->didUnselect());
    closePane();
    openPane();
    EXPECT_TRUE(listener.notices.isEmpty());
}

TEST_F(QNBPrefPanePrefStoredStatesTest, PresetsWithoutABackupAreToldToBeLostAndWhereTheirFileIs)
{
    store({preset(mine)});
    write(domain(), "damaged");
    openPane();
    EXPECT_EQ(shown(), QStringList{QStringLiteral("From the bundle")});
    ASSERT_EQ(damagedFiles().size(), 1);
    EXPECT_TRUE(told(Kind::Replaced).contains(u"no good backup")) << qPrintable(told(Kind::Replaced));
    EXPECT_TRUE(told(Kind::Replaced).contains(damagedFiles().constFirst()));
    EXPECT_TRUE(listener.notices.value(Kind::Replaced).actions.isEmpty()) << "there is no earlier state";
}

TEST_F(QNBPrefPanePrefStoredStatesTest, PresetsThatAreGoneComeBackFromTheirBackup)
{
    storeTwice();
    ASSERT_TRUE(QFile::remove(domain()));
    openPane();
    EXPECT_EQ(shown(), QStringList{mine});
    EXPECT_TRUE(told(Kind::Replaced).contains(u"missing")) << qPrintable(told(Kind::Replaced));
    EXPECT_EQ(storedLabels(), QStringList{mine});

    ASSERT_TRUE(QFile::remove(domain()));
    ASSERT_TRUE(QFile::remove(backup()));
    closePane();
    listener.notices.clear();
    openPane();
    EXPECT_EQ(shown(), QStringList{QStringLiteral("From the bundle")});
    EXPECT_TRUE(listener.notices.isEmpty()) << "a first run";
}

TEST_F(QNBPrefPanePrefStoredStatesTest, DamageThatASaveFindsIsToldAndWhatIsShownIsSaved)
{
    storeTwice();
    openPane();
    pane->addPreset();
    write(domain(), "damaged");
    loseKeyboardAndRegainIt();
    const QStringList expected{QStringLiteral("Later"), QStringLiteral("Untitled Preset")};
    EXPECT_EQ(storedLabels(), expected);
    EXPECT_TRUE(told(Kind::Replaced).contains(u"What is shown")) << qPrintable(told(Kind::Replaced));
    EXPECT_TRUE(told(Kind::Replaced).contains(damagedFiles().value(0)));
    listener.notices.clear();
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(listener.notices.isEmpty());
}

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatCannotBeReplacedNowIsToldWithTheReasonAndTryAgain)
{
    storeTwice();
    write(domain(), "damaged");
    {
        const Result<FileLock> busy = lockOfDomain();
        ASSERT_TRUE(busy);
        openPane();
        EXPECT_EQ(shown(), QStringList{mine}) << "the backup";
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"is locked by another process"))
            << qPrintable(told(Kind::Unreadable));
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"was damaged"));
        EXPECT_TRUE(listener.results.isEmpty()) << "no save has failed";
        ASSERT_NO_FATAL_FAILURE(choose(Kind::Unreadable, tryAgain));
        EXPECT_TRUE(listener.notices.contains(Kind::Unreadable));
        EXPECT_TRUE(pane->save()) << "nothing is to be saved";
        EXPECT_TRUE(damagedFiles().isEmpty());
    }
    ASSERT_NO_FATAL_FAILURE(choose(Kind::Unreadable, tryAgain));
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable));
    EXPECT_TRUE(told(Kind::Replaced).contains(damagedFiles().value(0))) << qPrintable(told(Kind::Replaced));
    EXPECT_EQ(shown(), QStringList{mine});
    EXPECT_TRUE(pane->save());
    EXPECT_EQ(storedLabels(), QStringList{mine});
}

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatTheUserMadeOfTheBackupMeanwhileTakesThePlaceOfTheDamagedFile)
{
    storeTwice();
    write(domain(), "damaged");
    {
        const Result<FileLock> busy = lockOfDomain();
        ASSERT_TRUE(busy);
        openPane();
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"from the backup, are shown"));
        pane->addPreset();
        EXPECT_FALSE(pane->save());
        EXPECT_TRUE(told(Kind::Unreadable).contains(changesWait)) << qPrintable(told(Kind::Unreadable));
        EXPECT_FALSE(told(Kind::Unreadable).contains(u"are shown")) << qPrintable(told(Kind::Unreadable));
    }
    EXPECT_TRUE(pane->save());
    EXPECT_EQ(storedLabels(), (QStringList{mine, QStringLiteral("Untitled Preset")}));
    EXPECT_TRUE(told(Kind::Replaced).contains(u"What is shown")) << qPrintable(told(Kind::Replaced));
}

TEST_F(QNBPrefPanePrefStoredStatesTest, WhatIsSaidToBeShownIsWhatIsShown)
{
    // The default presets, though there is a backup by now.
    storeOutOfReach();
    openPane();
    damageOutOfReach();
    mount();
    {
        const Result<FileLock> busy = lockOfDomain();
        ASSERT_TRUE(busy);
        ASSERT_NO_FATAL_FAILURE(choose(Kind::Unreadable, tryAgain));
        EXPECT_EQ(shown(), QStringList{defaults});
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"was damaged")) << qPrintable(told(Kind::Unreadable));
        EXPECT_TRUE(told(Kind::Unreadable).contains(defaultsAreShown)) << qPrintable(told(Kind::Unreadable));
        closePane();

        // The backup, though the file cannot be reached by now.
        openPane();
        EXPECT_EQ(shown(), QStringList{mine});
        ASSERT_TRUE(QDir().rename(mounted(), unmounted()));
        EXPECT_TRUE(pane->save()) << "nothing is to be saved";
        EXPECT_EQ(shown(), QStringList{mine});
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"No such file")) << qPrintable(told(Kind::Unreadable));
        EXPECT_TRUE(told(Kind::Unreadable).contains(u"from the backup, are shown"))
            << qPrintable(told(Kind::Unreadable));
    }
    mount();
    ASSERT_NO_FATAL_FAILURE(choose(Kind::Unreadable, tryAgain));
    EXPECT_EQ(shown(), QStringList{mine});
}

TEST_F(QNBPrefPanePrefStoredStatesTest,
       DamageIsToldThoughTheRestoredFileCannotBeKeptBeforeEditedOnesReplaceIt)
{
    storeOutOfReach();
    NoCopies layer;
    QNBPrefPanePref::Services world = services();
    world.preferences = std::make_unique<Preferences>(
        QNBProductIdentifier(), Preferences::Options{.folder = path(QStringLiteral("config")),
                                                     .lockFolder = path(QStringLiteral("config")),
                                                     .layer = &layer});
    openPane(std::move(world));
    pane->addPreset();
    damageOutOfReach();
    mount();
    EXPECT_FALSE(pane->save());
    EXPECT_EQ(listener.results.size(), 1);
    EXPECT_EQ(storedLabels(), QStringList{mine});
    const QStringList kept = QDir(mounted()).entryList({QStringLiteral("*.damaged-*")}, QDir::Files);
    ASSERT_EQ(kept.size(), 1);
    EXPECT_TRUE(told(Kind::Replaced).contains(kept.constFirst())) << qPrintable(told(Kind::Replaced));
    closePane();
}

TEST_F(QNBPrefPanePrefStoredStatesTest, PresetsTooLargeWithoutABackupAreNotSavedOver)
{
    store({preset(mine)});
    constexpr qint64 size = qint64(1) << 30;
    ASSERT_EQ(::truncate(QFile::encodeName(domain()).constData(), size), 0);
    openPane();
    EXPECT_TRUE(told(Kind::Unreadable).contains(u"has more than 256 MiB."))
        << qPrintable(told(Kind::Unreadable));
    EXPECT_TRUE(listener.results.isEmpty()) << "no save has failed";
    pane->addPreset();
    loseKeyboardAndRegainIt();
    EXPECT_EQ(QFileInfo(domain()).size(), size);
    EXPECT_TRUE(damagedFiles().isEmpty());
}
