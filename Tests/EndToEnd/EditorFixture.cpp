// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

using ::testing::ElementsAreArray;

EditorFixture::EditorFixture(QSize screenSize)
    : PaneFixture([screenSize](const TemporaryHome &home) {
        return std::make_unique<VirtualScreen>(home, screenSize);
    })
    , screen_(static_cast<VirtualScreen &>(*anyScreen_))
{
}

void EditorFixture::openPane()
{
    ASSERT_NO_FATAL_FAILURE(PaneFixture::openPane());
    window_ = screen_.windowOf(host_->pid());
    ASSERT_FALSE(window_.isEmpty());
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
    windows_ = screen_.windowsOf(host_->pid()).size();
    storedFirst_ = stored();
}

QByteArray EditorFixture::stored()
{
    // A menu whose entry was chosen goes a moment later, and holds the keyboard until then.
    EXPECT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() <= windows_; }, patience));
    EXPECT_TRUE(screen_.activate(otherWindow_));
    EXPECT_TRUE(session_.waitForNotifications(++saves_)) << session_.notifications() << " and not " << saves_;
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

void EditorFixture::openMenu(const QString &key)
{
    const qsizetype windows = screen_.windowsOf(host_->pid()).size();
    user_.presses(key);
    ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() > windows; }, patience));
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
