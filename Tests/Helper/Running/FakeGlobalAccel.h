// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>

/// A desktop's service of hot keys on a bus of the test's own.
class FakeGlobalAccel final : public QDBusVirtualObject
{
public:
    enum class Manner {
        Giving,
        Refusing,
        /// It takes the program's name, and answers everything with an error of its own.
        Failing,
    };
    enum class Program {
        /// One that does nothing else, and hears the keys of an X screen.
        OfItsOwn,
        /// The compositor of a Wayland session.
        Compositor,
    };

    explicit FakeGlobalAccel(const QString &busAddress, Manner manner = Manner::Giving,
                             Program program = Program::OfItsOwn);
    ~FakeGlobalAccel() override;

    /// It takes the compositor's name too.
    void becomeCompositor();
    /// From now on.
    void setManner(Manner manner) { manner_ = manner; }
    /// The one that is set, as the library numbers it; 0 for none.
    int key() const { return key_; }
    /// What is registered; empty if nothing is.
    QStringList action() const { return action_; }
    /// The user presses it.
    void press() { press(ownConnection); }
    /// The same said by whoever has the connection of that name.
    void press(const QString &connectionName);

    static const QString ownConnection;

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &) const override { return {}; }

    Manner manner_;
    int key_ = 0;
    QStringList action_;
};
