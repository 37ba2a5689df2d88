// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QMessageLogContext>

/// Ends the program with a sentence on the standard error and status 1 where the library would abort it: when
/// no display answers on which windows could be shown, or there is no plug-in for it. One object at a time,
/// and only while the application object is made: whatever else is fatal then looks the same. What the
/// library logs before goes its usual way and says more.
class NoDisplayExit
{
public:
    NoDisplayExit();
    ~NoDisplayExit();
    NoDisplayExit(const NoDisplayExit &) = delete;
    NoDisplayExit &operator=(const NoDisplayExit &) = delete;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    static inline QtMessageHandler usual_ = nullptr;
};
