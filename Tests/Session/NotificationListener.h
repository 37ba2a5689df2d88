// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"

/// Another program that hears the notifications on a bus, and knows nothing of our code.
class NotificationListener
{
public:
    /// Listens once constructed.
    explicit NotificationListener(const QString &busAddress);
    /// One line for each notification so far: path, interface, member and, if there are any, arguments.
    QList<QByteArray> heard();
    /// How many notifications \a name were heard so far.
    int count(const QByteArray &name);

private:
    ChildProcess monitor_;
};
