// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBHelperNotes.h"

#include "PaneFixture.h"

#include <QLabel>
#include <QTabWidget>
#include <gmock/gmock.h>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class QNBHelperNotesTest : public PaneFixture
{
protected:
    void openTab()
    {
        openPane();
        view->findChild<QTabWidget *>()->setCurrentWidget(
            outlet<QWidget>(QStringLiteral("_ui_generalViewContainer")));
    }
    void change(const QNBHelperState &state)
    {
        helperState = state;
        helperChanged();
    }
    std::string shortcutNote() const { return shown(QStringLiteral("_shortcutNote")); }
    bool isHintShown() const { return !outlet<QLabel>(QStringLiteral("_shortcutHint"))->isHidden(); }
    std::string trayNote() const { return shown(QStringLiteral("_trayNote")); }

private:
    /// What is hidden has no text, and the other way round.
    std::string shown(const QString &name) const
    {
        const auto *label = outlet<QLabel>(name);
        EXPECT_EQ(label->isHidden(), label->text().isEmpty()) << qPrintable(label->text());
        return label->text().toStdString();
    }
};

} // namespace

TEST_F(QNBHelperNotesTest, WithoutAHelperNothingIsSaid)
{
    openTab();
    EXPECT_EQ(shortcutNote(), "");
    EXPECT_EQ(trayNote(), "");
    EXPECT_TRUE(isHintShown());
}

TEST_F(QNBHelperNotesTest, ItIsSaidByWhichWayTheShortcutIsHeard)
{
    helperState = QNBHelperState{.hasTray = true};
    openTab();
    EXPECT_EQ(shortcutNote(), "") << "there is none";
    change({.hotKey = QNBHelperState::HotKey::ByDesktop, .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("The desktop itself listens"));
    change({.hotKey = QNBHelperState::HotKey::Asking, .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("asks you first"));
    change({.hotKey = QNBHelperState::HotKey::ByPortal, .keys = QStringLiteral("Super\nP"), .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("as it is chosen in its settings: Super"));
    EXPECT_THAT(shortcutNote(), Not(HasSubstr("\n"))) << "the desktop's text";
    change({.hotKey = QNBHelperState::HotKey::ByPortal, .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("that is chosen in its settings."));
    change({.hotKey = QNBHelperState::HotKey::ByScreen, .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("whichever window has the keyboard"));
    EXPECT_TRUE(isHintShown());
    EXPECT_EQ(trayNote(), "");
}

TEST_F(QNBHelperNotesTest, WhereItIsNotHeardTheCommandForTheDesktopsSettingsIsNamed)
{
    helperState = QNBHelperState{.hotKey = QNBHelperState::HotKey::Impossible, .hasTray = true};
    openTab();
    EXPECT_THAT(shortcutNote(), HasSubstr("passes none on to programs"));
    EXPECT_FALSE(isHintShown()) << "these keys do nothing";
    EXPECT_THAT(shortcutNote(), HasSubstr("QNBHelper --launcher"));
    change({.hotKey = QNBHelperState::HotKey::Refused, .hasTray = true});
    EXPECT_THAT(shortcutNote(), HasSubstr("another program has it"));
    EXPECT_FALSE(isHintShown());
    EXPECT_THAT(shortcutNote(), HasSubstr("QNBHelper --launcher"));
}

TEST_F(QNBHelperNotesTest, WithoutATrayItIsSaidHowThePresetsAreReached)
{
    helperState = QNBHelperState{.hasTray = false};
    openTab();
    EXPECT_THAT(trayNote(), HasSubstr("shows no icons of programs"));
    change({.hasTray = true});
    EXPECT_EQ(trayNote(), "");
    helperState.reset();
    helperChanged();
    EXPECT_EQ(trayNote(), "");
}

TEST(QNBHelperStateTest, EveryStateComesThroughTheBusAndWhatIsMissingIsUnknown)
{
    for (int number = 0; number <= int(QNBHelperState::HotKey::Impossible); ++number) {
        const QNBHelperState state{QNBHelperState::HotKey(number), QStringLiteral("Ctrl+P"), true};
        EXPECT_EQ(QNBHelperState::fromMap(state.toMap()), state) << number;
    }
    EXPECT_EQ(QNBHelperState::fromMap({}), QNBHelperState());
    EXPECT_EQ(QNBHelperState::fromMap({{QStringLiteral("HotKey"), QStringLiteral("of a later version")}}),
              QNBHelperState());
}
