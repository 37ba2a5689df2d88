// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBHelperNotes.h"

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
    EXPECT_FALSE(isHintShown()) << "the keys may be others";
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
    EXPECT_THAT(shortcutNote(), HasSubstr("record it again to be asked again"));
    EXPECT_FALSE(isHintShown());
    EXPECT_THAT(shortcutNote(), HasSubstr("QNBHelper --launcher"));
}

TEST_F(QNBHelperNotesTest, WithoutATrayItIsSaidHowThePresetsAreReached)
{
    helperState = QNBHelperState{};
    openTab();
    EXPECT_EQ(trayNote(), "") << "it is not known yet";
    for (const auto hotKey : {QNBHelperState::HotKey::None, QNBHelperState::HotKey::Asking,
                              QNBHelperState::HotKey::Refused, QNBHelperState::HotKey::Impossible}) {
        change({.hotKey = hotKey, .hasTray = false});
        EXPECT_THAT(trayNote(), HasSubstr("shows no icons of programs"));
        EXPECT_THAT(trayNote(), HasSubstr("are reached by the command")) << "no shortcut is heard";
    }
    for (const auto hotKey : {QNBHelperState::HotKey::ByDesktop, QNBHelperState::HotKey::ByPortal,
                              QNBHelperState::HotKey::ByScreen}) {
        change({.hotKey = hotKey, .hasTray = false});
        EXPECT_THAT(trayNote(), HasSubstr("are reached by the shortcut"));
    }
    change({.hasTray = true});
    EXPECT_EQ(trayNote(), "");
    helperState.reset();
    helperChanged();
    EXPECT_EQ(trayNote(), "");
}

TEST(QNBHelperStateTest, EveryStateComesThroughTheBusAndWhatIsMissingIsUnknown)
{
    for (int number = 0; number <= int(QNBHelperState::HotKey::Impossible); ++number) {
        for (const std::optional<bool> hasTray :
             {std::optional<bool>(), std::optional(false), std::optional(true)}) {
            const QNBHelperState state{QNBHelperState::HotKey(number), QStringLiteral("Ctrl+P"), hasTray};
            EXPECT_EQ(QNBHelperState::fromMap(state.toMap()), state) << number;
        }
    }
    EXPECT_EQ(QNBHelperState::fromMap({}), QNBHelperState());
    EXPECT_EQ(QNBHelperState::fromMap({{QStringLiteral("HotKey"), QStringLiteral("of a later version")}}),
              QNBHelperState());
}
