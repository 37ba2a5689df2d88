// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/PaneFixture.h"
#include "Tests/Session/VirtualScreen.h"

#include <csignal>

namespace {

/// One of KDE's programs that show modules.
struct Program
{
    const char *name;
    const char *path;
};

/// The pane as a module of the real programs, on a real screen.
class SystemSettingsTest : public PaneFixture, public ::testing::WithParamInterface<Program>
{
protected:
    SystemSettingsTest()
        : PaneFixture([](const TemporaryHome &home) { return std::make_unique<VirtualScreen>(home); })
        , copy_(session_.home().dataFolder() + QStringLiteral("/PreferencePanes"))
    {
    }

    void openModule()
    {
        QProcessEnvironment environment = anyScreen_->environmentFrom(session_.environment());
        environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(QUENBY_KCM_PLUGINS));
        // It finds its own interface where the system has it.
        environment.insert(QStringLiteral("XDG_DATA_DIRS"),
                           session_.home().systemDataFolder() + QStringLiteral(":/usr/share"));
        environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
        openPaneIn(std::make_unique<ChildProcess>(QString::fromLocal8Bit(GetParam().path),
                                                  QStringList(QStringLiteral("kcm_quenby")), environment));
    }
    void closeWindow()
    {
        user_.presses(QStringLiteral("alt+F4"));
        ASSERT_TRUE(host_->waitForEnd()) << host_->errors().constData();
        EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
    }
    bool hasStored(const QByteArray &name) { return session_.domain().bytes().contains(name); }

private:
    const PaneCopy copy_;
};

} // namespace

TEST_P(SystemSettingsTest, WhatIsEditedIsSavedWhenTheWindowIsClosed)
{
    ASSERT_NO_FATAL_FAILURE(openModule());
    ASSERT_NO_FATAL_FAILURE(goToItem(pane_.items().constFirst()));
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget.csv")));
    ASSERT_NO_FATAL_FAILURE(closeWindow());
    EXPECT_TRUE(hasStored("Budget.csv"));
}

TEST_P(SystemSettingsTest, WhatWasDoneBeforeTheProgramIsEndedIsOfferedInTheStrip)
{
    ASSERT_NO_FATAL_FAILURE(openModule());
    ASSERT_NO_FATAL_FAILURE(goToItem(pane_.items().constFirst()));
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget.csv")));
    ASSERT_TRUE(keeps("Budget.csv"));
    host_->signal(SIGTERM);
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_FALSE(hasStored("Budget.csv"));

    ASSERT_NO_FATAL_FAILURE(openModule());
    ASSERT_TRUE(waitUntil([&] { return !pane_.button(QStringLiteral("Restore")).isEmpty(); }, patience));
    user_.clicks(pane_.button(QStringLiteral("Restore")).center());
    ASSERT_TRUE(waitUntil([&] { return pane_.items().contains(QStringLiteral("Budget.csv")); }, patience));
    ASSERT_NO_FATAL_FAILURE(closeWindow());
    EXPECT_TRUE(hasStored("Budget.csv"));
}

TEST_P(SystemSettingsTest, TheTabsAreReachedByTheKeyboard)
{
    ASSERT_NO_FATAL_FAILURE(openModule());
    // System Settings keeps the keyboard for its own list.
    ASSERT_NO_FATAL_FAILURE(goToPreset(pane_.presets().constFirst()));
    goToGeneralTab();
}

INSTANTIATE_TEST_SUITE_P(Programs, SystemSettingsTest,
                         ::testing::Values(Program{"Shell", QUENBY_KCMSHELL},
                                           Program{"SystemSettings", QUENBY_SYSTEMSETTINGS}),
                         [](const auto &program) { return std::string(program.param.name); });
