// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/Accessible.h"
#include "Tests/Session/ChildProcess.h"

#include <QObject>

#include <memory>

/// Assistive technology on a session of a test's own: sees what programs show, and follows the keyboard.
///
/// Programs that start after it with the session's bus describe themselves to it. Menus are heard of as the
/// keyboard goes through them only: they belong to no window.
class ScreenReader : public QObject
{
    Q_OBJECT

public:
    /// Starts the accessibility bus of the session with the bus at \a busAddress.
    ScreenReader(const QString &busAddress, QProcessEnvironment environment);
    ~ScreenReader() override;

    /// The programs that describe themselves.
    QList<Accessible> programs() const;
    /// What has the keyboard: the last object that said so.
    const Accessible &focus() const { return focus_; }
    /// Hears all that the program with the keyboard has said until now.
    void catchUp();

private Q_SLOTS:
    void stateChanged(const QDBusMessage &message);

private:
    std::unique_ptr<ChildProcess> launcher_;
    QString connectionName_;
    QDBusConnection bus_ = QDBusConnection(QString());
    Accessible focus_;
};
