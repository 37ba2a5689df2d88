// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Source/Model/QNBRecoveryFile.h"
#include "Tests/Session/ChildProcess.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

namespace {

using Kind = PaneNotice::Kind;

/// A pane that keeps at once what is not saved, and what a later one makes of it.
class QNBUnsavedStateTest : public PaneFixture
{
protected:
    QNBUnsavedStateTest()
    {
        recoveryDelay = std::chrono::milliseconds(1);
        store({preset(QStringLiteral("A"), {QStringLiteral("file")}), preset(QStringLiteral("B"))});
    }

    QString folder() const { return path(recoveryFolder); }
    QStringList files() const { return QDir(folder()).entryList({QStringLiteral("*.plist")}, QDir::Files); }
    /// An edit like those of the user.
    void rename(const QString &label) const
    {
        pane->tableViewSetObjectValue(list(), label, list().columns().constLast(), 0);
    }
    /// What is kept, as the next pane would find it; waits until \a label is.
    bool keeps(const QString &label) const
    {
        return waitUntil([&] { return keptLabels().contains(label); });
    }
    QStringList keptLabels() const
    {
        QStringList labels;
        for (const QString &name : files()) {
            QFile file(QDir(folder()).filePath(name));
            QString error;
            const PropertyListDocument::Ptr document =
                file.open(QIODevice::ReadOnly) ? PropertyListDocument::parse(file.readAll(), &error)
                                               : nullptr;
            const Result<QNBSettings> settings =
                document ? QNBSettingsStore::decode(document) : Result<QNBSettings>::failure(error);
            if (settings)
                labels << settings->presets.constFirst()->label();
        }
        return labels;
    }
    /// A pane ends without saving, with the preset called \a label.
    void crashWith(const QString &label)
    {
        openPane();
        rename(label);
        ASSERT_TRUE(keeps(label));
        // As if it had been killed: nothing of it runs any more, and its lock goes with it.
        closePane();
        listener.notices.clear();
    }
    /// The same at the time \a taken, by a writer that was late.
    void leave(const QString &label, const QDateTime &taken)
    {
        QNBSettings settings = stored();
        settings.presets.constFirst()->setValueForKey(label, QNBPresetKey::label);
        QNBRecoveryFile(folder()).write(QNBSettingsStore::snapshot(settings, taken));
    }
    QStringList labels() const
    {
        QStringList result;
        for (const ArrayController::Object &object : controller().arrangedObjects())
            result << object->valueForKey(QNBPresetKey::label).toString();
        return result;
    }
    /// Presses a button of the offer.
    void choose(int action)
    {
        ASSERT_TRUE(listener.notices.contains(Kind::Recovery));
        const PaneNotice offer = listener.notices.value(Kind::Recovery);
        ASSERT_LT(action, offer.actions.size());
        offer.actions.at(action).run();
    }
    /// What comes after an edit would have come by now.
    static void waitForMoreThanTheDelay()
    {
        const QDeadlineTimer later(50);
        EXPECT_TRUE(QTest::qWaitFor([&later] { return later.hasExpired(); }));
    }
    static constexpr int restoring = 0;
    static constexpr int discarding = 1;
};

} // namespace

TEST_F(QNBUnsavedStateTest, AnEditIsKeptButNotInTheDomain)
{
    openPane();
    EXPECT_EQ(files(), QStringList());
    rename(QStringLiteral("Edited"));
    EXPECT_TRUE(keeps(QStringLiteral("Edited")));
    EXPECT_EQ(stored().presets.constFirst()->label(), QStringLiteral("A"));
    EXPECT_TRUE(notifications.isEmpty());
}

TEST_F(QNBUnsavedStateTest, WhatIsKeptHasTheTimeAtWhichItWasShown)
{
    openPane();
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    rename(QStringLiteral("Edited"));
    ASSERT_TRUE(keeps(QStringLiteral("Edited")));
    QFile file(QDir(folder()).filePath(files().value(0)));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString error;
    const QDateTime taken = QNBSettingsStore::takenAt(PropertyListDocument::parse(file.readAll(), &error));
    EXPECT_GE(taken, before);
    EXPECT_LE(taken, QDateTime::currentDateTimeUtc());
}

TEST_F(QNBUnsavedStateTest, WhatIsOlderIsOfferedAsSuchAlsoAfterADiscard)
{
    const QDateTime now = QDateTime::currentDateTime();
    leave(QStringLiteral("First"), now.addSecs(-20));
    leave(QStringLiteral("Second"), now.addSecs(-10));
    openPane();
    ASSERT_NO_FATAL_FAILURE(choose(discarding));
    EXPECT_TRUE(listener.notices.value(Kind::Recovery).text.startsWith(u"Older changes"))
        << qPrintable(listener.notices.value(Kind::Recovery).text);
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("First"));
}

TEST_F(QNBUnsavedStateTest, UndoneAndTypedTextIsAnEditTooAndAnOpenEditorIsNone)
{
    openPane();
    rename(QStringLiteral("Edited"));
    ASSERT_TRUE(keeps(QStringLiteral("Edited")));
    pane->undo();
    ASSERT_TRUE(keeps(QStringLiteral("A")));

    auto *description = outlet<QPlainTextEdit>(QStringLiteral("_ui_presetDescription"));
    description->setFocus();
    QTest::keyClicks(description, QStringLiteral("what for"));
    EXPECT_TRUE(waitUntil([&] {
        QFile file(QDir(folder()).filePath(files().value(0)));
        return file.open(QIODevice::ReadOnly) && file.readAll().contains("what for");
    }));

    list().editColumn(QNBPresetKey::label, 0);
    QTest::keyClicks(list().viewport()->findChild<QLineEdit *>(), QStringLiteral("half"));
    waitForMoreThanTheDelay();
    EXPECT_EQ(keptLabels(), QStringList(QStringLiteral("A")));
}

TEST_F(QNBUnsavedStateTest, AGoodSaveRemovesIt)
{
    openPane();
    rename(QStringLiteral("Edited"));
    ASSERT_TRUE(keeps(QStringLiteral("Edited")));
    loseKeyboardAndRegainIt();
    EXPECT_TRUE(waitUntil([this] { return files().isEmpty(); }));
    rename(QStringLiteral("Again"));
    EXPECT_TRUE(keeps(QStringLiteral("Again")));
    EXPECT_TRUE(pane->didUnselect());
    closePane();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBUnsavedStateTest, AFailedSaveKeepsWhatWasMadeAlsoAfterTheEnd)
{
    recoveryDelay = std::chrono::hours(1);
    openPane();
    const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
    outlet<QCheckBox>(QStringLiteral("_ui_showMenubar"))->click();
    rename(QStringLiteral("Edited"));
    EXPECT_FALSE(pane->didUnselect());
    closePane();
    EXPECT_EQ(keptLabels(), QStringList(QStringLiteral("Edited")));
    std::vector<QNBLeftRecovery> left = QNBLeftRecovery::allIn(folder());
    ASSERT_EQ(left.size(), 1U);
    EXPECT_FALSE(left.front().settings()->showMenubar);
}

TEST_F(QNBUnsavedStateTest, WhatWasLeftIsOfferedAndRestoredInOneStep)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Edited")));
    openPane();
    EXPECT_EQ(labels(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    ASSERT_EQ(listener.notices.value(Kind::Recovery).actions.size(), 2);
    EXPECT_EQ(listener.notices.value(Kind::Recovery).actions.at(restoring).title, QStringLiteral("Restore"));
    EXPECT_EQ(listener.notices.value(Kind::Recovery).actions.at(discarding).title, QStringLiteral("Discard"));
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels(), QStringList({QStringLiteral("Edited"), QStringLiteral("B")}));
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("file")));
    EXPECT_EQ(stored().presets.constFirst()->label(), QStringLiteral("A")) << "the domain has its own times";
    pane->undo();
    EXPECT_EQ(labels(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    pane->redo();
    EXPECT_EQ(labels(), QStringList({QStringLiteral("Edited"), QStringLiteral("B")}));
    EXPECT_TRUE(pane->didUnselect());
    closePane();
    EXPECT_EQ(files(), QStringList());
    EXPECT_EQ(stored().presets.constFirst()->label(), QStringLiteral("Edited"));
}

TEST_F(QNBUnsavedStateTest, RestoredAndNotSavedItIsOfferedAgain)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Edited")));
    recoveryDelay = std::chrono::hours(1);
    openPane();
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    closePane();
    openPane();
    EXPECT_TRUE(listener.notices.contains(Kind::Recovery));
}

TEST_F(QNBUnsavedStateTest, DiscardedItIsGone)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Edited")));
    openPane();
    ASSERT_NO_FATAL_FAILURE(choose(discarding));
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    EXPECT_EQ(labels(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBUnsavedStateTest, UndecidedItIsOfferedAgainAndASaveLeavesItAlone)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Edited")));
    openPane();
    EXPECT_TRUE(pane->didUnselect());
    closePane();
    listener.notices.clear();
    openPane();
    EXPECT_TRUE(listener.notices.contains(Kind::Recovery));
}

TEST_F(QNBUnsavedStateTest, WhatIsStoredAlreadyIsNotOffered)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Edited")));
    store({preset(QStringLiteral("Edited"), {QStringLiteral("file")}), preset(QStringLiteral("B"))});
    openPane();
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBUnsavedStateTest, WithALaterSaveBothAreOfferedByDateHoweverLateItsWriterWas)
{
    // The file is younger than the domain; what is in it is older.
    const QDateTime yesterday = QDateTime::currentDateTime().addDays(-1);
    leave(QStringLiteral("Edited"), yesterday);
    openPane();
    const PaneNotice offer = listener.notices.value(Kind::Recovery);
    const QString then = QLocale().toString(yesterday, QLocale::ShortFormat);
    EXPECT_TRUE(offer.text.contains(then)) << qPrintable(offer.text);
    ASSERT_EQ(offer.actions.size(), 2);
    EXPECT_EQ(offer.actions.at(restoring).title, QStringLiteral("Restore ") + then);
    EXPECT_TRUE(offer.actions.at(discarding).title.startsWith(u"Keep "));
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("Edited"));
}

TEST_F(QNBUnsavedStateTest, WhatIsOlderIsOfferedAsSuchOnceTheLatestWasDecidedAbout)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("First")));
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("Second")));
    openPane();
    EXPECT_EQ(listener.notices.value(Kind::Recovery).actions.at(restoring).title, QStringLiteral("Restore"));
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("Second"));
    const PaneNotice older = listener.notices.value(Kind::Recovery);
    EXPECT_TRUE(older.text.startsWith(u"Older changes")) << qPrintable(older.text);
    EXPECT_TRUE(older.text.contains(u"replace what is shown"));
    EXPECT_TRUE(older.actions.at(restoring).title.startsWith(u"Restore "));
    EXPECT_TRUE(older.actions.at(discarding).title.startsWith(u"Discard "));
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("First"));
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    pane->undo();
    EXPECT_EQ(labels().constFirst(), QStringLiteral("Second"));
}

TEST_F(QNBUnsavedStateTest, WhatWasRestoredIsNotOfferedBesideWhatWasMadeOfIt)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("First")));
    openPane();
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    rename(QStringLiteral("Second"));
    EXPECT_TRUE(waitUntil([this] { return keptLabels() == QStringList(QStringLiteral("Second")); }));
    closePane();
    listener.notices.clear();
    openPane();
    ASSERT_NO_FATAL_FAILURE(choose(discarding));
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
}

TEST_F(QNBUnsavedStateTest, TheSameIsOfferedOnceAndWhatIsStoredNotEvenAsOlder)
{
    const QDateTime now = QDateTime::currentDateTime();
    leave(QStringLiteral("A"), now.addSecs(-30));
    leave(QStringLiteral("Edited"), now.addSecs(-20));
    leave(QStringLiteral("Edited"), now.addSecs(-10));
    openPane();
    EXPECT_EQ(files().size(), 1);
    ASSERT_NO_FATAL_FAILURE(choose(discarding));
    EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBUnsavedStateTest, WhatCannotBeReadIsSaidAndStaysUntilItIsDiscarded)
{
    writeFile(recoveryFolder + QStringLiteral("/torn.plist"), "bplist00torn");
    openPane();
    EXPECT_TRUE(listener.notices.value(Kind::Recovery).text.contains(u"cannot be read"));
    EXPECT_EQ(files().size(), 1);
    ASSERT_NO_FATAL_FAILURE(choose(0));
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QNBUnsavedStateTest, AStateFolderThatCannotBeWrittenIsSaidOnce)
{
    writeFile(recoveryFolder.section(u'/', 0, 0), "in the way");
    openPane();
    rename(QStringLiteral("One"));
    ASSERT_TRUE(waitUntil([this] { return listener.notices.contains(Kind::Hint); }));
    listener.notices.clear();
    rename(QStringLiteral("Two"));
    waitForMoreThanTheDelay();
    EXPECT_TRUE(listener.notices.isEmpty());
}

TEST_F(QNBUnsavedStateTest, TwoPanesAtOnceKeepTheirOwn)
{
    openPane();
    rename(QStringLiteral("Mine"));
    ASSERT_TRUE(keeps(QStringLiteral("Mine")));
    {
        RecordingListener other;
        QNBPrefPanePref second(services());
        second.setListener(&other);
        const std::unique_ptr<QWidget> secondView(second.loadMainView());
        second.mainViewDidLoad();
        EXPECT_FALSE(other.notices.contains(Kind::Recovery)) << "its pane still runs";
    }
    EXPECT_EQ(keptLabels(), QStringList(QStringLiteral("Mine")));
}

TEST_F(QNBUnsavedStateTest, WhatStandsInForUnreadableSettingsIsKeptOnlyIfItWasEdited)
{
    const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
    openPane();
    ASSERT_EQ(labels(), QStringList(QStringLiteral("From the bundle")));
    outlet<QCheckBox>(QStringLiteral("_ui_showMenubar"))->click();
    EXPECT_FALSE(pane->didUnselect());
    closePane();
    EXPECT_EQ(files(), QStringList());

    openPane();
    rename(QStringLiteral("Edited"));
    ASSERT_TRUE(keeps(QStringLiteral("Edited")));
    pane->undo();
    EXPECT_TRUE(waitUntil([this] { return files().isEmpty(); })) << "nothing is edited any more";
    pane->redo();
    EXPECT_FALSE(pane->didUnselect());
    closePane();
    EXPECT_EQ(keptLabels(), QStringList(QStringLiteral("Edited")));
}

TEST_F(QNBUnsavedStateTest, WhatWasLeftIsComparedWithTheStoredSettingsWhenTheyCanBeRead)
{
    ASSERT_NO_FATAL_FAILURE(crashWith(QStringLiteral("From the bundle")));
    {
        const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
        openPane();
        EXPECT_FALSE(listener.notices.contains(Kind::Recovery));
    }
    EXPECT_TRUE(pane->save());
    EXPECT_EQ(labels(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("From the bundle"));
}

TEST_F(QNBUnsavedStateTest, SettingsThatCannotBeReadAreToldAndReadWithTryAgain)
{
    const auto tryAgain = [this] {
        const PaneNotice notice = listener.notices.value(Kind::Unreadable);
        ASSERT_EQ(notice.actions.size(), 1);
        EXPECT_EQ(notice.actions.constFirst().title, QStringLiteral("Try Again"));
        EXPECT_TRUE(notice.details.contains(path(QStringLiteral("config")))) << qPrintable(notice.details);
        notice.actions.constFirst().run();
    };
    {
        const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
        openPane();
        ASSERT_NO_FATAL_FAILURE(tryAgain());
        EXPECT_TRUE(listener.notices.contains(Kind::Unreadable)) << "it is as before";
        EXPECT_EQ(labels(), QStringList(QStringLiteral("From the bundle")));
    }
    ASSERT_NO_FATAL_FAILURE(tryAgain());
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable));
    EXPECT_EQ(labels(), QStringList({QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_TRUE(listener.results.isEmpty()) << "nothing was saved";
}

TEST_F(QNBUnsavedStateTest, SettingsThatAreReadWithASaveAreNotToldAnyMore)
{
    {
        const DomainOutOfReach outOfReach(path(QStringLiteral("config")));
        openPane();
        EXPECT_TRUE(pane->save()) << "nothing is to be saved";
        EXPECT_TRUE(listener.notices.contains(Kind::Unreadable));
    }
    EXPECT_TRUE(pane->save());
    EXPECT_FALSE(listener.notices.contains(Kind::Unreadable));
    EXPECT_EQ(stored().presets.size(), 2);
}

TEST_F(QNBUnsavedStateTest, ADomainAndAStateFolderOfTheFirstVersionAreReadAndLeftAsTheyAre)
{
    const QString data = QStringLiteral(QUENBY_TEST_DATA "/first-version/");
    const QString state = path(QStringLiteral("state/quenby"));
    ASSERT_TRUE(QFile::remove(path(QStringLiteral("config/org.quenby.Quenby.plist"))));
    ASSERT_TRUE(QFile::copy(data + QStringLiteral("config/org.quenby.Quenby.plist"),
                            path(QStringLiteral("config/org.quenby.Quenby.plist"))));
    ASSERT_TRUE(QDir().mkpath(state));
    const QStringList names = QDir(data + QStringLiteral("state/quenby")).entryList(QDir::Files);
    ASSERT_FALSE(names.isEmpty());
    for (const QString &name : names)
        ASSERT_TRUE(QFile::copy(data + QStringLiteral("state/quenby/") + name, state + u'/' + name));

    openPane();
    EXPECT_TRUE(listener.notices.isEmpty());
    const QStringList before = labels();
    EXPECT_GT(before.size(), 1);
    rename(QStringLiteral("Edited"));
    ASSERT_TRUE(keeps(QStringLiteral("Edited")));
    closePane();
    openPane();
    EXPECT_EQ(labels(), before);
    ASSERT_NO_FATAL_FAILURE(choose(restoring));
    EXPECT_EQ(labels().constFirst(), QStringLiteral("Edited"));
    EXPECT_EQ(labels().mid(1), before.mid(1));
    for (const QString &name : names) {
        QFile one(data + QStringLiteral("state/quenby/") + name);
        QFile other(state + u'/' + name);
        ASSERT_TRUE(one.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly));
        EXPECT_EQ(one.readAll(), other.readAll()) << qPrintable(name);
    }
}
