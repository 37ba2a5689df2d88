// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/QuenbySession.h"

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
        ASSERT_TRUE(waitUntil([&] { return screen_.activeWindow() == window_; }));
    }
    void startAnotherProgram()
    {
        other_ = std::make_unique<ChildProcess>(QStringLiteral("xev"),
                                                QStringList{QStringLiteral("-name"), QStringLiteral("other")},
                                                screen_.environmentFrom(session_.home().environment()));
        ASSERT_TRUE(waitUntil([&] {
            otherWindow_ = QString::fromLatin1(screen_.ask(
                QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                            QStringLiteral("--name"), QStringLiteral("^other$")}));
            return !otherWindow_.isEmpty();
        }));
        ASSERT_TRUE(screen_.activate(otherWindow_));
    }
    /// One save: another file that holds the same, and one notification.
    void expectSaved(int notifications)
    {
        EXPECT_TRUE(session_.waitForNotifications(notifications)) << session_.notifications();
        EXPECT_NE(session_.domain().identity(), lastIdentity_);
        lastIdentity_ = session_.domain().identity();
        EXPECT_EQ(session_.domain().differences().toStdString(), "");
    }

    QuenbySession session_;
    VirtualScreen screen_;
    std::unique_ptr<ChildProcess> host_;
    std::unique_ptr<ChildProcess> other_;
    QString window_;
    QString otherWindow_;

private:
    quint64 lastIdentity_ = 0;
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

INSTANTIATE_TEST_SUITE_P(Forms, KeyWindowTest,
                         ::testing::Values(DomainFile::Form::XML, DomainFile::Form::Binary),
                         [](const auto &form) {
                             return std::string(form.param == DomainFile::Form::XML ? "XML" : "Binary");
                         });
