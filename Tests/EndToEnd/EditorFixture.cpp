// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

#include <algorithm>
#include <csignal>

using ::testing::ElementsAreArray;

namespace {

/// A folder's menu is shorter.
constexpr int longestMenu = 60;

} // namespace

EditorFixture::EditorFixture(QSize screenSize)
    : screen_(session_.home(), screenSize)
    , reader_(session_.busAddress(),
              screen_.environmentFrom(session_.home().environment(session_.busAddress())))
    , user_(screen_)
    , pane_(reader_)
{
}

void EditorFixture::openPane()
{
    host_ = session_.startHost(&screen_);
    window_ = screen_.windowOf(host_->pid());
    ASSERT_FALSE(window_.isEmpty()) << host_->errors().constData();
    ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(window_); }));
    ASSERT_TRUE(pane_.isThere()) << host_->errors().constData();
}

void EditorFixture::leave()
{
    host_->signal(SIGTERM);
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
}

void EditorFixture::start()
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    other_ = std::make_unique<ChildProcess>(QStringLiteral("xev"),
                                            QStringList{QStringLiteral("-name"), QStringLiteral("other")},
                                            screen_.environmentFrom(session_.home().environment()));
    otherWindow_ = screen_.windowNamed(QStringLiteral("other"));
    ASSERT_FALSE(otherWindow_.isEmpty());
    ASSERT_TRUE(screen_.activate(window_));
    storedFirst_ = stored();
}

QByteArray EditorFixture::stored()
{
    EXPECT_TRUE(screen_.activate(otherWindow_));
    EXPECT_TRUE(session_.waitForNotifications(++saves_)) << session_.notifications();
    EXPECT_TRUE(screen_.activate(window_));
    return session_.domain().bytes();
}

void EditorFixture::expectStored(const QByteArray &expected)
{
    // The same values make the same file; what else they are is asked only then.
    const QByteArray found = stored();
    ASSERT_TRUE(found == expected) << DomainFile::differences(expected, found).constData();
}

void EditorFixture::step(const std::string &what, int edits, const std::function<void()> &action)
{
    SCOPED_TRACE(what);
    if (HasFatalFailure())
        return;
    action();
    if (HasFatalFailure())
        return;
    const QByteArray before = steps_.empty() ? storedFirst_ : steps_.back().storedAfter;
    steps_.push_back({what, edits, stored()});
    EXPECT_TRUE(steps_.back().storedAfter != before) << "nothing has changed";
}

void EditorFixture::stepWithoutEdit(const std::string &what, const std::function<void()> &action)
{
    SCOPED_TRACE(what);
    if (HasFatalFailure())
        return;
    action();
    if (HasFatalFailure())
        return;
    expectStored(steps_.empty() ? storedFirst_ : steps_.back().storedAfter);
}

void EditorFixture::undoAllAndRedoAll()
{
    for (std::size_t index = steps_.size(); index-- > 0;) {
        SCOPED_TRACE("taken back: " + steps_.at(index).what);
        user_.presses(QStringList(steps_.at(index).edits, QStringLiteral("ctrl+z")));
        ASSERT_NO_FATAL_FAILURE(expectStored(index == 0 ? storedFirst_ : steps_.at(index - 1).storedAfter));
    }
    for (const Step &step : steps_) {
        SCOPED_TRACE("made again: " + step.what);
        user_.presses(QStringList(step.edits, QStringLiteral("ctrl+shift+z")));
        ASSERT_NO_FATAL_FAILURE(expectStored(step.storedAfter));
    }
}

void EditorFixture::addItem(const QString &key, const QString &name)
{
    user_.presses(key);
    user_.types(name);
    user_.presses(QStringLiteral("Return"));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedItems() == QStringList(name); }, patience))
        << qPrintable(name) << " in\n"
        << qPrintable(pane_.tree().join(u'\n'));
}

void EditorFixture::goToItem(const QString &name)
{
    const qsizetype row = pane_.items().indexOf(name);
    ASSERT_GE(row, 0) << qPrintable(name) << " in\n" << qPrintable(pane_.tree().join(u'\n'));
    // The mnemonic of the tree.
    user_.presses(QStringList{QStringLiteral("alt+f"), QStringLiteral("Home")} +
                  QStringList(row, QStringLiteral("Down")));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedItems() == QStringList(name); }, patience))
        << qPrintable(name) << ", not " << qPrintable(pane_.selectedItems().join(u' '));
}

void EditorFixture::goToPreset(const QString &label)
{
    const qsizetype row = pane_.presets().indexOf(label);
    ASSERT_GE(row, 0) << qPrintable(label) << " in\n" << qPrintable(pane_.presets().join(u'\n'));
    user_.presses(QStringList{QStringLiteral("alt+r"), QStringLiteral("Home")} +
                  QStringList(row, QStringLiteral("Down")));
    ASSERT_TRUE(waitUntil([&] { return pane_.selectedPresets() == QStringList(label); }, patience))
        << qPrintable(label) << ", not " << qPrintable(pane_.selectedPresets().join(u' '));
}

void EditorFixture::openMenu(const QString &key)
{
    const qsizetype windows = screen_.windowsOf(host_->pid()).size();
    user_.presses(key);
    ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() > windows; }, patience));
}

void EditorFixture::goToEntry(const QString &name)
{
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

void EditorFixture::walkTo(const QString &name, const QStringList &keys)
{
    user_.presses(keys);
    ASSERT_TRUE(waitUntil([&] { return reader_.focus().name() == name; }, patience))
        << qPrintable(name) << ", not " << qPrintable(reader_.focus().name());
}

void EditorFixture::goToGeneralTab()
{
    user_.presses(QStringLiteral("alt+g"));
    // A control of the page has it before.
    for (int steps = 0; steps < 5; ++steps) {
        const Accessible before = reader_.focus();
        user_.presses(QStringLiteral("shift+Tab"));
        ASSERT_TRUE(waitUntil([&] { return !(reader_.focus() == before); }, patience));
        if (reader_.focus().name() == QStringLiteral("General"))
            return;
    }
    FAIL() << qPrintable(reader_.focus().name());
}

void EditorFixture::chooseEntry(const QString &name)
{
    ASSERT_NO_FATAL_FAILURE(goToEntry(name));
    user_.presses(QStringLiteral("Return"));
}

void EditorFixture::answerAlert(const QStringList &texts, const QString &key)
{
    QStringList found;
    ASSERT_TRUE(waitUntil(
        [&] {
            found = pane_.alert();
            return !found.isEmpty() && screen_.activeWindow() != window_ &&
                   screen_.hasKeyboard(screen_.activeWindow());
        },
        patience));
    EXPECT_THAT(found, ElementsAreArray(texts));
    user_.presses(key);
    // Asked last, the pane has also heard of the key's release.
    ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(window_) && pane_.alert().isEmpty(); }, patience));
    // The pane's window has lost the keyboard to the alert, and the alert has lost it again.
    saves_ += 2;
}

void EditorFixture::expectTree(const QStringList &tree)
{
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(waitUntil([&] { return pane_.tree() == tree; }, patience))
        << qPrintable(pane_.tree().join(u'\n'));
}

void EditorFixture::expectPresets(const QStringList &presets)
{
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(waitUntil([&] { return pane_.presets() == presets; }, patience))
        << qPrintable(pane_.presets().join(u'\n'));
}
