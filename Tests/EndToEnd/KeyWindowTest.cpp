// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"
#include "Tests/Session/VirtualScreen.h"

#include <QElapsedTimer>

#include <csignal>

namespace {

/// The real window on a real screen, beside a window of another program.
class KeyWindowTest : public ::testing::TestWithParam<DomainFile::Form>
{
protected:
    KeyWindowTest()
        : screen_(session_.home())
    {
    }

    void start()
    {
        ASSERT_TRUE(session_.domain().write(GetParam()));
        host_ = session_.startHost(&screen_);
        window_ = screen_.windowOf(host_->pid());
        ASSERT_FALSE(window_.isEmpty());
        ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(window_); }));
    }
    void startAnotherProgram()
    {
        other_ = std::make_unique<ChildProcess>(QStringLiteral("xev"),
                                                QStringList{QStringLiteral("-name"), QStringLiteral("other")},
                                                screen_.environmentFrom(session_.home().environment()));
        otherWindow_ = screen_.windowNamed(QStringLiteral("other"));
        ASSERT_FALSE(otherWindow_.isEmpty());
        ASSERT_TRUE(screen_.activate(otherWindow_));
    }
    /// Types \a text at the end of the selected preset's label, which is still being edited then.
    void typeIntoLabel(const QString &text)
    {
        // The mnemonic of the list, the edit key.
        for (const QString &key : {QStringLiteral("alt+r"), QStringLiteral("F2"), QStringLiteral("End")})
            screen_.typeKey(key);
        for (const QChar letter : text)
            screen_.typeKey(letter);
        // The keys before one that has an effect on the screen have had theirs.
        screen_.typeKey(QStringLiteral("Menu"));
        ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() == 2; }));
        screen_.typeKey(QStringLiteral("Escape"));
        ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() == 1; }));
    }
    /// One save: one notification, and a file that holds the same.
    void expectSaved(int notifications)
    {
        EXPECT_TRUE(session_.waitForNotifications(notifications)) << session_.notifications();
        EXPECT_EQ(session_.domain().differences().toStdString(), "");
    }

    QuenbySession session_;
    VirtualScreen screen_;
    std::unique_ptr<ChildProcess> host_;
    std::unique_ptr<ChildProcess> other_;
    QString window_;
    QString otherWindow_;
};

} // namespace

TEST_P(KeyWindowTest, EachLossSavesOnce)
{
    start();
    EXPECT_EQ(session_.notifications(), 0);
    startAnotherProgram();
    expectSaved(1);
    ASSERT_TRUE(screen_.activate(window_));
    ASSERT_TRUE(screen_.activate(otherWindow_));
    expectSaved(2);
    host_->signal(SIGTERM);
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
    expectSaved(3);
}

TEST_P(KeyWindowTest, ClosingTheWindowByKeySavesOnce)
{
    start();
    screen_.typeKey(QStringLiteral("ctrl+w"));
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_TRUE(host_->hasReturned(0)) << host_->errors().constData();
    expectSaved(1);
}

TEST_P(KeyWindowTest, TheFirstKeyAddsAPreset)
{
    start();
    screen_.typeKey(QStringLiteral("ctrl+shift+p"));
    for (const char letter : {'x', 'y', 'z'})
        screen_.typeKey(QChar::fromLatin1(letter));
    screen_.typeKey(QStringLiteral("Return"));
    screen_.typeKey(QStringLiteral("ctrl+w"));
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_EQ(session_.domain().labels().constLast(), QStringLiteral("xyz"));
}

TEST_P(KeyWindowTest, ASecondStartActivatesTheFirstWindow)
{
    start();
    startAnotherProgram();
    const auto second = session_.startHost(&screen_);
    ASSERT_TRUE(second->waitForEnd());
    EXPECT_TRUE(second->hasReturned(0));
    EXPECT_TRUE(waitUntil([&] { return screen_.activeWindow() == window_; }));
    EXPECT_TRUE(host_->isRunning());
}

TEST_P(KeyWindowTest, AnEditSurvivesTheEndOfTheScreen)
{
    start();
    QStringList labels = session_.domain().labels();
    ASSERT_FALSE(labels.isEmpty());
    ASSERT_NO_FATAL_FAILURE(typeIntoLabel(QStringLiteral("xyz")));
    ASSERT_EQ(session_.notifications(), 0);
    ASSERT_EQ(session_.domain().labels(), labels);
    QElapsedTimer timer;
    timer.start();
    screen_.kill();
    ASSERT_TRUE(host_->waitForEnd());
    EXPECT_LT(timer.elapsed(), 5000);
    EXPECT_TRUE(host_->hasReturned(1)) << host_->errors().constData();
    labels[0] += QStringLiteral("xyz");
    EXPECT_EQ(session_.domain().labels().join(u' ').toStdString(), labels.join(u' ').toStdString())
        << host_->errors().constData();
    EXPECT_TRUE(session_.waitForNotifications(1)) << session_.notifications();
}

INSTANTIATE_TEST_SUITE_P(Forms, KeyWindowTest,
                         ::testing::Values(DomainFile::Form::XML, DomainFile::Form::Binary),
                         [](const auto &form) {
                             return std::string(form.param == DomainFile::Form::XML ? "XML" : "Binary");
                         });
