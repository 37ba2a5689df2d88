// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/Mailbox.h"

#include "Tests/Session/ChildProcess.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>
#include <optional>

namespace {

void callFromAnotherThread(const std::function<void(int)> &function)
{
    const std::unique_ptr<QThread> thread(QThread::create([&] { function(7); }));
    thread->start();
    thread->wait();
}

} // namespace

TEST(MailboxTest, WhatAnotherThreadCallsIsCalledOnTheEventLoopOfItsOwn)
{
    const Mailbox mailbox;
    int given = 0;
    QThread *thread = nullptr;
    callFromAnotherThread(mailbox.bound<int>([&](int value) {
        given = value;
        thread = QThread::currentThread();
    }));
    EXPECT_EQ(given, 0);
    EXPECT_TRUE(waitUntil([&] { return given == 7; }));
    EXPECT_EQ(thread, QThread::currentThread());
}

TEST(MailboxTest, NothingIsCalledOnceItHasGone)
{
    std::optional<Mailbox> mailbox(std::in_place);
    int calls = 0;
    const auto function = mailbox->bound<int>([&](int) { ++calls; });
    callFromAnotherThread(function);
    mailbox.reset();
    callFromAnotherThread(function);
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 0);
}
