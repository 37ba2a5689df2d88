// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Shared/Source/QNBShared.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <gmock/gmock.h>
#include <utility>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString notification = QStringLiteral("QNBPresetConfigurationChangedNotification");
const QString quarterSecond = QStringLiteral("sleep 250000");

const QString missingHelper =
    QStringLiteral("the pane's bundle holds no \"QNBHelper\" to start; the choice and the login items stay");

/// What the pane warned of since there is one of these.
class PaneWarnings
{
public:
    PaneWarnings() { texts().clear(); }
    ~PaneWarnings() { qInstallMessageHandler(before_); }
    PaneWarnings(const PaneWarnings &) = delete;
    PaneWarnings &operator=(const PaneWarnings &) = delete;

    static QStringList &texts()
    {
        static QStringList result;
        return result;
    }

private:
    static void note(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (type == QtWarningMsg && qstrcmp(context.category, "quenby.pane") == 0)
            texts() << text;
    }

    const QtMessageHandler before_ = qInstallMessageHandler(note);
};

class QNBPrefPanePrefHelperControl : public PaneFixture
{
protected:
    QPushButton &button() const { return *outlet<QPushButton>(QStringLiteral("_ui_startStopButton")); }
    QString status() const { return outlet<QLabel>(QStringLiteral("_ui_statusLabel"))->text(); }
    QCheckBox &showMenubar() const { return *outlet<QCheckBox>(QStringLiteral("_ui_showMenubar")); }
    KeyComboRecorder &recorder() const
    {
        return *outlet<KeyComboRecorder>(QStringLiteral("_ui_shortcutRecorderControl"));
    }

    /// What a reader of the domain finds now; invalid for nothing.
    QVariant storedChoice()
    {
        return services().preferences->copyAppValue(QNBPreferenceKey::launchHelperOnStart);
    }
    void storeChoice(const QVariant &choice)
    {
        const auto world = services();
        world.preferences->setAppValue(QNBPreferenceKey::launchHelperOnStart, choice);
        ASSERT_TRUE(world.preferences->appSynchronize());
    }
    void showGeneralTab() const
    {
        auto *page = outlet<QWidget>(QStringLiteral("_ui_generalViewContainer"));
        view->findChild<QTabWidget *>()->setCurrentWidget(page);
    }
    void expectRunning() const
    {
        EXPECT_EQ(status(), u"Status: Quenby is running");
        EXPECT_EQ(button().text(), u"Stop");
    }
    void expectStopped() const
    {
        EXPECT_EQ(status(), u"Status: Quenby is stopped");
        EXPECT_EQ(button().text(), u"Start");
    }
};

} // namespace

TEST_F(QNBPrefPanePrefHelperControl, TheirGroupIsCalledHelper)
{
    openPane();
    EXPECT_EQ(outlet<QGroupBox>(QStringLiteral("_helperBox"))->title(), u"Helper");
}

TEST_F(QNBPrefPanePrefHelperControl, TheControlsAreFilledBeforeTheHelperIsStarted)
{
    addHelper();
    QNBSettings settings;
    settings.showMenubar = false;
    settings.shortcutCombo = {.flags = 1U << 20, .code = 35};
    ASSERT_TRUE(QNBSettingsStore::write(*services().preferences, settings));
    QString version;
    bool isMenuShown = true;
    QNBPrefPanePref::Services world = services();
    world.openFile = [&](const QString &) {
        const QWidget &main = *pane->mainView();
        version = main.findChild<QLabel *>(QStringLiteral("_ui_versionLabel"))->text();
        isMenuShown = main.findChild<QCheckBox *>(QStringLiteral("_ui_showMenubar"))->isChecked();
        EXPECT_EQ(main.findChild<KeyComboRecorder *>()->keyCombo(),
                  (KeyCombo{.flags = 1U << 20, .code = 35}));
        return true;
    };
    openPane(std::move(world));
    EXPECT_EQ(version, u"v1.2.3");
    EXPECT_FALSE(isMenuShown);
    EXPECT_THAT(notifications, IsEmpty()) << "filling them is no change by the user";
}

TEST_F(QNBPrefPanePrefHelperControl, AFirstRunStartsTheHelperAndTheChoiceBecomesYes)
{
    const QString helper = addHelper();
    openPane();
    EXPECT_THAT(helperSteps, ElementsAre(QStringLiteral("open ") + helper, quarterSecond,
                                         QStringLiteral("add ") + helper));
    expectRunning();
    EXPECT_FALSE(storedChoice().isValid()) << "stored with the next save only";
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(true));
}

TEST_F(QNBPrefPanePrefHelperControl, TheChoiceYesStartsTheHelper)
{
    addHelper();
    storeChoice(true);
    openPane();
    EXPECT_EQ(helpers.size(), 1);
    expectRunning();
}

TEST_F(QNBPrefPanePrefHelperControl, TheChoiceNoNeverStartsTheHelper)
{
    addHelper();
    storeChoice(false);
    openPane();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectStopped();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(false));
}

TEST_F(QNBPrefPanePrefHelperControl, TheChoiceNoStillShowsAHelperStartedByOtherMeans)
{
    addHelper();
    storeChoice(false);
    startHelper();
    openPane();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectRunning();
}

TEST_F(QNBPrefPanePrefHelperControl, AChoiceThatIsNoBooleanStartsNothing)
{
    addHelper();
    storeChoice(QStringLiteral("perhaps"));
    openPane();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectStopped();
}

TEST_F(QNBPrefPanePrefHelperControl, WithTheHelperRunningOpeningThePaneDoesNotToggleIt)
{
    addHelper();
    startHelper();
    openPane();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectRunning();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_FALSE(storedChoice().isValid());
}

TEST_F(QNBPrefPanePrefHelperControl, OpeningThePaneLooksOnceAtAllProcessesIfItStartsNothing)
{
    addHelper();
    startHelper();
    openPane();
    EXPECT_EQ(processLooks, 1);
    closePane();
    storeChoice(false);
    openPane();
    EXPECT_EQ(processLooks, 2);
}

TEST_F(QNBPrefPanePrefHelperControl, EitherOfTwoHelpersSuppressesTheStart)
{
    addHelper();
    for (int count : {2, 1}) {
        helpers.clear();
        while (helpers.size() < count)
            startHelper();
        openPane();
        EXPECT_THAT(helperSteps, IsEmpty());
        expectRunning();
        closePane();
    }
}

TEST_F(QNBPrefPanePrefHelperControl, StopTellsBothOfTwoHelpersInTheirOrder)
{
    const QString helper = addHelper();
    const quint32 first = startHelper().processSerialNumber().low;
    const quint32 second = startHelper().processSerialNumber().low;
    openPane();
    button().click();
    EXPECT_THAT(helperSteps, ElementsAre(QStringLiteral("signal 15 to %1").arg(first),
                                         QStringLiteral("signal 15 to %1").arg(second), quarterSecond,
                                         QStringLiteral("remove ") + helper));
    expectStopped();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(false));
}

TEST_F(QNBPrefPanePrefHelperControl, StartAfterStopStartsAgain)
{
    const QString helper = addHelper();
    storeChoice(false);
    openPane();
    button().click();
    expectRunning();
    button().click();
    expectStopped();
    helperSteps.clear();
    button().click();
    EXPECT_THAT(helperSteps, ElementsAre(QStringLiteral("open ") + helper, quarterSecond,
                                         QStringLiteral("add ") + helper));
    expectRunning();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(true));
}

TEST_F(QNBPrefPanePrefHelperControl, AHelperThatFailsToLaunchKeepsStartButIsALoginItem)
{
    const QString helper = addHelper();
    helperStarts = false;
    openPane();
    EXPECT_THAT(helperSteps, ElementsAre(QStringLiteral("open ") + helper, quarterSecond,
                                         QStringLiteral("add ") + helper));
    expectStopped();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(true));
}

TEST_F(QNBPrefPanePrefHelperControl, AHelperThatDoesNotEndKeepsStopButIsNoLoginItem)
{
    const QString helper = addHelper();
    helperEnds = false;
    startHelper();
    openPane();
    button().click();
    EXPECT_EQ(helperSteps.constLast(), QStringLiteral("remove ") + helper);
    expectRunning();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(false));
}

TEST_F(QNBPrefPanePrefHelperControl, AnyTitleOtherThanStartIsTreatedAsStop)
{
    const QString helper = addHelper();
    storeChoice(false);
    openPane();
    for (const QString &title :
         {QStringLiteral("Démarrer"), QStringLiteral("start"), QStringLiteral("&Start"), QString()}) {
        helperSteps.clear();
        button().setText(title);
        pane->toggleHelperStatus();
        EXPECT_THAT(helperSteps, ElementsAre(quarterSecond, QStringLiteral("remove ") + helper))
            << qPrintable(title);
        expectStopped();
    }
}

TEST_F(QNBPrefPanePrefHelperControl, WithoutAHelperBundleNothingIsStartedAndTheChoiceStays)
{
    storeChoice(true);
    const PaneWarnings warnings;
    openPane();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectStopped();
    EXPECT_THAT(warnings.texts(), ElementsAre(missingHelper));
    pane->toggleHelperStatus();
    EXPECT_THAT(helperSteps, IsEmpty());
    expectStopped();
    EXPECT_THAT(warnings.texts(), ElementsAre(missingHelper, missingHelper));
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(true));
    EXPECT_FALSE(button().isEnabled()) << "there is nothing to start";
}

TEST_F(QNBPrefPanePrefHelperControl, WithoutAHelperBundleNoChoiceIsMadeOnAFirstRun)
{
    openPane();
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_FALSE(storedChoice().isValid());
    EXPECT_THAT(helperSteps, IsEmpty());
}

TEST_F(QNBPrefPanePrefHelperControl, WithoutAHelperBundleAHelperCanStillBeEnded)
{
    storeChoice(true);
    const quint32 helper = startHelper().processSerialNumber().low;
    openPane();
    EXPECT_TRUE(button().isEnabled());
    const PaneWarnings warnings;
    button().click();
    EXPECT_THAT(helperSteps, ElementsAre(QStringLiteral("signal 15 to %1").arg(helper), quarterSecond))
        << "no login item begins with the path of nothing";
    expectStopped();
    EXPECT_THAT(warnings.texts(), ElementsAre(missingHelper));
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(storedChoice(), QVariant(true)) << "in step with the login item";
}

TEST_F(QNBPrefPanePrefHelperControl, TheStatusIsLookedAtWhenToggled)
{
    addHelper();
    openPane();
    expectRunning();
    helpers.clear();
    button().click();
    EXPECT_EQ(helperSteps.filter(QStringLiteral("signal")).size(), 0);
    expectStopped();
}

TEST_F(QNBPrefPanePrefHelperControl, TheStatusIsLookedAtWhenTheTabIsShownAndWhenTheWindowIsActivated)
{
    addHelper();
    openPane();
    expectRunning();
    helpers.clear();
    showGeneralTab();
    expectStopped();
    startHelper();
    loseKeyboardAndRegainIt();
    expectRunning();
}

TEST_F(QNBPrefPanePrefHelperControl, TheStatusIsLookedAtWhenTheHelperComesAndGoesUntilItHasEnded)
{
    addHelper();
    storeChoice(false);
    openPane();
    expectStopped();
    startHelper();
    helperChanged();
    expectRunning();
    // It has left the bus, and ends some time later.
    helperChanged();
    const int before = processLooks;
    EXPECT_TRUE(QTest::qWaitFor([&] { return processLooks > before + 1; }));
    expectRunning();
    helpers.clear();
    EXPECT_TRUE(QTest::qWaitFor([this] { return button().text() == u"Start"; }));
    expectStopped();
    EXPECT_TRUE(notifications.isEmpty());
    EXPECT_THAT(helperSteps, IsEmpty());
}

TEST_F(QNBPrefPanePrefHelperControl, AHelperThatComesWhenThePaneHasGoneConcernsNobody)
{
    openPane();
    const std::function<void()> changed = helperChanged;
    closePane();
    changed();
}

TEST_F(QNBPrefPanePrefHelperControl, TheMenuOptionIsWrittenThroughAndTold)
{
    storeChoice(false);
    openPane();
    ASSERT_TRUE(showMenubar().isChecked());
    for (const bool shown : {false, true}) {
        notifications.clear();
        showMenubar().click();
        EXPECT_EQ(stored().showMenubar, shown);
        EXPECT_THAT(notifications, ElementsAre(notification));
    }
    EXPECT_THAT(helperSteps, IsEmpty()) << "the process is left alone";
}

TEST_F(QNBPrefPanePrefHelperControl, TheShortcutIsWrittenThroughAndTold)
{
    storeChoice(false);
    openPane();
    auto *field = recorder().findChild<QPushButton *>();
    field->click();
    ASSERT_TRUE(recorder().isRecording());
    QTest::keyClick(field, Qt::Key_P, Qt::ControlModifier | Qt::AltModifier);
    const QNBKeyCombo expected{.flags = (1U << 20) | (1U << 19), .code = 35};
    EXPECT_EQ(stored().shortcutCombo, expected);
    // The helper leaves the keys of the old one to the recorder.
    const QStringList recording = {QNBHotKeyIsBeingRecordedNotification, QNBHotKeyRecordingEndedNotification};
    EXPECT_EQ(std::exchange(notifications, {}), recording + QStringList(notification));

    field->click();
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(std::exchange(notifications, {}), recording) << "nothing has changed";

    field->click();
    QTest::keyClick(field, Qt::Key_Delete);
    EXPECT_EQ(stored().shortcutCombo, QNBKeyCombo());
    EXPECT_EQ(std::exchange(notifications, {}), recording + QStringList(notification));
    EXPECT_THAT(helperSteps, IsEmpty());
}

TEST_F(QNBPrefPanePrefHelperControl, ThatAShortcutIsBeingRecordedIsToldAgainAndAgain)
{
    storeChoice(false);
    openPane();
    recorder().findChild<QPushButton *>()->click();
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return notifications.count(QNBHotKeyIsBeingRecordedNotification) == 2; },
                        int((2 * QNBHotKeyRecordingInterval).count())));
    recorder().findChild<QPushButton *>()->click();
    EXPECT_EQ(notifications.constLast(), QNBHotKeyRecordingEndedNotification);
}

TEST_F(QNBPrefPanePrefHelperControl, TheDummyActionDoesNothing)
{
    addHelper();
    storeChoice(false);
    openPane();
    pane->dummyAction();
    EXPECT_THAT(notifications, IsEmpty());
    EXPECT_THAT(helperSteps, IsEmpty());
    expectStopped();
}

TEST_F(QNBPrefPanePrefHelperControl, ALoneModifierIsNoShortcut)
{
    storeChoice(false);
    openPane();
    auto *field = recorder().findChild<QPushButton *>();
    field->click();
    for (const int key : {Qt::Key_Control, Qt::Key_Shift, Qt::Key_Alt, Qt::Key_Meta})
        QTest::keyClick(field, Qt::Key(key));
    EXPECT_TRUE(recorder().isRecording());
    EXPECT_TRUE(recorder().keyCombo().isEmpty());
    EXPECT_THAT(notifications, ElementsAre(QNBHotKeyIsBeingRecordedNotification));
}

TEST_F(QNBPrefPanePrefHelperControl, ThePlugInOfTheFileManagersIsOfferedAfterASecond)
{
    storeChoice(false);
    writeFile(QStringLiteral("Quenby.prefPane/Contents/MacOS/QNBContextMenu.plugin/Contents/Info.plist"),
              "<plist version=\"1.0\"><dict/></plist>");
    installerSystemVersion = 0x1058;
    alertAnswers << AlertPanel::Answer::Alternate;
    QElapsedTimer timer;
    timer.start();
    openPane();
    const QList<QTimer *> timers = pane->findChildren<QTimer *>();
    EXPECT_TRUE(std::any_of(timers.begin(), timers.end(), [](const QTimer *one) {
        return one->isSingleShot() && one->interval() == 1000;
    })) << "and no later, however slow this machine is";
    ASSERT_TRUE(QTest::qWaitFor([this] { return !alerts.isEmpty(); }));
    EXPECT_GE(timer.elapsed(), 1000);
    EXPECT_EQ(alerts.constFirst().title, u"Install Finder Contextual Menu?");
    EXPECT_TRUE(pane->didUnselect());
    EXPECT_EQ(services().preferences->copyAppValue(QStringLiteral("QNBAlreadyAskedToInstallCMM")),
              QVariant(true));
    EXPECT_TRUE(QTest::qWaitFor([this] { return installerLifetime.use_count() == 1; }))
        << "the installer has done its work";
}

TEST_F(QNBPrefPanePrefHelperControl, APaneThatIsLeftWithinASecondOffersNothing)
{
    installerSystemVersion = 0x1058;
    openPane();
    EXPECT_GT(installerLifetime.use_count(), 1);
    closePane();
    EXPECT_EQ(installerLifetime.use_count(), 1) << "nobody is left to ask";
}
