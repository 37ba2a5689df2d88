// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/PaneFixture.h"

#include "Tests/Session/FileContent.h"

#include <csignal>

namespace {

/// A folder's menu is shorter.
constexpr int longestMenu = 60;

} // namespace

PaneFixture::PaneFixture(const std::function<std::unique_ptr<Screen>(const TemporaryHome &home)> &makeScreen)
    : anyScreen_(makeScreen(session_.home()))
    , reader_(session_.busAddress(),
              anyScreen_->environmentFrom(session_.home().environment(session_.busAddress())))
    , user_(*anyScreen_, patience)
    , pane_(reader_)
{
}

void PaneFixture::openPane()
{
    openPaneIn(session_.startHost(anyScreen_.get()));
}

void PaneFixture::openPaneIn(std::unique_ptr<ChildProcess> host)
{
    host_ = std::move(host);
    ASSERT_TRUE(pane_.isThere(patience)) << host_->errors().constData();
    ASSERT_TRUE(waitUntil([&] { return anyScreen_->givesKeyboardTo(*host_); }, patience));
}

void PaneFixture::leave()
{
    host_->signal(SIGTERM);
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
}

QDir PaneFixture::recoveryFolder()
{
    return session_.home().stateFolder() + QStringLiteral("/Quenby/Recovery");
}

bool PaneFixture::keeps(const QByteArray &name)
{
    return waitUntil(
        [&] {
            const QStringList kept = recoveryFolder().entryList({QStringLiteral("*.plist")}, QDir::Files);
            return contentOf(recoveryFolder().filePath(kept.value(0))).contains(name);
        },
        patience);
}

void PaneFixture::addItem(const QString &key, const QString &name)
{
    user_.presses(key);
    user_.types(name);
    user_.presses(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedItems() == QStringList(name); }, patience))
        << qPrintable(name) << " in\n"
        << qPrintable(pane_.tree().join(u'\n'));
}

void PaneFixture::goToItem(const QString &name)
{
    const qsizetype row = pane_.items().indexOf(name);
    ASSERT_GE(row, 0) << qPrintable(name) << " in\n" << qPrintable(pane_.tree().join(u'\n'));
    // The mnemonic of the tree.
    user_.presses(QStringList{QStringLiteral("alt+f"), QStringLiteral("Home")} +
                  QStringList(row, QStringLiteral("Down")));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedItems() == QStringList(name); }, patience))
        << qPrintable(name) << ", not " << qPrintable(pane_.selectedItems().join(u' '));
}

void PaneFixture::goToPreset(const QString &label)
{
    const qsizetype row = pane_.presets().indexOf(label);
    ASSERT_GE(row, 0) << qPrintable(label) << " in\n" << qPrintable(pane_.presets().join(u'\n'));
    user_.presses(QStringList{QStringLiteral("alt+r"), QStringLiteral("Home")} +
                  QStringList(row, QStringLiteral("Down")));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedPresets() == QStringList(label); }, patience))
        << qPrintable(label) << ", not " << qPrintable(pane_.selectedPresets().join(u' '));
}

void PaneFixture::goToEntry(const QString &name)
{
    // That the keyboard has come to the menu, or to its first entry, is not what the first key does.
    reader_.catchUp();
    QStringList seen;
    while (seen.size() < longestMenu) {
        const Accessible before = reader_.focus();
        user_.presses(QStringLiteral("Down"));
        ASSERT_TRUE(waitUntil([&] { return !(reader_.focus() == before); }, patience)) << qPrintable(name);
        // The shortcut stands behind the name.
        seen.append(reader_.focus().name().section(u'\t', 0, 0));
        if (seen.constLast() == name)
            return;
    }
    FAIL() << qPrintable(name) << " is not in\n" << qPrintable(seen.join(u'\n'));
}

void PaneFixture::walkTo(const QString &name, const QStringList &keys)
{
    user_.presses(keys);
    ASSERT_TRUE(waitUntil([&] { return reader_.focus().name() == name; }, patience))
        << qPrintable(name) << ", not " << qPrintable(reader_.focus().name());
}

void PaneFixture::goToGeneralTab()
{
    user_.presses(QStringLiteral("alt+g"));
    ASSERT_TRUE(waitUntil([&] { return pane_.label(QStringLiteral("Shortcut:")); }, patience));
    // A control of the page has it before, and that it has come there is not what the first key does.
    reader_.catchUp();
    for (int steps = 0; steps < 5; ++steps) {
        const Accessible before = reader_.focus();
        user_.presses(QStringLiteral("shift+Tab"));
        ASSERT_TRUE(waitUntil([&] { return !(reader_.focus() == before); }, patience));
        if (reader_.focus().name() == QStringLiteral("General"))
            return;
    }
    FAIL() << qPrintable(reader_.focus().name());
}

void PaneFixture::chooseEntry(const QString &name)
{
    ASSERT_NO_FATAL_FAILURE(goToEntry(name));
    user_.presses(QStringLiteral("Return"));
}

void PaneFixture::expectTree(const QStringList &tree)
{
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(waitUntil([&] { return pane_.tree() == tree; }, patience))
        << qPrintable(pane_.tree().join(u'\n'));
}

void PaneFixture::expectPresets(const QStringList &presets)
{
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(waitUntil([&] { return pane_.presets() == presets; }, patience))
        << qPrintable(pane_.presets().join(u'\n'));
}
