// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What a user does on every kind of desktop.

#include "Tests/EndToEnd/PaneFixture.h"
#include "Tests/Session/FileContent.h"
#include "Tests/Session/VirtualScreen.h"
#include "Tests/Session/WaylandScreen.h"

#include "Platform/Desktop/KeyCodes.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include <csignal>

namespace {

/// A kind of screen.
struct Desktop
{
    const char *name;
    std::function<std::unique_ptr<Screen>(const TemporaryHome &home)> makeScreen;
};

class EveryDesktopTest : public PaneFixture, public ::testing::WithParamInterface<Desktop>
{
protected:
    EveryDesktopTest()
        : PaneFixture(GetParam().makeScreen)
    {
    }

    /// In the middle of a row, beside what is shown there.
    static QPoint on(const QRect &row) { return row.center() + QPoint(30, 0); }
    qlonglong stored(const QString &key)
    {
        return session_.domain().value(key).split(' ').constLast().toLongLong();
    }
};

TEST_P(EveryDesktopTest, ANameIsTypedAndKept)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget.csv")));
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_TRUE(session_.domain().bytes().contains("Budget.csv"));
}

TEST_P(EveryDesktopTest, AnItemIsDraggedIntoAFolder)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    QStringList items = pane_.items();
    const qsizetype from = items.indexOf(QStringLiteral("Brief.md"));
    const qsizetype folder = items.indexOf(QStringLiteral("Receipts"));
    ASSERT_TRUE(from >= 0 && folder > from) << qPrintable(items.join(u'\n'));
    ASSERT_TRUE(user_.drags(pane_.item(items.at(from)).center(), on(pane_.item(items.at(folder))), *host_))
        << host_->errors().constData();
    // Behind the folder, which has moved up.
    items.move(from, folder);
    ASSERT_TRUE(waitUntil([&] { return pane_.items() == items; }, patience))
        << qPrintable(pane_.tree().join(u'\n'));
}

TEST_P(EveryDesktopTest, APresetIsDraggedToAnotherProgram)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    const QString folder = session_.home().filePath(QStringLiteral("desktop"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString label = pane_.presets().constFirst();
    const QPoint start = pane_.preset(label).center();
    const QPoint target(1180, 700);
    const auto hasArrived = anyScreen_->arrivalOfDrag(*host_);
    // Some way down the list first, until the drag has begun.
    ASSERT_TRUE(anyScreen_->drag(start, start + QPoint(0, 60), hasArrived, patience))
        << host_->errors().constData();
    ChildProcess dropTarget(
        QStringLiteral(QUENBY_DROP_TARGET),
        {QStringLiteral("--at"), QStringLiteral("1080,600"), QStringLiteral("--into"), folder},
        anyScreen_->environmentFrom(session_.home().environment(session_.busAddress())));
    ASSERT_TRUE(waitUntil([&] { return dropTarget.output().contains("ready"); }, patience));
    ASSERT_TRUE(anyScreen_->dragOn(
        target, [&] { return dropTarget.output().contains("may"); }, patience));
    EXPECT_TRUE(dropTarget.output().contains("\nmay copy\n")) << dropTarget.output().constData();
    ASSERT_TRUE(anyScreen_->dragOn(target, hasArrived, patience)) << host_->errors().constData();
    anyScreen_->releaseMouse();
    ASSERT_TRUE(waitUntil([&] { return dropTarget.output().contains("done"); }, patience))
        << dropTarget.output().constData() << host_->errors().constData();
    EXPECT_TRUE(contentOf(QStringLiteral("%1/%2.qnbp").arg(folder, label)).contains("fileHierarchy"))
        << dropTarget.output().constData();

    // It stays there for those who fetch it later, and the user goes on.
    const QByteArray said = dropTarget.output();
    const QUrl url = QUrl::fromEncoded(said.mid(said.indexOf("url file:") + 4).split(' ').constFirst());
    dropTarget.signal(SIGTERM);
    ASSERT_TRUE(waitUntil([&] { return anyScreen_->givesKeyboardTo(*host_); }, patience));
    ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget.csv")));
    EXPECT_TRUE(QFile::exists(url.toLocalFile())) << qPrintable(url.toString());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_FALSE(QFile::exists(url.toLocalFile())) << qPrintable(url.toString());
}

TEST_P(EveryDesktopTest, AfterAPartOfItsNameAPresetIsCreatedFromTheLauncher)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    const QString label = pane_.presets().constLast();
    ASSERT_NO_FATAL_FAILURE(leave());
    const QString folder = session_.home().filePath(QStringLiteral("work"));
    ASSERT_TRUE(QDir().mkpath(folder));
    ChildProcess launcher(PaneCopy::builtHelperProgram(),
                          {QStringLiteral("--launcher"), QStringLiteral("--in"), folder},
                          anyScreen_->environmentFrom(session_.home().environment(session_.busAddress())));
    ASSERT_TRUE(waitUntil([&] { return anyScreen_->givesKeyboardTo(launcher); }, patience))
        << launcher.errors().constData();
    for (const QChar letter : label.left(4))
        anyScreen_->typeKey(letter);
    anyScreen_->typeKey(QStringLiteral("Return"));
    EXPECT_TRUE(waitUntil([&] { return !QDir(folder).isEmpty(); }, patience))
        << launcher.errors().constData();
}

TEST_P(EveryDesktopTest, TheRecorderRecordsAKey)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(goToGeneralTab());
    ASSERT_NO_FATAL_FAILURE(
        walkTo(QStringLiteral("Shortcut for the list of presets"), {QStringLiteral("alt+s")}));
    user_.presses({QStringLiteral("space"), QStringLiteral("ctrl+alt+p")});
    constexpr qlonglong codeOfP = 35;
    EXPECT_TRUE(waitUntil([&] { return stored(QStringLiteral("QNBHotKeyCode")) == codeOfP; }, patience));
    EXPECT_EQ(stored(QStringLiteral("QNBHotKeyFlags")), KeyCodes::commandFlag | KeyCodes::optionFlag);
}

INSTANTIATE_TEST_SUITE_P(
    Desktops, EveryDesktopTest,
    ::testing::Values(
        Desktop{"X11", [](const TemporaryHome &home) { return std::make_unique<VirtualScreen>(home); }},
        Desktop{"Wayland", [](const TemporaryHome &home) { return std::make_unique<WaylandScreen>(home); }}),
    [](const ::testing::TestParamInfo<Desktop> &desktop) { return std::string(desktop.param.name); });

} // namespace
