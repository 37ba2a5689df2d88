// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

#include <QDir>
#include <QFile>

#include <csignal>

namespace {

/// What was done in the real window on a real screen outlives the program.
class RecoveryTest : public EditorFixture
{
protected:
    QStringList kept() { return recoveryFolder().entryList({QStringLiteral("*.plist")}, QDir::Files); }
};

} // namespace

TEST_F(RecoveryTest, WhatWasDoneBeforeAKillIsOfferedAndRestored)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    const QStringList before = pane_.items();
    ASSERT_NO_FATAL_FAILURE(goToItem(pane_.items().constFirst()));
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget")));
    ASSERT_TRUE(keeps("Budget"));
    const QStringList after = pane_.items();
    ASSERT_NE(after, before);
    host_->signal(SIGKILL);
    ASSERT_TRUE(host_->waitForEnd());

    ASSERT_NO_FATAL_FAILURE(openPane());
    EXPECT_EQ(pane_.items(), before);
    ASSERT_TRUE(waitUntil([&] { return !pane_.button(QStringLiteral("Restore")).isEmpty(); }, patience));
    user_.clicks(pane_.button(QStringLiteral("Restore")).center());
    ASSERT_TRUE(waitUntil([&] { return pane_.items() == after; }, patience));
    EXPECT_TRUE(waitUntil([&] { return pane_.button(QStringLiteral("Restore")).isEmpty(); }, patience));
    leave();
    EXPECT_EQ(kept(), QStringList());
    EXPECT_TRUE(session_.domain().bytes().contains("Budget"));
}

TEST_F(RecoveryTest, AtTheEndOfTheSessionNobodyIsAskedAndNothingIsLost)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(goToItem(pane_.items().constFirst()));
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget")));
    const QString config = session_.home().configFolder();
    ASSERT_TRUE(QDir().rename(config, config + QStringLiteral(".away")));
    QFile inTheWay(config);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    host_->signal(SIGTERM);
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(1));
    EXPECT_TRUE(keeps("Budget"));
}
